// One exchange up to the point where the response's body can be read.
#pragma once

#include "Body.h"

#include <morvenn/net/mvserverproxy/client/MvServerRequest.h>

#include <istream>
#include <map>
#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

struct Plan {
    std::map<std::string, std::string> headers;
    bool asText = false;  // send the body in one piece instead of as a stream
};

struct Response {
    std::string code;
    std::string text;
    std::string contentType;

    // The body goes first when this is destroyed: a request that still owns its side of the
    // exchange would end it under the reader.
    std::unique_ptr<Client::MvServerRequest> request;
    std::unique_ptr<std::istream> body;
};

// Sends with MvServerRequest::send(): the session's id comes and goes with `session`, a forward
// proxy's challenge is answered by `credentials`.
Response openResponse(Client::MSPSession& session, const Client::CredentialProvider& credentials,
                      const Plan& plan, Body& body, Progress& progress);

// The same from the library's building blocks, for a session id that has to outlive the process: an
// MSPSession does not give it away. Puts `sessionId` into the request and the id that comes back
// into `sessionId`, empty when there is none. A forward proxy's challenge cannot be answered this
// way.
Response openResponse(std::string& sessionId, const Plan& plan, Body& body, Progress& progress);

}  // namespace Morvenn::Net::MvServerProxy::Tools
