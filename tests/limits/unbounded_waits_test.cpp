// Waits without a limit: the library asks as long as the proxy makes it ask, at once and without
// pause, and goes on as soon as it may.
#include <ctime>
#include <sstream>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

constexpr std::size_t kMany = 1000000;

class UnboundedWait : public ProxyTest {
protected:
    PrivateTemp temp;
    MSPSession session;
};

class Gateway : public CredentialProvider {
public:
    const Credential* getCredential(AuthScope* /*scope*/) const override { return &m_credential; }

private:
    Credential m_credential{"u", "p"};
};

}  // namespace

TEST_F(UnboundedWait, BodyThatIsNotReadyIsAskedForAMillionTimes) {
    proxy.answers({block("\n"), nothing(kMany), block("late"), end()});
    {
        MvServerRequest request(&session);
        request.setBody("x");
        EXPECT_EQ(request.execute(), "late");
    }
    EXPECT_EQ(proxy.calls(),
              (Calls{init(), send("\r\nx"), sendEof(), receive(1 + kMany + 2), complete()}));
}

TEST_F(UnboundedWait, DirectoryThatIsNotReadyIsAskedForAThousandTimes) {
    proxy.answers({nothing(1000), block("Production\n7\n1\ntype=web\n\n"), end()});
    Admin::EnvironmentInfo info;
    ASSERT_NE(info.getEnvironment("Production"), nullptr);
    EXPECT_EQ(proxy.calls(), (Calls{init(), sendNoAck("getEnv:All\r\n\r\n"), sendEof(),
                                    receive(1000 + 2), complete(2)}));
}

TEST_F(UnboundedWait, HeaderBlockTakesEveryResultAsAByte) {
    constexpr std::size_t kTimes = 100000;
    proxy.answers({block("k=v"), status(-1).times(kTimes), status(-1001).times(kTimes),
                   block("\n\n"), end()});
    MvServerRequest request(&session);
    request.setBody("x");
    EXPECT_EQ(request.execute(), "");
    EXPECT_EQ(proxy.calls(),
              (Calls{init(), send("\r\nx"), sendEof(), receive(1 + 2 * kTimes + 2), complete()}));
}

TEST_F(UnboundedWait, EveryChallengeIsAnswered) {
    constexpr std::size_t kChallenges = 1000;
    for (std::size_t i = 0; i < kChallenges; ++i) {
        proxy.answers({instruction(17), block("host:h\n")});
    }
    proxy.answers({instruction(18), block("\n"), end()});
    const Gateway gateway;
    std::istringstream body("unread");
    MvServerRequest request(&session);
    request.setBody(&body);
    request.setCredentialProvider(&gateway);
    EXPECT_EQ(request.execute(), "");
    EXPECT_EQ(proxy.count(Function::SendNoAck), 1 + kChallenges);
    EXPECT_EQ(proxy.count(Function::SendEOF), 1U);
    EXPECT_EQ(proxy.count(Function::Receive), 2 * kChallenges + 3);
}

TEST_F(UnboundedWait, BodyThatWasSentIsNotSentAgain) {
    constexpr std::size_t kDemands = 1000;
    proxy.answers({instruction(16).times(kDemands), instruction(18), block("\n"), end()});
    std::istringstream body("once");
    MvServerRequest request(&session);
    request.setBody(&body);
    EXPECT_EQ(request.execute(), "");
    EXPECT_EQ(proxy.count(Function::SendNoAck), 2U);
    EXPECT_EQ(proxy.count(Function::SendEOF), 1 + kDemands);
    EXPECT_EQ(proxy.count(Function::Receive), kDemands + 3);
}
