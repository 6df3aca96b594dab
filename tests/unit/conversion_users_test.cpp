// What the users of the text conversion make of its failures.
#include <sstream>
#include <string>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/CallLists.h"
#include "tests/unit/ChallengedRequest.h"
#include "tests/unit/Directory.h"
#include "tests/unit/IcuInterposer.h"
#include "tests/unit/ScriptedProvider.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

const char kCannotOpen[] = "Error opening converter U_FILE_ACCESS_ERROR\n";

class ConversionUsers : public ProxyTest {
protected:
    PrivateTemp temp;

    // The next conversion fails; each opens the local converter first.
    static Step failingOnwards(Step step) {
        return step.doing([] { IcuInterposer::settings.failOpen = 1; });
    }
};

}  // namespace

TEST_F(ConversionUsers, CredentialAnswerThatCannotBeEncodedIsALocalFailure) {
    const Client::Credential credential("anna", "p-a-s-s-w-o-r-d", "CORP");
    const ScriptedProvider provider(&credential);
    const std::string message =
        std::string("Exception occurred while converting to UTF-8 bytes.") + kCannotOpen;
    proxy.answers({instruction(17), failingOnwards(block(kChallenge))});
    EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }),
              failure<Client::MSPRuntimeException>(-1, message));
    EXPECT_EQ(fileText(logPath()), " [ERROR] : " + message + "\n [ERROR] : -1\n");
    EXPECT_TRUE(sameCalls(callsUpToTheChallenge() + Calls{complete()}, proxy.calls()));
}

TEST_F(ConversionUsers, DirectoryRequestThatCannotBeEncodedIsRaisedUnchangedAndNothingIsSent) {
    Admin::EnvironmentInfo info;
    IcuInterposer::settings.failOpen = 1;
    EXPECT_EQ(failureOf([&] { info.getEnvironments(); }),
              failure<Client::Utf8ConversionException>(0, kCannotOpen));
    EXPECT_FALSE(fileExists(logPath()));
    EXPECT_TRUE(sameCalls(Calls{init()}, proxy.calls()));
}

TEST_F(ConversionUsers, DirectoryAnswerThatCannotBeDecodedIsALocalFailure) {
    const std::string message =
        std::string("Exception occurred while decoding UTF-8 bytes.") + kCannotOpen;
    proxy.answers({block("Prod\n1\n"), failingOnwards(block("0\n\n"))});
    Admin::EnvironmentInfo info;
    EXPECT_EQ(failureOf([&] { info.getEnvironments(); }),
              failure<Client::MSPRuntimeException>(-1, message));
    EXPECT_EQ(fileText(logPath()), " [ERROR] : " + message + "\n [ERROR] : -1\n");
    EXPECT_TRUE(
        sameCalls(Calls{init(), sendNoAck("getEnv:All\r\n\r\n"), sendEof(), receive(2), complete()},
                  proxy.takeCalls()));

    proxy.answers(directoryAnswer("Prod\n1\n0\n\n"));
    EXPECT_EQ(info.getEnvironments().size(), 1U) << "nothing of the failed load was kept";
}

TEST_F(ConversionUsers, SessionIdThatCannotBeDecodedIsRaisedUnchanged) {
    const Client::Credential credential("u", "p");
    proxy.answers({instruction(18), failingOnwards(block("ResponseSessionID=S1\n\ndone"))});
    const ScriptedProvider provider(&credential);
    EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }),
              failure<Client::Utf8ConversionException>(0, kCannotOpen));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck("\r\n"), sendEof(), receive(2), complete()},
                          proxy.calls()));
}

TEST_F(ConversionUsers, DirectoryBlockLargerThanABlockIsRefused) {
    proxy.answers(block("Prod\n").claiming(16385));
    Admin::EnvironmentInfo info;
    EXPECT_EQ(failureOf([&] { info.getEnvironments(); }),
              failure<Client::MSPRuntimeException>(-1, "Unexpected state.  count = 16385 pos = 0"));
    EXPECT_EQ(proxy.count(Function::Complete), 1U);
}
