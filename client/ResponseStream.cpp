#include <algorithm>
#include <cstring>

#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Client {

// The block is left as it is until the proxy has written to it.
ResponseStream::ResponseStream() : m_count(0), m_pos(0) {}  // NOLINT(*-member-init)

ResponseStream::ResponseStream(const ResponseStream& other)  // NOLINT(*-member-init)
    : m_count(other.m_count), m_pos(other.m_pos) {
    std::memcpy(m_block, other.m_block, sizeof m_block);
}

ResponseStream& ResponseStream::operator=(const ResponseStream& other) {
    if (this == &other) {
        return *this;
    }
    m_count = other.m_count;
    m_pos = other.m_pos;
    std::memcpy(m_block, other.m_block, sizeof m_block);
    return *this;
}

ResponseStream::~ResponseStream() {
    static_cast<void>(MvServerProxy_Complete());
}

void ResponseStream::close() {
    static_cast<void>(MvServerProxy_Complete());
}

int ResponseStream::read(char* buffer) {
    return read(buffer, 0, kBlockSize);
}

int ResponseStream::read(char* buffer, int offset, int length) {
    if (offset < 0 || length < 0) {
        Internal::throwLocal(Internal::kLocalFailure,
                             "ResponseStream::read: offset and length must not be negative.");
    }
    if (isUsedUp() && offset == 0 && length >= kBlockSize) {
        return MvServerProxy_Receive(buffer);
    }
    if (length == 0) {
        return 0;
    }
    fill();
    if (isUsedUp()) {
        return m_count;
    }
    const int count = std::min(length, m_count - m_pos);
    std::memcpy(buffer + offset, m_block + m_pos, static_cast<std::size_t>(count));
    m_pos += count;
    return count;
}

int ResponseStream::read() {
    fill();
    if (isUsedUp()) {
        return m_count;
    }
    return static_cast<unsigned char>(m_block[m_pos++]);
}

void ResponseStream::fill() {
    if (!isUsedUp()) {
        return;
    }
    m_count = MvServerProxy_Receive(m_block);
    m_pos = 0;
    if (m_count > kBlockSize) {
        throwUnexpectedState();
    }
}

void ResponseStream::throwUnexpectedState() {
    const int count = m_count;
    const int position = m_pos;
    m_pos = m_count;  // nothing of the block counts as received; the next read asks again
    Internal::throwUnexpectedState(count, position);
}

}  // namespace Morvenn::Net::MvServerProxy::Client
