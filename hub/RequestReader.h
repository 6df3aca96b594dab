// Takes a request header over from the HTTP library.
#pragma once

#include "Request.h"

#include <cstdint>

struct MHD_Connection;

namespace Morvenn::Net::MvServerProxy::Hub {

Request readRequest(MHD_Connection* connection, const char* method, const char* path);

// The announced size of the body, 0 when none is announced.
std::uint64_t announcedBody(const Request& request);

}  // namespace Morvenn::Net::MvServerProxy::Hub
