// The hub's paths.
//
// One router serves all threads.
#pragma once

#include "Handler.h"
#include "SessionStore.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class Router {
public:
    // `shutDown` is called after an accepted request for it has been answered.
    explicit Router(std::function<void()> shutDown);

    // The handler of the request. Throws Refusal: 404 for an unknown path, 405 for a method that
    // the path does not know, and what the path itself refuses.
    HandlerPtr route(const Request& request);

private:
    HandlerPtr echo(const Request& request);
    HandlerPtr shutdown(const Request& request);

    const std::function<void()> m_shutDown;
    SessionStore m_sessions;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
