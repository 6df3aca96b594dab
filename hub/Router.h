// The hub's paths.
//
// One router serves all threads.
#pragma once

#include "DirectoryStore.h"
#include "Handler.h"
#include "KeyStore.h"
#include "SessionStore.h"
#include "Signer.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class Router {
public:
    // Both stores are borrowed and outlive the router. `shutDown` is called after a request for it
    // has been answered; without one such requests are refused.
    Router(DirectoryStore& directory, KeyStore& keys, std::function<void()> shutDown);

    // The handler of the request. Throws Refusal: 404 for an unknown path, 405 for a method that
    // the path does not know, and what the path itself refuses.
    HandlerPtr route(const Request& request);

private:
    HandlerPtr environments(const Request& request);
    HandlerPtr service(const Request& request);
    HandlerPtr echo(const Request& request);
    HandlerPtr shutdown(const Request& request);

    void checkEnvironment(const Request& request) const;
    HandlerPtr makeSigning();
    const Signer& signer();

    DirectoryStore& m_directory;
    KeyStore& m_keys;
    const std::function<void()> m_shutDown;
    SessionStore m_sessions;
    std::mutex m_signerMutex;
    std::unique_ptr<const Signer> m_signer;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
