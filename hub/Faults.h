// Faulty answers on request, for testing clients: what a request may ask for.
//
// The header "Hub-Fault" or the query argument "fault" holds a list like "delay:500,cut:10": names
// with an optional value after a colon, separated by commas. docs/hub.md has the table.
#pragma once

#include "Request.h"

#include <cstdint>
#include <optional>

namespace Morvenn::Net::MvServerProxy::Hub {

struct FaultPlan {
    std::optional<unsigned> earlyStatus;        // answer this before the body is read
    std::optional<unsigned> delayMs;            // before the answer begins
    std::optional<unsigned> dribbleMs;          // body byte by byte, with this pause before each
    std::optional<std::uint64_t> cutAfter;      // close after so many body bytes
    std::optional<std::uint64_t> resetAfter;    // TCP reset after so many body bytes
    std::optional<std::int64_t> lengthError;    // Content-Length is wrong by so much
    std::optional<std::size_t> headerBytes;     // that much more in the header, in many lines
    std::optional<std::size_t> headerLine;      // the same in one line
    std::optional<std::string> gzip;            // what is wrong with the compressed body
    std::optional<std::string> redirectTarget;  // 302 with this Location
    bool reset = false;                         // TCP reset instead of an answer
    bool close = false;                         // orderly end instead of an answer
};

// The faults that the request asks for; nothing when it asks for none. Throws Refusal: 403 when it
// asks although `allowed` is false, 400 for a name or value that is not known.
std::optional<FaultPlan> requestedFaults(const Request& request, bool allowed);

}  // namespace Morvenn::Net::MvServerProxy::Hub
