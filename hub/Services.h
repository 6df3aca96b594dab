// The services behind /request, chosen by the header "Service-Name".
#pragma once

#include "Handler.h"

namespace Morvenn::Net::MvServerProxy::Hub {

// The handler of that service. Throws Refusal: 400 when the request names none, 404 for a name
// that the hub does not know; both list the names that it knows.
HandlerPtr makeService(const Request& request);

}  // namespace Morvenn::Net::MvServerProxy::Hub
