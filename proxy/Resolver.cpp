#include "Resolver.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <memory>
#include <set>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::chrono::seconds kValidFor{60};
constexpr std::size_t kMaxKnown = 256;

struct AddressesCleanup {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

bool needsNoResolving(const std::string& host) {
    std::array<unsigned char, 16> bytes{};
    return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 ||
           inet_pton(AF_INET6, host.substr(0, host.find('%')).c_str(), bytes.data()) == 1 ||
           equalIgnoringCase(host, "localhost");
}

std::string numeric(const addrinfo& address) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(address.ai_addr, address.ai_addrlen, text.data(), text.size(), nullptr, 0,
                    NI_NUMERICHOST) != 0) {
        return {};
    }
    return address.ai_family == AF_INET6 ? "[" + std::string(text.data()) + "]"
                                         : std::string(text.data());
}

std::string addresses(const std::string& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_ADDRCONFIG;
    addrinfo* list = nullptr;
    const int code = getaddrinfo(host.c_str(), nullptr, &hints, &list);
    const std::unique_ptr<addrinfo, AddressesCleanup> owned(list);
    std::string joined;
    std::set<std::string> seen;
    for (const addrinfo* one = list; code == 0 && one != nullptr; one = one->ai_next) {
        const std::string text = numeric(*one);
        if (!text.empty() && seen.insert(text).second) {
            joined += (joined.empty() ? "" : ",") + text;
        }
    }
    if (joined.empty()) {
        throw Failure{MV_STATUS_CANNOT_CONNECT,
                      "the host name \"" + oneLine(host) + "\" cannot be resolved: " +
                          (code == 0 ? "it has no address" : gai_strerror(code)) +
                          "; check the name and the name service"};
    }
    return joined;
}

}  // namespace

std::string Resolver::entry(const std::string& host, const std::string& port) {
    if (needsNoResolving(host)) {
        return {};
    }
    const std::string key = host + ":" + port;
    const auto now = std::chrono::steady_clock::now();
    const auto known = m_known.find(key);
    if (known != m_known.end() && now < known->second.until) {
        return known->second.entry;
    }
    if (m_known.size() >= kMaxKnown) {
        m_known.clear();
    }
    std::string entry = "+" + key + ":" + addresses(host);
    m_known[key] = {entry, now + kValidFor};
    return entry;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
