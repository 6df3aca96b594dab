// What is known about each forward proxy until the proxy library is stopped: whether it lets
// requests through, and the credentials it took. Shared by all threads.
//
// Every set of credentials has a number of its own. A connection belongs to one number, so that
// nothing authenticated with one set is ever used with another.
#ifndef MORVENN_PROXY_CREDENTIALSTORE_H
#define MORVENN_PROXY_CREDENTIALSTORE_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "ForwardProxy.h"
#include "ProxyChallenge.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct ProxyKnowledge {
    std::uint64_t number = 0;  // changes with the credentials and with the scheme; 0: none yet
    AuthScheme scheme = AuthScheme::Unknown;
    Credentials credentials;
    bool admitted = false;  // an exchange has come through
    // Credentials are sent only after the proxy has named a scheme: Basic sent on a guess would
    // show the password to a proxy that asks for Digest.
    bool usable() const { return credentials.given && scheme != AuthScheme::Unknown; }
};

class CredentialStore {
public:
    // Adds what the URLs of the settings bring along.
    explicit CredentialStore(const ForwardProxies& proxies);

    ProxyKnowledge about(const std::string& proxy) const;
    void remember(const std::string& proxy, Credentials credentials, AuthScheme scheme);
    // The proxy asked for another scheme than the one last used.
    void setScheme(const std::string& proxy, AuthScheme scheme);
    // Only when the credentials are still those of that number: another thread may have better
    // ones.
    void forget(const std::string& proxy, std::uint64_t number);
    void admit(const std::string& proxy, std::uint64_t number);
    void clear();

private:
    mutable std::mutex m_mutex;
    std::map<std::string, ProxyKnowledge> m_entries;
    std::uint64_t m_lastNumber = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
