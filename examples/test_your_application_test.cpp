// Testing an application without a server: the test kit answers from a script.
//
// The code under test is an ordinary function that uses the library; nothing in it knows that it is
// tested.
#include <istream>
#include <memory>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/testkit/Failure.h"
#include "morvenn/net/mvserverproxy/testkit/GTest.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

/// The application: asks for the state of an order; an unreachable server reads as "unknown".
std::string stateOfOrder(const std::string& number) {
    Client::MSPSession session;
    Client::MvServerRequest request(&session);
    request.setHeader(Client::HeaderKeys::kServiceName, "orders");
    request.setBody(("state of " + number).c_str());
    try {
        return request.execute();
    } catch (const Client::MSPConnectionException&) {
        return "unknown";
    }
}

class OrderState : public ProxyTest {
protected:
    // The library starts the proxy once in a process; here, so that it does not matter which test
    // comes first.
    void SetUp() override {
        Client::MvServerRequest::init();
        proxy.takeCalls();
    }
};

TEST_F(OrderState, IsWhatTheServerSays) {
    proxy.answers({block("ResponseHeaderResponseCode=200\n\nshipped"), end()});

    EXPECT_EQ(stateOfOrder("4711"), "shipped");
    EXPECT_TRUE(sameCalls(
        {send("Service-Name=orders\r\n\r\nstate of 4711"), sendEof(), receive(2), complete()},
        proxy.calls()));
}

TEST_F(OrderState, IsUnknownWithoutAServer) {
    proxy.failCall(2, -1001);  // the first call was Init, the second sends the request

    EXPECT_EQ(stateOfOrder("4711"), "unknown");
}

TEST_F(OrderState, OtherFailuresReachTheCaller) {
    proxy.failCall(2, -1002);
    proxy.setLastError("bad request");

    EXPECT_EQ(failureOf([] { stateOfOrder("4711"); }),
              failure<Client::MSPProtocolException>(0, "bad request"));
}

}  // namespace
