#include "testing/FakeProxy.h"

#include <cstdlib>
#include <cstring>
#include <thread>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "testing/Bytes.h"
#include "testing/GTest.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

struct Received {
    int result;
    std::string bytes;
};

bool operator==(const Received& a, const Received& b) {
    return a.result == b.result && a.bytes == b.bytes;
}

std::ostream& operator<<(std::ostream& out, const Received& received) {
    return out << received.result << ' ' << escaped(received.bytes);
}

// What a Receive gives, and what of the buffer it wrote.
Received received() {
    std::string buffer(MV_PROXY_BLOCK_SIZE, '~');
    const int result = MvServerProxy_Receive(buffer.data());
    return {result, buffer.substr(0, buffer.find('~'))};
}

std::string unscripted(const std::function<void()>& calls) {
    try {
        calls();
    } catch (const UnscriptedCall& e) {
        return e.what();
    }
    return "nothing was unscripted";
}

}  // namespace

using FakeProxyAnswers = ProxyTest;

TEST_F(FakeProxyAnswers, ReceiveFromTheScriptInItsOrder) {
    proxy.answers({instruction(17), block("host:gw\n"), end(), status(-1001)});
    EXPECT_EQ(received(), (Received{17, ""}));
    EXPECT_EQ(received(), (Received{8, "host:gw\n"}));
    EXPECT_EQ(received(), (Received{-1, ""}));
    EXPECT_EQ(received(), (Received{-1001, ""}));
    EXPECT_EQ(proxy.calls(), (Calls{receive(4)}));
}

TEST_F(FakeProxyAnswers, OtherFunctionsWithSuccessUnlessScripted) {
    proxy.answers({gives(Function::Send, -5), gives(Function::SendEOF, 7)});
    EXPECT_EQ(MvServerProxy_Init(std::malloc, std::free), 0);
    EXPECT_EQ(MvServerProxy_Send("a"), -5);
    EXPECT_EQ(MvServerProxy_Send("b"), 1);
    EXPECT_EQ(MvServerProxy_SendNoAck("c"), 1);
    EXPECT_EQ(MvServerProxy_SendEOF(), 7);
    EXPECT_EQ(MvServerProxy_Complete(), 0);
    EXPECT_EQ(MvServerProxy_Term(), 0);
    EXPECT_EQ(proxy.calls(),
              (Calls{init(), send("a"), send("b"), sendNoAck("c"), sendEof(), complete(), term()}));
    EXPECT_EQ(proxy.allocateGiven(), &std::malloc);
    EXPECT_EQ(proxy.releaseGiven(), &std::free);
}

TEST_F(FakeProxyAnswers, StepsRepeatAsOftenAsTheySay) {
    proxy.answers({nothing(1000), block("x")});
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(received(), (Received{0, ""}));
    }
    EXPECT_EQ(received(), (Received{1, "x"}));
}

TEST_F(FakeProxyAnswers, EndlessDataFromAFunction) {
    int made = 0;
    proxy.answers(endless([&made] { return std::to_string(++made); }));
    EXPECT_EQ(received(), (Received{1, "1"}));
    EXPECT_EQ(received(), (Received{1, "2"}));
}

TEST_F(FakeProxyAnswers, ClaimsMoreThanItWrites) {
    proxy.answers({block("ab").claiming(20000), block("cd").terminated('!')});
    EXPECT_EQ(received(), (Received{20000, "ab"}));
    EXPECT_EQ(received(), (Received{2, "cd!"}));
}

TEST_F(FakeProxyAnswers, TextsCutIntoBlocks) {
    proxy.answers({inBlocksOf(2, "abc"), inSingleBytes("de"), inBlocksOf(2, "")});
    EXPECT_EQ(received(), (Received{2, "ab"}));
    EXPECT_EQ(received(), (Received{1, "c"}));
    EXPECT_EQ(received(), (Received{1, "d"}));
    EXPECT_EQ(received(), (Received{1, "e"}));
}

TEST(FakeProxyScript, RefusesBlocksThatDoNotFitTheBuffer) {
    EXPECT_NO_THROW(block(std::string(16384, 'x')));
    EXPECT_THROW(block(std::string(16385, 'x')), std::invalid_argument);
    EXPECT_THROW(block(std::string(16384, 'x')).terminated(), std::invalid_argument);
    EXPECT_THROW(inBlocksOf(0, "x"), std::invalid_argument);
}

using FakeProxyHooks = ProxyTest;

TEST_F(FakeProxyHooks, MayThrow) {
    proxy.answers({throwing(Function::Receive, 42), throwing(Function::Send, std::string("s"))});
    EXPECT_THROW(received(), int);
    EXPECT_THROW(MvServerProxy_Send("x"), std::string);
    EXPECT_EQ(proxy.calls(), (Calls{receive(), send("x")}));
}

TEST_F(FakeProxyHooks, MayMakeCallsOfTheirOwn) {
    proxy.answers({instruction(18).doing([] { MvServerProxy_Complete(); })});
    EXPECT_EQ(received(), (Received{18, ""}));
    EXPECT_EQ(proxy.calls(), (Calls{receive(), complete()}));
}

TEST_F(FakeProxyHooks, MayChangeTheScript) {
    proxy.answers({instruction(16).doing([this] { proxy.answers(instruction(18)); })});
    EXPECT_EQ(received(), (Received{16, ""}));
    EXPECT_EQ(received(), (Received{18, ""}));
}

TEST_F(FakeProxyHooks, OfAForkedChildCountInTheParent) {
    EXPECT_TRUE(inFreshProcess([] { MvServerProxy_SendNoAck("from the child"); }).good());
    MvServerProxy_SendNoAck("from the parent");
    EXPECT_EQ(proxy.count(Function::SendNoAck), 2U);
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("from the parent")}));
}

using FakeProxyLastError = ProxyTest;

TEST_F(FakeProxyLastError, LeavesThePointerAloneWhenThereIsNoMessage) {
    char mine[] = "mine";
    char* message = mine;
    EXPECT_EQ(MvServerProxy_GetLastError(&message), 0);
    EXPECT_STREQ(message, "mine");
}

TEST_F(FakeProxyLastError, GivesStepsFirstAndThenTheStandingMessage) {
    proxy.setLastError("standing", -3);
    proxy.answers(lastError("once"));
    char* message = nullptr;
    EXPECT_EQ(MvServerProxy_GetLastError(&message), 0);
    EXPECT_STREQ(message, "once");
    EXPECT_EQ(MvServerProxy_GetLastError(&message), -3);
    EXPECT_STREQ(message, "standing");
}

TEST_F(FakeProxyLastError, OverwritesTheMessageAtTheNextCall) {
    proxy.setLastError("gone soon");
    char* message = nullptr;
    MvServerProxy_GetLastError(&message);
    MvServerProxy_Complete();
    EXPECT_STREQ(message, "#########");
}

TEST(FakeProxyUnscripted, ReceiveAtTheEndOfTheScriptThrowsAtOnce) {
    FakeProxy proxy;
    MvServerProxy_SendEOF();
    EXPECT_EQ(unscripted([] { received(); }),
              "unscripted call 2, Receive; expected: the script is at its end; calls so far:"
              "\n    SendEOF\n    Receive");
    EXPECT_EQ(proxy.complaints(), unscripted([&proxy] {
                  proxy.takeCalls();
                  throw UnscriptedCall(proxy.complaints());
              }));
}

TEST(FakeProxyUnscripted, NamesTheStepThatStandsNextInTheScript) {
    FakeProxy proxy;
    proxy.answers(gives(Function::SendEOF, -7).times(2));
    EXPECT_EQ(unscripted([] { received(); }),
              "unscripted call 1, Receive; expected: next in the script: SendEOF -> -7, 2 times; "
              "calls so far:\n    Receive");
    EXPECT_EQ(proxy.leftOver(), "SendEOF -> -7, 2 times\n");
}

TEST(FakeProxyUnscripted, ThreadWithoutAProxyIsToldSo) {
    std::string text;
    std::thread([&text] { text = unscripted([] { MvServerProxy_Send("x"); }); }).join();
    EXPECT_EQ(text, "MvServerProxy_Send was called on a thread that has no FakeProxy");
}

TEST(FakeProxyUnscripted, CompleteWithoutAProxyIsHarmless) {
    EXPECT_EQ(MvServerProxy_Complete(), 0);
}

TEST(FakeProxyStrict, EveryCallMustMatchTheVeryNextStep) {
    FakeProxy proxy;
    proxy.strict();
    proxy.answers({gives(Function::Send, 1), gives(Function::SendEOF, 0)});
    EXPECT_EQ(MvServerProxy_Send("x"), 1);
    EXPECT_EQ(unscripted([] { MvServerProxy_SendNoAck("y"); }),
              "unscripted call 2, SendNoAck; expected: SendEOF -> 0; calls so far:"
              "\n    Send(\"x\")\n    SendNoAck(\"y\")");
    EXPECT_EQ(MvServerProxy_SendEOF(), 0);
    EXPECT_EQ(unscripted([] { MvServerProxy_SendEOF(); }).substr(0, 55),
              "unscripted call 4, SendEOF; expected: no more calls; ca");
}

TEST(FakeProxyStrict, CompleteOutOfOrderIsOnlyNoted) {
    FakeProxy proxy;
    proxy.strict();
    EXPECT_EQ(MvServerProxy_Complete(), 0);
    EXPECT_EQ(
        proxy.complaints(),
        "unscripted call 1, Complete; expected: no more calls; calls so far:\n    Complete\n");
}

TEST(FakeProxyFailures, TheCallOfAGivenNumberFailsAndItsStepStays) {
    FakeProxy proxy;
    proxy.answers({instruction(16), instruction(18)});
    proxy.failCall(2, -1001);
    EXPECT_EQ(received(), (Received{16, ""}));
    EXPECT_EQ(received(), (Received{-1001, ""}));
    EXPECT_EQ(received(), (Received{18, ""}));
}

TEST(FakeProxyScope, InnerProxyAnswersUntilItIsGone) {
    FakeProxy outer;
    {
        FakeProxy inner;
        EXPECT_EQ(FakeProxy::current(), &inner);
        MvServerProxy_Term();
        EXPECT_EQ(inner.takeCalls(), (Calls{term()}));
        EXPECT_EQ(inner.calls(), Calls{});
    }
    EXPECT_EQ(FakeProxy::current(), &outer);
    EXPECT_EQ(outer.calls(), Calls{});
}
