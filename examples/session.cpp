// One session for several requests: the server's session id travels by itself.
//
// The hub's service Headers answers the headers that arrived.
#include <iostream>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

// A request object is sent once; the session is what they share.
bool arrivesWithSessionId(MSPSession& session) {
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServiceName, "Headers");
    request.setBody("which headers do you see?");
    return request.execute().find("SessionID:") != std::string::npos;
}

}  // namespace

int main() {
    try {
        MSPSession session;
        for (const char* turn : {"first", "second", "third"}) {
            std::cout << turn
                      << " request: " << (arrivesWithSessionId(session) ? "with" : "without")
                      << " a session id\n";
        }
        MSPSession another;
        std::cout << "another session: " << (arrivesWithSessionId(another) ? "with" : "without")
                  << " a session id\n";
    } catch (const MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
