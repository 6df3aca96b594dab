#include "BodyWindow.h"

#include <algorithm>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Proxy {

void BodyWindow::clear() {
    if (m_bytes.capacity() > 2 * kCapacity) {
        std::vector<char>().swap(m_bytes);  // a large chunk came by; its room is given back
    }
    m_bytes.clear();
    m_lent = {};
    m_head = 0;
    m_dropped = false;
    m_ended = false;
}

void BodyWindow::append(std::string_view chunk) {
    if (m_head > 0 && m_bytes.size() + chunk.size() > kCapacity) {
        m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(m_head));
        m_head = 0;
        m_dropped = true;
    }
    m_bytes.insert(m_bytes.end(), chunk.begin(), chunk.end());
}

std::size_t BodyWindow::read(char* out, std::size_t size) {
    const std::size_t count = std::min(size, unread());
    if (count > 0) {
        std::memcpy(out, m_bytes.data() + m_head, count);
        m_head += count;
    }
    return count;
}

bool BodyWindow::rewind() {
    if (m_dropped) {
        return false;
    }
    m_head = 0;
    return true;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
