// Copying a request moves its exchange and copies the rest.
#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class RequestCopies : public RequestTest {
protected:
    static void expectWithoutExchange(MvServerRequest& request) {
        const Failure expected = failure<MSPRuntimeException>(
            -1,
            "This MvServerRequest has no exchange any more: it was handed over to a response or to "
            "a copy. Use a new MvServerRequest.");
        EXPECT_EQ(failureOf([&] { request.send(); }), expected);
        EXPECT_EQ(failureOf([&] { request.execute(); }), expected);
        EXPECT_EQ(failureOf([&] { request.waitForMspInstruction(); }), expected);
    }
};

}  // namespace

TEST_F(RequestCopies, CopySendsWhatTheOriginalWasGiven) {
    {
        MvServerRequest original(&session);
        original.setHeader("A", "1");
        original.setBody("x");
        MvServerRequest copy(original);
        copy.setHeader("B", "2");
        proxy.answers({block("ResponseHeaderResponseCode=200\n\nbody"), end()});
        EXPECT_EQ(copy.execute(), "body");
        EXPECT_EQ(copy.getResponseCode(), "200");
        EXPECT_EQ(original.getResponseCode(), "");
    }
    EXPECT_EQ(proxy.calls(),
              (Calls{send("A=1\r\nB=2\r\n\r\nx"), sendEof(), receive(2), complete()}))
        << "one exchange, ended once";
}

TEST_F(RequestCopies, OriginalRefusesToBeUsed) {
    MvServerRequest original(&session);
    original.setBody("x");
    MvServerRequest copy(original);
    expectWithoutExchange(original);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(RequestCopies, StreamBodyAndProviderAreShared) {
    std::istringstream stream("body");
    MvServerRequest original(&session);
    original.setBody(&stream);
    MvServerRequest copy(original);
    EXPECT_EQ(copy.getCredentialProvider(), original.getCredentialProvider());
    proxy.answers({instruction(16), instruction(18), block("\n"), end()});
    copy.execute();
    EXPECT_EQ(proxy.calls().entries()[3], sendNoAck("body"));
}

TEST_F(RequestCopies, AssignmentEndsTheTargetsExchangeFirst) {
    {
        MvServerRequest original(&session);
        original.setBody("x");
        MvServerRequest target(&session);
        target.setBody("replaced");
        target = original;
        EXPECT_EQ(proxy.takeCalls(), (Calls{complete()}));
        expectWithoutExchange(original);
        proxy.answers({block("\n"), end()});
        target.execute();
    }
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\nx"), sendEof(), receive(2), complete()}));
}

TEST_F(RequestCopies, AssignmentToItselfChangesNothing) {
    MvServerRequest request(&session);
    request.setBody("x");
    MvServerRequest& same = request;
    request = same;
    EXPECT_EQ(proxy.calls(), Calls{});
    proxy.answers({block("\nbody"), end()});
    EXPECT_EQ(request.execute(), "body");
}

TEST_F(RequestCopies, CopyOfASentRequestIsSentToo) {
    proxy.answers({block("ResponseHeaderResponseCode=200\n\n"), end()});
    MvServerRequest original(&session);
    original.setBody("x");
    original.execute();
    MvServerRequest copy(original);
    EXPECT_EQ(copy.getResponseCode(), "200");
    EXPECT_EQ(failureOf([&] { copy.send(); }),
              failure<MSPRuntimeException>(-1,
                                           "Attempted reuse of MvServerRequest instance with more "
                                           "than one server requests."));
}

TEST_F(RequestCopies, DestructionIsLoggedForEach) {
    {
        MvServerRequest original(&session);
        MvServerRequest copy(original);
    }
    EXPECT_EQ(proxy.calls(), (Calls{complete()}));
    EXPECT_EQ(lines(), (Lines{" [DEBUG] : MvServerRequest::~MvServerRequest()",
                              " [DEBUG] : MvServerRequest::~MvServerRequest()"}));
}
