#include "RequestText.h"

#include <algorithm>
#include <array>
#include <set>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::string_view kDirectoryWord = "getEnv:";
constexpr std::string_view kShutdownWord = "ShutdownServer";
constexpr std::string_view kLineEnd = "\r\n";

[[noreturn]] void refuse(const std::string& why) {
    throw Failure{MV_STATUS_PROTOCOL, "the request was refused before anything was sent: " + why};
}

// Hands out the lines of a text, each without its CRLF.
class LineReader {
public:
    LineReader(std::string_view text, std::size_t limit) : m_text(text), m_limit(limit) {}

    std::string_view next() {
        const auto end = m_text.find(kLineEnd, m_pos);
        if (std::min(end, m_text.size()) > m_limit) {
            refuse("its header text is longer than " + std::to_string(m_limit) +
                   " bytes; shorten it or raise MV_SERVERPROXY_HEADER_LIMIT");
        }
        if (end == std::string_view::npos) {
            refuse("its header text does not end with an empty line");
        }
        const auto line = m_text.substr(m_pos, end - m_pos);
        m_pos = end + kLineEnd.size();
        ++m_number;
        return line;
    }
    std::string_view rest() const { return m_text.substr(m_pos); }
    std::string where() const { return "header line " + std::to_string(m_number); }

private:
    std::string_view m_text;
    std::size_t m_limit;
    std::size_t m_pos = 0;
    std::size_t m_number = 0;
};

bool hasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == '\x7F';
    });
}

// Headers that steer the connection or the framing belong to the proxy library alone.
bool isReserved(std::string_view name) {
    constexpr std::array<std::string_view, 9> kReserved{
        "Host", "Content-Length", "Transfer-Encoding", "Connection", "Expect", "Upgrade",
        "TE",   "Trailer",        "Keep-Alive"};
    return startsWithIgnoringCase(name, "Proxy-") ||
           std::any_of(kReserved.begin(), kReserved.end(),
                       [&](std::string_view r) { return equalIgnoringCase(name, r); });
}

Header readHeader(std::string_view line, const std::string& where) {
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) {
        refuse(where + " has no \"=\"");
    }
    const auto name = line.substr(0, equals);
    if (!isToken(name)) {
        refuse(where + " has a name that HTTP does not allow; use letters, digits and \"-\"");
    }
    if (hasControl(line.substr(equals + 1))) {
        refuse("the value of header \"" + std::string(name) +
               "\" holds a line break or another control character; remove it before setting it");
    }
    if (isReserved(name)) {
        refuse("header \"" + std::string(name) +
               "\" belongs to the connection and cannot be set by a request");
    }
    return {std::string(name), std::string(trimmed(line.substr(equals + 1)))};
}

std::vector<Header> readHeaders(LineReader& lines, bool ordered) {
    std::vector<Header> headers;
    std::set<std::string> seen;
    for (auto line = lines.next(); !line.empty(); line = lines.next()) {
        Header header = readHeader(line, lines.where());
        if (!seen.insert(lower(header.name)).second) {
            refuse("header \"" + header.name + "\" appears more than once");
        }
        if (ordered && !headers.empty() && header.name <= headers.back().name) {
            refuse("header \"" + header.name +
                   "\" is out of order, as if a value before it held a line break");
        }
        headers.push_back(std::move(header));
        if (headers.size() > kMaxRequestHeaders) {
            refuse("it has more than " + std::to_string(kMaxRequestHeaders) + " headers");
        }
    }
    return headers;
}

void expectNothingMore(const LineReader& lines) {
    if (!lines.rest().empty()) {
        refuse("text follows the empty line that ends its header");
    }
}

RequestText readDirectory(LineReader& lines) {
    const auto first = lines.next().substr(kDirectoryWord.size());
    if (hasControl(first)) {
        refuse("the selector of the directory request holds a control character");
    }
    if (!lines.next().empty()) {
        refuse("the selector of the directory request holds a line break");
    }
    expectNothingMore(lines);
    RequestText request;
    request.kind = Kind::Directory;
    request.selector = first;
    return request;
}

}  // namespace

const char* nameOf(Kind kind) {
    constexpr std::array<const char*, 4> kNames{"stream", "text", "directory", "shutdown"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string_view RequestText::value(std::string_view name) const {
    const auto match = std::find_if(headers.begin(), headers.end(), [&](const Header& header) {
        return equalIgnoringCase(header.name, name);
    });
    return match == headers.end() ? std::string_view() : std::string_view(match->value);
}

RequestText readRequestText(std::string_view text, Form form, std::size_t headerLimit) {
    LineReader lines(text, headerLimit);
    if (text.substr(0, kDirectoryWord.size()) == kDirectoryWord) {
        return readDirectory(lines);
    }
    RequestText request;
    if (text.substr(0, text.find(kLineEnd)) == kShutdownWord) {
        lines.next();
        request.kind = Kind::Shutdown;
        request.headers = readHeaders(lines, true);
        expectNothingMore(lines);
        return request;
    }
    request.headers = readHeaders(lines, form == Form::Unacknowledged);
    if (form == Form::Unacknowledged) {
        expectNothingMore(lines);
        return request;
    }
    request.kind = Kind::Text;
    request.body = lines.rest();
    return request;
}

std::string requestUrl(const RequestText& request, const std::string& hub) {
    if (request.kind == Kind::Directory) {
        return hub + "/environments?select=" + percentEncoded(request.selector);
    }
    if (request.kind == Kind::Shutdown) {
        return hub + "/shutdown";
    }
    for (const char* key : {"Base-Full-Url", "Server-Url", "Base-Server-Url"}) {
        const auto url = request.value(key);
        if (!url.empty() && url != "null") {
            return std::string(url);
        }
    }
    return hub + "/request";
}

std::vector<std::string> httpHeaders(const RequestText& request) {
    constexpr std::array<std::string_view, 3> kNotSent{"Base-Full-Url", "Server-Url",
                                                       "Base-Server-Url"};
    std::vector<std::string> lines;
    for (const Header& header : request.headers) {
        const auto is = [&](std::string_view name) { return equalIgnoringCase(header.name, name); };
        if (std::any_of(kNotSent.begin(), kNotSent.end(), is)) {
            continue;
        }
        // A session id comes from the response header of an earlier exchange, where "=" and "%"
        // were escaped on the way in.
        const std::string value = is("SessionID") ? unescaped(header.value, "=%") : header.value;
        lines.push_back(value.empty() ? header.name + ";" : header.name + ": " + value);
    }
    if (request.value("Use-Compression") == "true" && request.value("Accept-Encoding").empty()) {
        lines.emplace_back("Accept-Encoding: gzip");
    }
    if (request.kind != Kind::Directory && request.value("Content-Type").empty()) {
        lines.emplace_back("Content-Type: application/octet-stream");
    }
    return lines;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
