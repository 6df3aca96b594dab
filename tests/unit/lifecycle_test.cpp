// Starting and stopping the proxy.
#include <climits>
#include <cstdlib>
#include <sstream>

#include "LoggedTest.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;

namespace {

using Lifecycle = LoggedTest;

// One whole exchange with a text body and no headers; its calls without those of the lifecycle.
const Calls kExchange{send("\r\nbody"), sendEof(), receive(2), complete()};

void answerOneExchange(FakeProxy& proxy) {
    proxy.answers({block("\n"), end()});
}

void exchange() {
    MSPSession session;
    MvServerRequest request(&session);
    request.setBody("body");
    EXPECT_EQ(request.execute(), "");
}

}  // namespace

TEST_F(Lifecycle, InitPassesMallocAndFree) {
    MvServerRequest::init();
    EXPECT_EQ(proxy.calls(), (Calls{init()}));
    EXPECT_EQ(proxy.allocateGiven(), &std::malloc);
    EXPECT_EQ(proxy.releaseGiven(), &std::free);
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : MvServerRequest::init()",
                                 " [INFO ] : MvServerCppBinding Initialized"}));
}

TEST_F(Lifecycle, InitAgainStartsTheProxyAgain) {
    MvServerRequest::init();
    MvServerRequest::init();
    EXPECT_EQ(proxy.calls(), (Calls{init(2)}));
}

TEST_F(Lifecycle, AnyResultOfInitButZeroFails) {
    const struct {
        int result;
        Failure expected;
    } rows[] = {
        {1, failure<MSPUnrecognisedException>(0, "M")},
        {INT_MAX, failure<MSPUnrecognisedException>(0, "M")},
        {-1, failure<MSPUnrecognisedException>(0, "M")},
        {-42, failure<MSPUnrecognisedException>(0, "M")},
        {-1001, failure<MSPConnectionException>(0, "M")},
        {-1002, failure<MSPProtocolException>(0, "M")},
        {-1003, failure<MSPRuntimeException>(0, "M")},
        {-5005, failure<MSPConnectionException>(0, "M")},
        {-5006, failure<MSPUnrecognisedException>(0, "M")},
        {INT_MIN, failure<MSPUnrecognisedException>(0, "M")},
    };
    proxy.setLastError("M");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.result);
        proxy.answers(gives(Function::Init, row.result));
        EXPECT_EQ(failureOf([] { MvServerRequest::init(); }), row.expected);
        EXPECT_EQ(proxy.takeCalls(), (Calls{init(), getLastError()}));
    }
}

TEST_F(Lifecycle, FailedInitIsLoggedAndLeavesTheLibraryUninitialised) {
    proxy.setLastError("no hub");
    proxy.answers(gives(Function::Init, 1));
    failureOf([] { MvServerRequest::init(); });
    EXPECT_EQ(logLines(),
              (Lines{" [DEBUG] : MvServerRequest::init()",
                     " [DEBUG] : MvServerRequest::throwMvServerCppBindingException()",
                     " [ERROR] :  Exception caught. The error code is :-1", " [ERROR] : no hub"}));
    proxy.takeCalls();

    answerOneExchange(proxy);
    exchange();
    EXPECT_EQ(proxy.calls().entries().front(), init()) << "send() tries again";
}

TEST_F(Lifecycle, SendInitialisesOnce) {
    answerOneExchange(proxy);
    exchange();
    EXPECT_EQ(proxy.takeCalls(),
              (Calls{init(), send("\r\nbody"), sendEof(), receive(2), complete()}));
    answerOneExchange(proxy);
    exchange();
    EXPECT_EQ(proxy.takeCalls(), kExchange);
}

TEST_F(Lifecycle, SendWhoseInitFailsSendsNothingAndStaysUnused) {
    proxy.setLastError("M");
    MSPSession session;
    {
        MvServerRequest request(&session);
        request.setBody("body");
        proxy.answers(gives(Function::Init, -1001));
        EXPECT_EQ(failureOf([&] { request.send(); }), failure<MSPConnectionException>(0, "M"));
        EXPECT_EQ(proxy.takeCalls(), (Calls{init(), getLastError()}));

        answerOneExchange(proxy);
        EXPECT_EQ(request.execute(), "");
    }
    EXPECT_EQ(proxy.takeCalls(),
              (Calls{init(), send("\r\nbody"), sendEof(), receive(2), complete()}));
}

TEST_F(Lifecycle, OnlySendInitialisesByItself) {
    MSPSession session;
    MvServerRequest request(&session);
    request.submitRequestHeader();
    request.sendCompleteRequest("x");
    request.shutdownServer();
    EXPECT_EQ(proxy.calls().count(Function::Init), 0U);
}

TEST_F(Lifecycle, TermStopsTheProxy) {
    MvServerRequest::term();
    EXPECT_EQ(proxy.calls(), (Calls{term()}));
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : MvServerRequest::term()"}));
}

TEST_F(Lifecycle, OnlyANegativeResultOfTermFails) {
    proxy.setLastError("M");
    proxy.answers(
        {gives(Function::Term, 5), gives(Function::Term, INT_MAX), gives(Function::Term, -5005)});
    EXPECT_NO_THROW(MvServerRequest::term());
    EXPECT_NO_THROW(MvServerRequest::term());
    EXPECT_EQ(failureOf([] { MvServerRequest::term(); }), failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{term(3), getLastError()}));
}

// By design: term leaves the library initialised.
TEST_F(Lifecycle, SendAfterTermDoesNotInitialiseAgain) {
    MvServerRequest::init();
    MvServerRequest::term();
    proxy.takeCalls();
    answerOneExchange(proxy);
    exchange();
    EXPECT_EQ(proxy.calls(), kExchange);
}

TEST_F(Lifecycle, InitAfterTermStartsTheProxyAgain) {
    MvServerRequest::init();
    MvServerRequest::term();
    MvServerRequest::init();
    EXPECT_EQ(proxy.calls(), (Calls{init(), term(), init()}));
}

TEST_F(Lifecycle, ResultOfCompleteIsIgnored) {
    proxy.answers({gives(Function::Complete, -1001), gives(Function::Complete, 5)});
    MvServerRequest::doComplete();
    MvServerRequest::doComplete();
    EXPECT_EQ(proxy.calls(), (Calls{complete(2)}));
    EXPECT_EQ(logLines(), Lines{});
}

// --- instructions -------------------------------------------------------------------------------

TEST_F(Lifecycle, InstructionIsReturnedUnchanged) {
    MSPSession session;
    MvServerRequest request(&session);
    for (const int result : {16, 17, 18, 0, 1, 255, -1, -1001, 16385, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(result);
        proxy.answers(instruction(result));
        EXPECT_EQ(request.waitForMspInstruction(), result);
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(11)})) << "a status is not raised here";
}

TEST_F(Lifecycle, RequestThatWasNotSentCompletesAtItsEnd) {
    {
        MSPSession session;
        const MvServerRequest request(&session);
    }
    EXPECT_EQ(proxy.calls(), (Calls{complete()}));
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : MvServerRequest::~MvServerRequest()"}));
}
