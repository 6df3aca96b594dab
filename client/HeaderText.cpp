#include "client/HeaderText.h"

#include <cstring>

#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

namespace {

constexpr std::size_t kLineRoom = 256;

}  // namespace

std::string formatHeaders(const std::map<std::string, std::string>& headers) {
    std::string text;
    for (const auto& [name, value] : headers) {
        text.append(name).append("=").append(value).append(kLineEnd);
    }
    return text.append(kLineEnd);
}

HeaderLine parseHeaderLine(std::string_view line) {
    const auto pieces = Util::Internal::firstTwoPieces(line, '=');
    return {Util::Internal::trim(pieces.first), Util::Internal::trim(pieces.second)};
}

HeaderReader::HeaderReader(ResponseStream& stream) : m_stream(stream) {
    m_line.reserve(kLineRoom);
}

bool HeaderReader::next(std::string_view& line) {
    m_line.clear();
    std::string_view piece;
    while (!takeFromBlock(piece)) {
        m_line.append(piece);
        // The block is used up: ask the proxy. Compared as an integer, so that a status whose low
        // byte is that of a line feed does not end the line.
        const int byte = m_stream.read();
        if (byte == '\n') {
            line = m_line;
            return !line.empty();
        }
        m_line.push_back(static_cast<char>(byte));
    }
    if (m_line.empty()) {
        line = piece;
    } else {
        line = m_line.append(piece);
    }
    return !line.empty();
}

bool HeaderReader::takeFromBlock(std::string_view& piece) {
    if (m_stream.isUsedUp()) {
        piece = {};
        return false;
    }
    const char* begin = m_stream.m_block + m_stream.m_pos;
    const auto held = static_cast<std::size_t>(m_stream.m_count - m_stream.m_pos);
    const void* end = std::memchr(begin, '\n', held);
    const std::size_t size =
        end == nullptr ? held : static_cast<std::size_t>(static_cast<const char*>(end) - begin);
    piece = std::string_view(begin, size);
    m_stream.m_pos += static_cast<int>(size) + (end == nullptr ? 0 : 1);
    return end != nullptr;
}

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal
