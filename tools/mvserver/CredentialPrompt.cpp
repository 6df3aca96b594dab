#include "CredentialPrompt.h"

#include "Secrets.h"
#include "Terminal.h"

#include <morvenn/net/mvserverproxy/client/Exceptions.h>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using namespace Morvenn::Net::MvServerProxy::Client;

constexpr int kMostPrompts = 3;

std::string described(const AuthScope& scope) {
    return escaped("forward proxy " + scope.getHost() + ":" + scope.getPort() + " (" +
                   scope.getRealm() + ")");
}

[[noreturn]] void refuse(const std::string& message) {
    throw CredentialsUnavailableException(kNoCredentials, message);
}

}  // namespace

const Credential* CredentialPrompt::getCredential(AuthScope* scope) const {
    const std::string who = described(*scope);
    ++m_asked;
    if (m_asked > (fromOptions() ? 1 : kMostPrompts)) {
        refuse(who + " refused the credentials");
    }
    if (m_asked > 1) {
        note("mvserver: " + who + " refused the credentials");
    }
    const std::string name = user(who);
    std::string secret = password(who);
    m_credential = std::make_unique<Credential>(name, secret, m_options.domain);
    wipe(secret);
    return m_credential.get();
}

bool CredentialPrompt::fromOptions() const {
    return !m_options.passwordFile.empty() || m_options.passwordDescriptor >= 0;
}

std::string CredentialPrompt::user(const std::string& scope) const {
    if (!m_options.user.empty()) {
        return m_options.user;
    }
    const auto answer = fromOptions() ? std::nullopt : askVisibly("User for " + scope + ": ");
    if (!answer) {
        refuse(scope + " asks for credentials, and no user was given");
    }
    return *answer;
}

std::string CredentialPrompt::password(const std::string& scope) const {
    if (!m_options.passwordFile.empty()) {
        return passwordFromFile(m_options.passwordFile);
    }
    if (m_options.passwordDescriptor >= 0) {
        return passwordFromDescriptor(m_options.passwordDescriptor);
    }
    const auto answer = askWithoutEcho("Password for " + scope + ": ");
    if (!answer) {
        refuse(scope + " asks for credentials, and there is neither a password nor a terminal");
    }
    return *answer;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
