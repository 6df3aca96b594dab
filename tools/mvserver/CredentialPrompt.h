// Answers a forward proxy's credential challenge with what the user gave, or asks for it.
#pragma once

#include <morvenn/net/mvserverproxy/client/Credentials.h>

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Type code of the refusals below; the library hands it through to the exception that send()
// raises.
constexpr int kNoCredentials = 407;

struct CredentialOptions {
    std::string user;
    std::string domain;
    std::string passwordFile;
    int passwordDescriptor = -1;
};

// A password from a file or descriptor is offered once: when the forward proxy asks again, it was
// refused. Without one the terminal is asked, up to three times.
class CredentialPrompt : public Client::CredentialProvider {
public:
    explicit CredentialPrompt(CredentialOptions options) : m_options(std::move(options)) {}
    CredentialPrompt(const CredentialPrompt&) = delete;
    CredentialPrompt& operator=(const CredentialPrompt&) = delete;

    const Client::Credential* getCredential(Client::AuthScope* scope) const override;

private:
    bool fromOptions() const;
    std::string user(const std::string& scope) const;
    std::string password(const std::string& scope) const;

    CredentialOptions m_options;
    mutable int m_asked = 0;
    mutable std::unique_ptr<Client::Credential> m_credential;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
