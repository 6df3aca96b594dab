#include "ResponseHead.h"

#include <algorithm>
#include <charconv>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr int kContinue = 100;
constexpr int kFirstFinal = 200;
constexpr int kProxyDemands = 407;

std::string_view withoutLineEnd(std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

}  // namespace

void ResponseHead::line(std::string_view raw, bool ofConnect) {
    m_bytes += raw.size();
    if (m_bytes > kMaxResponseHeaderBytes) {
        throw Failure{MV_STATUS_PROTOCOL, "the response header is longer than " +
                                              std::to_string(kMaxResponseHeaderBytes) + " bytes"};
    }
    const std::string_view text = withoutLineEnd(raw);
    if (text.substr(0, 5) == "HTTP/") {
        m_ofConnect = ofConnect;
        statusLine(text);
        return;
    }
    if (m_complete) {
        return;  // a trailer: it comes after the body, when the block has long been handed over
    }
    if (!text.empty()) {
        headerLine(text);
        return;
    }
    m_continued = m_continued || (!m_ofConnect && m_status == kContinue);
    m_complete = !m_ofConnect && m_status >= kFirstFinal;
}

void ResponseHead::statusLine(std::string_view text) {
    m_complete = false;
    m_headers.clear();
    m_challenges.clear();
    m_status = 0;
    text.remove_prefix(std::min(text.find(' '), text.size()));
    text = trimmed(text);
    std::from_chars(text.data(), text.data() + text.size(), m_status);
    text.remove_prefix(std::min(text.find(' '), text.size()));
    m_reason = trimmed(text);
}

void ResponseHead::headerLine(std::string_view text) {
    const bool folded = text.front() == ' ' || text.front() == '\t';
    if (folded && !m_headers.empty()) {
        m_headers.back().value += " " + std::string(trimmed(text));
        return;
    }
    const auto colon = text.find(':');
    if (colon == std::string_view::npos) {
        return;
    }
    m_headers.push_back({std::string(trimmed(text.substr(0, colon))),
                         std::string(trimmed(text.substr(colon + 1)))});
    if (m_status == kProxyDemands &&
        equalIgnoringCase(m_headers.back().name, "Proxy-Authenticate")) {
        m_challenges.push_back(m_headers.back().value);
    }
}

std::string_view ResponseHead::value(std::string_view name) const {
    const auto match = std::find_if(m_headers.begin(), m_headers.end(), [&](const Header& header) {
        return equalIgnoringCase(header.name, name);
    });
    return match == m_headers.end() ? std::string_view() : std::string_view(match->value);
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
