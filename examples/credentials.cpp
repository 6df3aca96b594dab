// Answering a forward proxy that asks who is calling.
//
// usage: credentials USER PASSWORD URL, with a forward proxy in http_proxy. (A real program asks
// the user or a key store; what stands on a command line is seen by everyone on the machine.)
//
// Only a request with a stream body can be asked: the challenge comes before the body.
#include <iostream>
#include <sstream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

// Gives the same credential once. When the forward proxy refuses it, it asks again: then there is
// nothing better to give, and the request fails with the message below.
class OneCredential : public CredentialProvider {
public:
    OneCredential(const char* user, const char* password) : m_credential(user, password) {}

    const Credential* getCredential(AuthScope* scope) const override {
        std::cout << scope->getRealm() << " asks for credentials\n";
        if (m_given) {
            throw CredentialsUnavailableException(
                407, scope->getRealm() + " refused " + m_credential.getUser());
        }
        m_given = true;
        return &m_credential;
    }

private:
    const Credential m_credential;
    mutable bool m_given = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: credentials USER PASSWORD URL\n";
        return 2;
    }
    const OneCredential provider(argv[1], argv[2]);
    MSPSession session;
    MvServerRequest request(&session);
    request.setCredentialProvider(&provider);
    request.setHeader(HeaderKeys::kServerUrl, argv[3]);
    std::istringstream body("hello through the forward proxy\n");
    request.setBody(&body);
    try {
        std::cout << request.execute();
    } catch (const MSPException& e) {
        std::cout << e.getType() << ": " << e.getMessage() << '\n';
        return 1;
    }
}
