// The wait on an instruction that the library does not know.
#include <sys/time.h>

#include <csignal>

#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class Spin : public RequestTest {
protected:
    // Runs an exchange that gets these answers in a child that is killed once it has used the
    // processor for a while.
    Outcome exchangeUntilKilled(const Script& answers) {
        proxy.answers(answers);
        return inFreshProcess([this] {
            const itimerval patience{{0, 0}, {0, 100000}};
            setitimer(ITIMER_VIRTUAL, &patience, nullptr);
            MvServerRequest request(&session);
            std::istringstream stream("body");
            request.setBody(&stream);
            request.send();
        });
    }

    void expectNoFurtherCalls(std::uint64_t sent, std::uint64_t received) const {
        EXPECT_EQ(proxy.count(Function::SendNoAck), sent);
        EXPECT_EQ(proxy.count(Function::SendEOF), sent);
        EXPECT_EQ(proxy.count(Function::Receive), received);
        EXPECT_EQ(proxy.count(Function::Complete), 0U);
        EXPECT_EQ(proxy.count(Function::GetLastError), 0U);
    }

    // The script was played in the child.
    void TearDown() override { EXPECT_EQ(proxy.complaints(), ""); }
};

class SpinOn : public Spin, public ::testing::WithParamInterface<int> {};

}  // namespace

// By design: any positive code but 16, 17 and 18 is waited on without a call.
TEST_F(Spin, UnknownInstructionIsWaitedOnWithoutACall) {
    const Outcome outcome = exchangeUntilKilled(instruction(19));
    EXPECT_EQ(outcome.signal, SIGVTALRM) << outcome;
    expectNoFurtherCalls(1, 1);
}

TEST_P(SpinOn, UnknownInstruction) {
    const Outcome outcome = exchangeUntilKilled(instruction(GetParam()));
    EXPECT_EQ(outcome.signal, SIGVTALRM) << outcome;
    expectNoFurtherCalls(1, 1);
}

INSTANTIATE_TEST_SUITE_P(EveryOther, SpinOn, ::testing::Values(1, 5, 15, 255, 16384, 2147483647));

TEST_F(Spin, UnknownInstructionAfterTheBodyIsWaitedOnToo) {
    const Outcome outcome = exchangeUntilKilled({instruction(16), instruction(20)});
    EXPECT_EQ(outcome.signal, SIGVTALRM) << outcome;
    expectNoFurtherCalls(2, 2);
}
