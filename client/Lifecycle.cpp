// The static operations of MvServerRequest: the proxy's life, and its failures.
#include <cstdlib>

#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"

namespace Morvenn::Net::MvServerProxy::Client {

using Logger = Util::MvServerCppBindingLogger;

std::atomic<bool> MvServerRequest::s_initialized{false};

void MvServerRequest::init() {
    if (Logger::isDebug()) {
        Logger::debug("MvServerRequest::init()");
    }
    // The only call of the proxy whose positive results are failures, too.
    const int status = MvServerProxy_Init(std::malloc, std::free);
    if (status != 0) {
        Internal::throwForStatus(status);
    }
    s_initialized.store(true, std::memory_order_relaxed);
    if (Logger::isInfo()) {
        Logger::info("MvServerCppBinding Initialized");
    }
}

void MvServerRequest::term() {
    if (Logger::isDebug()) {
        Logger::debug("MvServerRequest::term()");
    }
    // By design: s_initialized stays set. (Lifecycle.SendAfterTermDoesNotInitialiseAgain)
    Internal::checked(MvServerProxy_Term());
}

std::string MvServerRequest::getLastError() {
    return Internal::lastProxyError();
}

void MvServerRequest::doComplete() {
    static_cast<void>(MvServerProxy_Complete());
}

void MvServerRequest::throwMvServerCppBindingException(int code) {
    Internal::throwForStatus(code);
}

void MvServerRequest::generateLocalMSPException(int code, const std::string& message) {
    Internal::throwLocal(code, message);
}

}  // namespace Morvenn::Net::MvServerProxy::Client
