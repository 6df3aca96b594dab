// A request whose whole text the caller formats.
#include <climits>

#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class CompleteRequest : public RequestTest {
protected:
    MvServerRequest request{&session};
};

}  // namespace

TEST_F(CompleteRequest, TextGoesOutAsItIsAndNothingIsReceived) {
    request.setHeader("A", "unused");
    EXPECT_EQ(request.sendCompleteRequest("any text\xff\r\n"), 0);
    EXPECT_EQ(proxy.calls(), (Calls{send("any text\xff\r\n"), sendEof()}));
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(CompleteRequest, EmptyTextIsSent) {
    EXPECT_EQ(request.sendCompleteRequest(""), 0);
    EXPECT_EQ(proxy.calls(), (Calls{send(""), sendEof()}));
}

TEST_F(CompleteRequest, ResultIsThatOfTheEndMarker) {
    for (const int result : {0, 1, 7, INT_MAX}) {
        proxy.answers({gives(Function::Send, 99), gives(Function::SendEOF, result)});
        EXPECT_EQ(request.sendCompleteRequest("x"), result);
    }
}

TEST_F(CompleteRequest, NullTextIsRaisedWithoutACall) {
    proxy.setLastError("M");
    EXPECT_EQ(failureOf([this] { request.sendCompleteRequest(nullptr); }),
              failure<MSPUnrecognisedException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{getLastError()}));
    EXPECT_EQ(errorLines(), (Lines{" Exception caught. The error code is :--5006", "M"}));
}

TEST_F(CompleteRequest, FailuresAreRaisedByTheirClass) {
    proxy.setLastError("M");
    proxy.answers(gives(Function::Send, -1001));
    EXPECT_EQ(failureOf([this] { request.sendCompleteRequest("x"); }),
              failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.takeCalls(), (Calls{send("x"), getLastError()}));

    proxy.answers(gives(Function::SendEOF, -1002));
    EXPECT_EQ(failureOf([this] { request.sendCompleteRequest("x"); }),
              failure<MSPProtocolException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{send("x"), sendEof(), getLastError()}));
}

TEST_F(CompleteRequest, RequestCanStillBeSent) {
    request.sendCompleteRequest("x");
    proxy.answers({block("\nbody"), end()});
    request.setBody("y");
    EXPECT_EQ(request.execute(), "body");
}
