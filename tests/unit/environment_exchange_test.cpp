// One exchange with the communication service: blocks, encodings, failures, and what is logged.
#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"

#include <climits>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/CallLists.h"
#include "tests/unit/Directory.h"
#include "tests/unit/IcuInterposer.h"

using namespace Morvenn::Net::MvServerProxy;
using Morvenn::Net::MvServerProxy::Admin::Environment;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

class EnvironmentExchange : public ProxyTest {
protected:
    PrivateTemp temp;
    using Info = Admin::EnvironmentInfo;
};

}  // namespace

TEST_F(EnvironmentExchange, AnswerIsTheSameInBlocksOfAnySize) {
    const std::string answer(kProdAndTest);
    for (std::size_t size = 1; size <= answer.size(); ++size) {
        SCOPED_TRACE(size);
        proxy.answers({inBlocksOf(size, answer), end()});
        Info info;
        EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Prod/1", "Test/2"}));
    }
}

TEST_F(EnvironmentExchange, ProxyIsAskedAgainWhileNothingIsReady) {
    proxy.answers({nothing(1000), block("Prod\n1\n"), nothing(), block("0\n\n"), end()});
    Info info;
    EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Prod/1"}));
    EXPECT_EQ(proxy.count(Function::Receive), 1004U);
}

TEST_F(EnvironmentExchange, AnswerIsDecodedAndRequestEncoded) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    proxy.answers(directoryAnswer("Z\xC3\xBCrich\n1\n0\n\n"));
    Info info;
    EXPECT_EQ(namesOf(info.getEnvsForVersion("\xE9t\xE9")), (Names{"Z\xFCrich/1"}));
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("\xC3\xA9t\xC3\xA9"), proxy.calls()));
}

TEST_F(EnvironmentExchange, RequestEndsAtTheFirstZeroByteOfItsSelector) {
    proxy.answers(directoryAnswer(kProdAndTest));
    Info info;
    EXPECT_EQ(info.getEnvsForVersion(std::string("7\0x", 3)).size(), 2U);
    EXPECT_EQ(proxy.calls().entries().at(1).text, "getEnv:7");
}

TEST_F(EnvironmentExchange, FailedReadRaisesItsClassAndCompletesOnce) {
    proxy.setLastError("broken");
    Info info;
    const struct {
        int status;
        Failure expected;
    } rows[] = {
        {-2, failure<Client::MSPUnrecognisedException>(0, "broken")},
        {-1001, failure<Client::MSPConnectionException>(0, "broken")},
        {-5005, failure<Client::MSPConnectionException>(0, "broken")},
        {-1002, failure<Client::MSPProtocolException>(0, "broken")},
        {-1003, failure<Client::MSPRuntimeException>(0, "broken")},
        {INT_MIN, failure<Client::MSPUnrecognisedException>(0, "broken")},
    };
    proxy.takeCalls();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        proxy.answers({block(kProdAndTest), instruction(row.status)});
        EXPECT_EQ(failureOf([&] { info.getEnvironments(); }), row.expected);
        EXPECT_TRUE(sameCalls(Calls{sendNoAck("getEnv:All\r\n\r\n"), sendEof(), receive(2),
                                    getLastError(), complete()},
                              proxy.takeCalls()));
    }
    proxy.answers(directoryAnswer(kThirdAlone));
    EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Third/3"})) << "nothing of before was kept";
}

TEST_F(EnvironmentExchange, EarlierEnvironmentsStayWhenALaterLoadFails) {
    proxy.answers(directoryAnswer(kProdAndTest));
    Info info;
    info.loadAllEnvironments();
    proxy.answers({block(kThirdAlone), instruction(-1003)});
    EXPECT_EQ(failureOf([&] { info.loadAllEnvironments(); }),
              failure<Client::MSPRuntimeException>(0, "No error message received"));
    EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Prod/1", "Test/2"}));
}

TEST_F(EnvironmentExchange, DebugLogShowsLookupRequestAndAnswer) {
    setLogLevel("DEBUG");
    Util::MvServerCppBindingLogger::getInstance();
    proxy.answers(directoryAnswer("Prod\r\n1\r\n0\r\n"));
    Info info;
    info.getEnvsForVersion("7");
    info.getEnvironments();
    info.getEnvironment("Prod");
    info.getEnvironmentsForURL("http://s/");
    EXPECT_EQ(
        logLines(),
        (Lines{" [DEBUG] : MvServerRequest::init()", " [INFO ] : MvServerCppBinding Initialized",
               " [DEBUG] : EnvironmentInfo::getEnvsForVersion(7)",
               " [DEBUG] : The request for fetching env info from MVHUB is:-getEnv:7\r", "\r", "",
               " [DEBUG] : EnvironmentInfo::processEnvironment()",
               " [DEBUG] : The Environment info received is:-Prod\r", "1\r", "0\r", "",
               " [DEBUG] : EnvironmentInfo::getEnvironments()",
               " [DEBUG] : EnvironmentInfo::getEnvironment()",
               " [DEBUG] : EnvironmentInfo::getEnvironmentsForURL(http://s/)"}));
}
