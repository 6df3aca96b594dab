// Where execute() collects a response whose size is not known beforehand.
#ifndef MORVENN_CLIENT_RESULTBUFFER_H
#define MORVENN_CLIENT_RESULTBUFFER_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <streambuf>
#include <string>
#include <utility>

namespace Morvenn::Net::MvServerProxy::Client::Internal {

/// Starts at 16384 bytes and doubles when more are needed. Holds no byte that was not received.
class ResultBuffer {
public:
    /// Appends what @p source holds ready, without making it ask for more.
    void append(std::streambuf& source) {
        const std::streamsize ready = source.in_avail();
        const std::size_t needed = m_length + static_cast<std::size_t>(ready);
        if (needed > m_capacity) {
            grow(needed);
        }
        m_length += static_cast<std::size_t>(source.sgetn(m_data.get() + m_length, ready));
    }

    std::size_t length() const { return m_length; }
    std::string text() const { return std::string(m_data.get(), m_length); }

private:
    void grow(std::size_t needed) {
        std::size_t capacity = m_capacity;
        while (capacity < needed) {
            capacity *= 2;
        }
        std::unique_ptr<char[]> data(new char[capacity]);
        std::memcpy(data.get(), m_data.get(), m_length);
        m_data = std::move(data);
        m_capacity = capacity;
    }

    std::size_t m_capacity = 16384;
    std::size_t m_length = 0;
    std::unique_ptr<char[]> m_data{new char[m_capacity]};
};

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal

#endif  // MORVENN_CLIENT_RESULTBUFFER_H
