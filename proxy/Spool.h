// Response bytes that arrive while the request body is still being sent, kept in a file.
//
// A server that answers while it reads would otherwise stand still, and the sender with it, as soon
// as the socket buffers are full. The file has no name, so nothing is left behind.
#ifndef MORVENN_PROXY_SPOOL_H
#define MORVENN_PROXY_SPOOL_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Morvenn::Net::MvServerProxy::Proxy {

class Spool {
public:
    Spool() = default;
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;
    ~Spool() { close(); }

    // The file is made in `folder` when the first byte comes; `limit` is the most it may hold.
    void configure(std::string folder, std::int64_t limit);

    // Appends. Throws Failure (-1003) when the limit is reached or the file cannot be written.
    void write(const char* data, std::size_t size);

    // Takes up to `size` bytes from the front. Throws Failure (-1003).
    std::size_t read(char* out, std::size_t size);

    std::int64_t size() const { return m_end - m_begin; }
    bool empty() const { return size() == 0; }
    void close();

private:
    void open();
    [[noreturn]] void fail(const std::string& what) const;

    std::string m_folder = "/tmp";
    std::int64_t m_limit = 0;
    std::int64_t m_begin = 0;
    std::int64_t m_end = 0;
    int m_file = -1;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
