// What every request has to pass before it is looked at.
#pragma once

#include "Limits.h"
#include "Request.h"

namespace Morvenn::Net::MvServerProxy::Hub {

// Throws Refusal when
// - request line and headers exceed the limit (431);
// - "Host" does not name this machine's loopback while `loopbackNamesOnly` holds (421): a web page
//   whose host name was pointed at 127.0.0.1 gets nothing;
// - "Origin" is there (403): the request was sent by a web page, which has no business here.
void checkRequest(const Request& request, const Limits& limits, bool loopbackNamesOnly);

// Throws Refusal with 413 when that many body bytes are more than the limit.
void checkBodySize(std::uint64_t bytes, const Limits& limits);

}  // namespace Morvenn::Net::MvServerProxy::Hub
