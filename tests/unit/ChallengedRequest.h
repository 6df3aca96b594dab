// A request with a stream body that a forward proxy challenges.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_CHALLENGEDREQUEST_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_CHALLENGEDREQUEST_H

#include <sstream>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "testing/FakeProxy.h"
#include "tests/unit/CallLists.h"

namespace Morvenn::Net::MvServerProxy::Tests {

/// The challenge that the tests use where its text does not matter.
inline const std::string kChallenge = "host:gateway\nport:3128\nrealm:corp\n";

/// The proxy wants the body, then gives the response "done".
inline TestKit::Script bodyThenResponse() {
    using namespace TestKit;
    return {instruction(16), instruction(18), block("\ndone"), end()};
}

/// What executeChallenged() calls up to the challenge, the reading of which is the second Receive.
inline TestKit::Calls callsUpToTheChallenge() {
    using namespace TestKit;
    return {init(), sendNoAck("\r\n"), sendEof(), receive(2)};
}

/// Executes a request of its own with the body "<order/>" and no headers.
inline std::string executeChallenged(const Client::CredentialProvider* provider) {
    Client::MSPSession session;
    Client::MvServerRequest request(&session);
    std::istringstream document("<order/>");
    request.setBody(&document);
    request.setCredentialProvider(provider);
    return request.execute();
}

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
