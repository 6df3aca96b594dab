#include "ScriptedProxy.h"

#include <algorithm>
#include <utility>

namespace Morvenn::Net::MvServerProxy::Proxy::Test {

ScriptedProxy::ScriptedProxy(Rules rules, int family)
    : m_rules(std::move(rules)),
      m_server([this](Connection& connection) { serve(connection); }, family) {}

bool ScriptedProxy::accepts(const std::string& head) const {
    if (!m_rules.openPath.empty() && head.find(m_rules.openPath) != std::string::npos) {
        return true;
    }
    const std::string given = headerValue(head, "Proxy-Authorization");
    return std::any_of(m_rules.accepted.begin(), m_rules.accepted.end(), [&](const auto& rule) {
        return rule.back() == '*' ? given.compare(0, rule.size() - 1, rule, 0, rule.size() - 1) == 0
                                  : given == rule;
    });
}

void ScriptedProxy::serve(Connection& connection) {
    for (std::string head = connection.readHead(); !head.empty(); head = connection.readHead()) {
        const bool waits = headerValue(head, "Expect") == "100-continue";
        std::string body;
        if (!m_rules.answersExpect) {
            body = connection.readBody(head);
        }
        const std::string given = headerValue(head, "Proxy-Authorization");
        const std::string scheme = given.empty() ? "none" : given.substr(0, given.find(' '));
        if (!accepts(head)) {
            m_server.note("407 " + scheme);
            connection.send("HTTP/1.1 407 Proxy Authentication Required\r\n" + m_rules.challenges +
                            "Content-Length: 6\r\n" + (waits ? "Connection: close\r\n" : "") +
                            "\r\ndenied");
            if (waits) {
                return;
            }
            if (m_rules.answersExpect) {
                connection.readBody(head);
            }
            continue;
        }
        if (m_rules.answersExpect) {
            connection.send(waits ? "HTTP/1.1 100 Continue\r\n\r\n" : "");
            body = connection.readBody(head);
        }
        m_server.note("200 " + scheme + " " + std::to_string(body.size()));
        connection.answer(body);
    }
}

std::string basic(const std::string& userAndPassword) {
    constexpr const char* kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out = "Basic ";
    for (std::size_t i = 0; i < userAndPassword.size(); i += 3) {
        const std::string piece = userAndPassword.substr(i, 3);
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8U | (k < piece.size() ? static_cast<unsigned char>(piece[k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            out += k <= piece.size() ? kDigits[bits >> (18 - 6 * k) & 63U] : '=';
        }
    }
    return out;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
