#include "client/HeaderText.h"

#include <cstring>

#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

std::string_view valueOf(const HeaderMap& headers, std::string_view name) {
    const auto header = headers.find(name);
    return header == headers.end() ? std::string_view() : header->second;
}

std::string formatHeaders(const HeaderMap& headers, std::string_view body) {
    std::size_t size = kLineEnd.size() + body.size();
    for (const auto& [name, value] : headers) {
        size += name.size() + 1 + value.size() + kLineEnd.size();
    }
    std::string text;
    text.reserve(size);
    for (const auto& [name, value] : headers) {
        text += name;
        text += '=';
        text += value;
        text += kLineEnd;
    }
    return text.append(kLineEnd).append(body);
}

HeaderLine parseHeaderLine(std::string_view line) {
    const auto pieces = Util::Internal::firstTwoPieces(line, '=');
    return {Util::Internal::trim(pieces.first), Util::Internal::trim(pieces.second)};
}

HeaderReader::HeaderReader(ResponseStream& stream) : m_stream(stream) {}

bool HeaderReader::next(std::string_view& line) {
    m_line.clear();
    std::string_view piece;
    while (!takeFromBlock(piece)) {
        m_line.append(piece);
        m_stream.fill();
        if (m_stream.isUsedUp()) {  // no data: the proxy's result itself is the line's next byte
            m_line.push_back(static_cast<char>(m_stream.m_count));
        }
    }
    line = m_line.empty() ? piece : m_line.append(piece);
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
