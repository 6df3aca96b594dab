// The piece of a request body that is on its way.
//
// Chunks go in at the end, libcurl reads from the front. What was read stays until its room is
// needed, so a body that fits can be sent again from its beginning: after a connection that turned
// out to be dead, and after a forward proxy asked for credentials.
//
//   |<-- read -->|<-- unread -->|<-- free -->|
//   0          m_head         m_tail    kCapacity
#ifndef MORVENN_PROXY_BODYWINDOW_H
#define MORVENN_PROXY_BODYWINDOW_H

#include <cstddef>
#include <string_view>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy {

class BodyWindow {
public:
    static constexpr std::size_t kCapacity = 64 * 1024;

    // Empty again, with nothing dropped and no end.
    void clear();

    // The whole body at once, for whole() only: borrowed until clear(), not copied.
    void lend(std::string_view body) {
        m_lent = body;
        m_ended = true;
    }

    // Takes the chunk. When it would not fit, what was read is dropped first; when it still does
    // not fit the window grows, so that a chunk once accepted is never lost.
    void append(std::string_view chunk);
    bool fits(std::size_t size) const { return unread() + size <= kCapacity; }

    std::size_t read(char* out, std::size_t size);
    std::size_t unread() const { return m_tail - m_head; }

    // Back to the beginning of the body. False, and nothing changed, when a piece of it was
    // dropped.
    bool rewind();
    bool rewindable() const { return !m_dropped; }

    void end() { m_ended = true; }
    bool ended() const { return m_ended; }

    // The whole body. Requires: rewindable().
    std::string_view whole() const {
        return m_lent.empty() ? std::string_view(m_room.data(), m_tail) : m_lent;
    }

private:
    void dropRead();

    std::vector<char> m_room;  // at least up to m_tail
    std::string_view m_lent;
    std::size_t m_head = 0;
    std::size_t m_tail = 0;
    bool m_dropped = false;
    bool m_ended = false;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
