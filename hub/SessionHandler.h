// What every exchange of an application gets besides its service's answer: the session's id, and
// compression when the client asked for it.
#pragma once

#include "Handler.h"
#include "SessionStore.h"

namespace Morvenn::Net::MvServerProxy::Hub {

// Wraps `service`. `sessions` is borrowed and outlives the handler.
HandlerPtr inSession(HandlerPtr service, const Request& request, SessionStore& sessions);

}  // namespace Morvenn::Net::MvServerProxy::Hub
