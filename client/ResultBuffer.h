// Where execute() collects a response whose size is not known beforehand.
#ifndef MORVENN_CLIENT_RESULTBUFFER_H
#define MORVENN_CLIENT_RESULTBUFFER_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <streambuf>
#include <string>

namespace Morvenn::Net::MvServerProxy::Client::Internal {

/// Starts at 16384 bytes and doubles when more are needed. What it holds stays where it is: each
/// doubling adds a piece as large as all before it. Holds no byte that was not received.
class ResultBuffer {
public:
    ResultBuffer() : m_room(kFirstPiece) { m_pieces[0].reset(new char[kFirstPiece]); }

    /// Appends what @p source holds ready, without making it ask for more.
    void append(std::streambuf& source) {
        for (auto ready = toSize(source.in_avail()); ready > 0;) {
            if (m_room == 0) {
                grow();
            }
            char* const end = m_pieces[m_last].get() + pieceSize(m_last) - m_room;
            const std::size_t size = std::min(ready, m_room);
            const std::size_t taken = toSize(source.sgetn(end, static_cast<std::streamsize>(size)));
            m_room -= taken;
            m_length += taken;
            ready -= size;
        }
    }

    std::size_t length() const { return m_length; }

    std::string text() const {
        std::string text;
        text.reserve(m_length);
        for (std::size_t i = 0; i <= m_last; ++i) {
            text.append(m_pieces[i].get(), std::min(pieceSize(i), m_length - text.size()));
        }
        return text;
    }

private:
    static constexpr std::size_t kFirstPiece = 16384;
    static constexpr std::size_t kPieces = 32;  // together 32 TiB

    static std::size_t toSize(std::streamsize size) { return static_cast<std::size_t>(size); }

    static std::size_t pieceSize(std::size_t index) {
        return index == 0 ? kFirstPiece : kFirstPiece << (index - 1);
    }

    void grow() {
        const std::size_t size = pieceSize(m_last + 1);
        m_pieces[m_last + 1].reset(new char[size]);
        ++m_last;
        m_room = size;
    }

    std::array<std::unique_ptr<char[]>, kPieces> m_pieces;
    std::size_t m_last = 0;
    std::size_t m_room;  // in the last piece
    std::size_t m_length = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal

#endif  // MORVENN_CLIENT_RESULTBUFFER_H
