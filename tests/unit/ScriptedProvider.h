// A credential provider that answers with a function of the test and remembers who asked.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_SCRIPTEDPROVIDER_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_SCRIPTEDPROVIDER_H

#include <functional>
#include <utility>
#include <vector>

#include "morvenn/net/mvserverproxy/client/Credentials.h"

namespace Morvenn::Net::MvServerProxy::Tests {

class ScriptedProvider final : public Client::CredentialProvider {
public:
    using Answer = std::function<const Client::Credential*(const Client::AuthScope&)>;

    explicit ScriptedProvider(Answer answer) : m_answer(std::move(answer)) {}

    /// Gives @p credential, which it borrows, every time.
    explicit ScriptedProvider(const Client::Credential* credential)
        : m_answer([credential](const Client::AuthScope&) { return credential; }) {}

    const Client::Credential* getCredential(Client::AuthScope* scope) const override {
        m_scopes.push_back(*scope);
        return m_answer(*scope);
    }

    /// Copies of the scopes, one for each time it was asked.
    const std::vector<Client::AuthScope>& scopes() const { return m_scopes; }

private:
    Answer m_answer;
    mutable std::vector<Client::AuthScope> m_scopes;
};

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
