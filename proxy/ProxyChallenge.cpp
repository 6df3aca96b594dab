#include "ProxyChallenge.h"

#include <algorithm>
#include <array>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::size_t kMaxValue = 1024;
constexpr std::string_view kUserKey = "user:";
constexpr std::string_view kPasswordKey = "password:";
constexpr std::string_view kDomainKey = "domain:";

struct SchemeName {
    AuthScheme scheme;
    const char* name;
};
// Strongest first.
constexpr std::array<SchemeName, 3> kSchemes{
    {{AuthScheme::Digest, "Digest"}, {AuthScheme::Basic, "Basic"}, {AuthScheme::Ntlm, "NTLM"}}};

struct OneChallenge {
    std::string scheme;
    std::string realm;
};

// Reads   scheme { parameter "," }   over and over; a word without "=" begins the next scheme.
class ChallengeReader {
public:
    explicit ChallengeReader(std::string_view text) : m_text(text) {}

    std::vector<OneChallenge> all() {
        std::vector<OneChallenge> out;
        for (skip(); !m_text.empty(); skip()) {
            const std::string word(takeWord());
            if (!m_text.empty() && m_text.front() == '=' && !out.empty()) {
                const std::string value = takeValue();
                if (equalIgnoringCase(word, "realm")) {
                    out.back().realm = value;
                }
            } else if (!word.empty()) {
                out.push_back({word, ""});
            } else {
                m_text.remove_prefix(1);
            }
        }
        return out;
    }

private:
    void skip() { m_text.remove_prefix(std::min(m_text.find_first_not_of(" \t,"), m_text.size())); }
    std::string_view takeWord() {
        const auto end = std::min(m_text.find_first_of(" \t,="), m_text.size());
        const auto word = m_text.substr(0, end);
        m_text.remove_prefix(end);
        return word;
    }
    std::string takeValue() {
        m_text.remove_prefix(1);
        if (m_text.empty() || m_text.front() != '"') {
            const auto end = std::min(m_text.find_first_of(" \t,"), m_text.size());
            std::string value(m_text.substr(0, end));
            m_text.remove_prefix(end);
            return value;
        }
        m_text.remove_prefix(1);
        return takeQuoted();
    }
    // A quote ends the value only where a parameter may end: some proxies do not escape the quotes
    // within a realm.
    std::string takeQuoted() {
        std::string value;
        while (!m_text.empty()) {
            const char c = m_text.front();
            m_text.remove_prefix(1);
            if (c == '"' && endsParameter()) {
                break;
            }
            if (c == '\\' && !m_text.empty()) {
                value += m_text.front();
                m_text.remove_prefix(1);
                continue;
            }
            value += c;
        }
        return value;
    }
    bool endsParameter() const {
        const auto next = m_text.find_first_not_of(" \t");
        return next == std::string_view::npos || m_text[next] == ',';
    }

    std::string_view m_text;
};

std::string challengeValue(std::string_view text) {
    std::string value = escaped(oneLine(text), ":");
    if (value.size() > kMaxValue) {
        value.resize(kMaxValue);
    }
    return value;
}

[[noreturn]] void refuseAnswer(const char* why) {
    throw Failure{MV_STATUS_PROTOCOL,
                  std::string("the answer to the credential challenge cannot be used: ") + why};
}

}  // namespace

const char* nameOf(AuthScheme scheme) {
    const auto* row = std::find_if(kSchemes.begin(), kSchemes.end(),
                                   [&](const SchemeName& s) { return s.scheme == scheme; });
    return row == kSchemes.end() ? "unknown" : row->name;
}

ProxyOffer strongestOffer(const std::vector<std::string>& challenges, bool ntlm) {
    std::vector<OneChallenge> offered;
    for (const std::string& challenge : challenges) {
        const auto more = ChallengeReader(challenge).all();
        offered.insert(offered.end(), more.begin(), more.end());
    }
    ProxyOffer offer;
    for (const OneChallenge& one : offered) {
        offer.offered += (offer.offered.empty() ? "" : ", ") + oneLine(one.scheme);
    }
    for (const SchemeName& row : kSchemes) {
        const auto match = std::find_if(
            offered.begin(), offered.end(),
            [&](const OneChallenge& one) { return equalIgnoringCase(one.scheme, row.name); });
        if (match != offered.end() && (row.scheme != AuthScheme::Ntlm || ntlm)) {
            offer.scheme = row.scheme;
            offer.realm = match->realm;
            return offer;
        }
    }
    return offer;
}

std::string challengeText(const ForwardProxy& proxy, const std::string& realm) {
    return "host:" + challengeValue(proxy.host) + "\nport:" + challengeValue(proxy.port) +
           "\nrealm:" + challengeValue(realm) + "\n";
}

bool isAnswer(std::string_view text) {
    return text.substr(0, kUserKey.size()) == kUserKey;
}

Credentials readAnswer(std::string_view text) {
    std::string_view user;
    std::string_view password;
    std::string_view domain;
    for (auto end = text.find("\r\n"); end != std::string_view::npos && end > 0;
         end = text.find("\r\n")) {
        const auto line = text.substr(0, end);
        text.remove_prefix(end + 2);
        const auto takeIf = [&](std::string_view key, std::string_view& field) {
            if (line.substr(0, key.size()) == key) {
                field = line.substr(key.size());
            }
        };
        takeIf(kUserKey, user);
        takeIf(kPasswordKey, password);
        takeIf(kDomainKey, domain);
    }
    if (user.empty()) {
        refuseAnswer("it names no user");
    }
    std::vector<char, WipingAllocator<char>> name;
    name.reserve(domain.size() + 1 + user.size());
    name.insert(name.end(), domain.begin(), domain.end());
    if (!domain.empty()) {
        name.push_back('\\');
    }
    name.insert(name.end(), user.begin(), user.end());
    return {Secret({name.data(), name.size()}), Secret(password), true};
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
