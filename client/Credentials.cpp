#include "morvenn/net/mvserverproxy/client/Credentials.h"

namespace Morvenn::Net::MvServerProxy::Client {

Credential::Credential(const std::string& user, const std::string& password,
                       const std::string& domain)
    : m_user(user), m_password(password), m_domain(domain) {}
Credential::Credential(const std::string& user, const std::string& password)
    : m_user(user), m_password(password) {}
Credential::Credential(const Credential&) = default;
Credential& Credential::operator=(const Credential&) = default;
Credential::~Credential() = default;

std::string Credential::getUser() const {
    return m_user;
}
std::string Credential::getPassword() const {
    return m_password;
}
std::string Credential::getDomain() const {
    return m_domain;
}

AuthScope::AuthScope(const std::string& host, const std::string& port, const std::string& realm)
    : m_host(host), m_port(port), m_realm(realm) {}
AuthScope::AuthScope(const AuthScope&) = default;
AuthScope& AuthScope::operator=(const AuthScope&) = default;
AuthScope::~AuthScope() = default;

std::string AuthScope::getHost() const {
    return m_host;
}
std::string AuthScope::getPort() const {
    return m_port;
}
std::string AuthScope::getRealm() const {
    return m_realm;
}

}  // namespace Morvenn::Net::MvServerProxy::Client
