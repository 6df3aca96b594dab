// A body that is made while it is read, so that it is never in memory.
#pragma once

#include <cstdint>
#include <istream>
#include <streambuf>
#include <string>

namespace Morvenn::Net::MvServerProxy::Integration {

// `size` bytes: a block of letters again and again.
class GeneratedBody : public std::istream {
public:
    explicit GeneratedBody(std::uint64_t size) : std::istream(nullptr), m_buffer(size) {
        rdbuf(&m_buffer);
    }

    std::uint64_t given() const { return m_buffer.given(); }

    // "SIZE SHA256\n" of the whole, as the hub's service Digest tells it.
    static std::string digest(std::uint64_t size);

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(std::uint64_t size);
        std::uint64_t given() const { return m_given; }

    protected:
        int_type underflow() override;

    private:
        std::string m_block;
        std::uint64_t m_size;
        std::uint64_t m_given = 0;
    };

    Buffer m_buffer;
};

}  // namespace Morvenn::Net::MvServerProxy::Integration
