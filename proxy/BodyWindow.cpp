#include "BodyWindow.h"

#include <algorithm>
#include <cstring>

#include "CopyBytes.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

void BodyWindow::clear() {
    if (m_room.size() > 2 * kCapacity) {
        std::vector<char>().swap(m_room);  // a large chunk came by; its room is given back
    }
    m_lent = {};
    m_head = 0;
    m_tail = 0;
    m_dropped = false;
    m_ended = false;
}

void BodyWindow::append(std::string_view chunk) {
    if (m_head > 0 && m_tail + chunk.size() > kCapacity) {
        dropRead();
    }
    if (m_tail + chunk.size() > m_room.size()) {
        m_room.resize(std::max(m_tail + chunk.size(), kCapacity));
    }
    copyBytes(m_room.data() + m_tail, chunk.data(), chunk.size());
    m_tail += chunk.size();
}

void BodyWindow::dropRead() {
    std::memmove(m_room.data(), m_room.data() + m_head, unread());
    m_tail -= m_head;
    m_head = 0;
    m_dropped = true;
}

std::size_t BodyWindow::read(char* out, std::size_t size) {
    const std::size_t count = std::min(size, unread());
    copyBytes(out, m_room.data() + m_head, count);
    m_head += count;
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
