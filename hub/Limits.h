// How much one client may ask of the hub.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvenn::Net::MvServerProxy::Hub {

struct Limits {
    std::size_t headerBytes = 64 * 1024;            // request line and headers
    std::uint64_t bodyBytes = 64ull * 1024 * 1024;  // request body; 0: any size
    unsigned idleSeconds = 30;                      // without a byte moved in either direction
    unsigned connections = 64;                      // more clients wait to be accepted
};

// Documents that a service needs in one piece, whatever Limits::bodyBytes allows.
constexpr std::size_t kDocumentLimit = 16 * 1024 * 1024;

}  // namespace Morvenn::Net::MvServerProxy::Hub
