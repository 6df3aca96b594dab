#include "CredentialStore.h"

#include <utility>

namespace Morvenn::Net::MvServerProxy::Proxy {

CredentialStore::CredentialStore(const ForwardProxies& proxies) {
    for (const auto* proxy : {&proxies.forHttp, &proxies.forHttps}) {
        if (*proxy && (*proxy)->speaksHttp() && !(*proxy)->user.empty()) {
            remember((*proxy)->url(), {(*proxy)->user, (*proxy)->password, true},
                     AuthScheme::Unknown);
        }
    }
}

ProxyKnowledge CredentialStore::about(const std::string& proxy) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_entries.find(proxy);
    return entry == m_entries.end() ? ProxyKnowledge() : entry->second;
}

void CredentialStore::remember(const std::string& proxy, Credentials credentials,
                               AuthScheme scheme) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries[proxy] = {++m_lastNumber, scheme, std::move(credentials), false};
}

void CredentialStore::setScheme(const std::string& proxy, AuthScheme scheme) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ProxyKnowledge& entry = m_entries[proxy];
    entry.scheme = scheme;
    entry.admitted = false;
    entry.number = ++m_lastNumber;
}

void CredentialStore::forget(const std::string& proxy, std::uint64_t number) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_entries.find(proxy);
    if (entry != m_entries.end() && entry->second.number == number) {
        m_entries.erase(entry);
    }
}

void CredentialStore::admit(const std::string& proxy, std::uint64_t number) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ProxyKnowledge& entry = m_entries[proxy];
    entry.admitted = entry.admitted || entry.number == number;
}

void CredentialStore::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
