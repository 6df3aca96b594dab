// Loading the directory and looking things up in it.
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

class EnvironmentInfo : public ProxyTest {
protected:
    PrivateTemp temp;
    using Info = Admin::EnvironmentInfo;
};

}  // namespace

TEST_F(EnvironmentInfo, ConstructionStartsTheProxyAndLoadsNothing) {
    { const Info info; }
    EXPECT_TRUE(sameCalls(Calls{init()}, proxy.calls()));
}

TEST_F(EnvironmentInfo, EveryConstructionStartsTheProxyAgain) {
    const Info first;
    const Info second;
    EXPECT_TRUE(sameCalls(Calls{init(2)}, proxy.calls()));
}

TEST_F(EnvironmentInfo, FailureToStartTheProxyLeavesTheConstructor) {
    proxy.setLastError("cannot start");
    proxy.answers({gives(Function::Init, 1), gives(Function::Init, -1001)});
    EXPECT_EQ(failureOf([] { const Info info; }),
              failure<Client::MSPUnrecognisedException>(0, "cannot start"));
    EXPECT_EQ(failureOf([] { const Info info; }),
              failure<Client::MSPConnectionException>(0, "cannot start"));
}

TEST_F(EnvironmentInfo, FirstLookupLoadsAllAndLaterOnesSendNothing) {
    proxy.answers(directoryAnswer(kProdAndTest));
    Info info;
    EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Prod/1", "Test/2"}));
    EXPECT_EQ(namesOf(info.getEnvironments()), (Names{"Prod/1", "Test/2"}));
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All"), proxy.calls()));
}

// By design
TEST_F(EnvironmentInfo, GoodLoadCompletesTwice) {
    proxy.answers(directoryAnswer(kProdAndTest));
    Info info;
    info.getEnvironments();
    EXPECT_TRUE(sameCalls(
        Calls{init(), sendNoAck("getEnv:All\r\n\r\n"), sendEof(), receive(2), complete(2)},
        proxy.calls()));
}

TEST_F(EnvironmentInfo, EnvironmentIsFoundByItsExactName) {
    proxy.answers(directoryAnswer("Prod\n1\n0\n\nProd\n2\n0\n\nTest\n3\n0\n\n"));
    Info info;
    const Environment* found = info.getEnvironment("Prod");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->getIndex(), 1) << "the first of that name";
    for (const char* other : {"prod", "Prod ", " Prod", "Pro", "Production", ""}) {
        EXPECT_EQ(info.getEnvironment(other), nullptr) << other;
    }
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All"), proxy.calls()));
}

TEST_F(EnvironmentInfo, EnvironmentWithoutServicesIsFoundByTheEmptyName) {
    proxy.answers(directoryAnswer("Prod\n7\n\n"));
    Info info;
    const Environment* found = info.getEnvironment("");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->getIndex(), 0);
    EXPECT_EQ(info.getEnvironment("Prod"), nullptr);
}

TEST_F(EnvironmentInfo, VersionIsTheSelectorByteForByte) {
    for (const char* version : {"7.1", "", " 7 ", "All", "a:b=c"}) {
        proxy.answers(directoryAnswer(kProdAndTest));
        Info info;
        EXPECT_EQ(info.getEnvsForVersion(version).size(), 2U);
        EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad(version), proxy.takeCalls()));
    }
}

TEST_F(EnvironmentInfo, UrlIsTheSelectorByteForByte) {
    for (const char* url : {"http://Server/app", "http://Server/app/", " x ", ""}) {
        proxy.answers(directoryAnswer(kProdAndTest));
        Info info;
        EXPECT_EQ(info.getEnvironmentsForURL(url).size(), 2U);
        EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("mapURLtoEnv::" + std::string(url)),
                              proxy.takeCalls()));
    }
}

// By design
TEST_F(EnvironmentInfo, AllLookupsAnswerFromTheListThatTheFirstLoaded) {
    proxy.answers(directoryAnswer(kProdAndTest));
    Info byVersion;
    const auto& list = byVersion.getEnvsForVersion("7");
    EXPECT_EQ(&byVersion.getEnvironments(), &list);
    EXPECT_EQ(&byVersion.getEnvironmentsForURL("http://elsewhere"), &list);
    EXPECT_EQ(&byVersion.getEnvsForVersion("8"), &list);
    EXPECT_EQ(byVersion.getEnvironment("Test"), list.at(1));
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("7"), proxy.takeCalls()));

    proxy.answers(directoryAnswer(kProdAndTest));
    Info all;
    EXPECT_EQ(all.getEnvironments().size(), 2U);
    EXPECT_EQ(all.getEnvironmentsForURL("http://any").size(), 2U);
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All"), proxy.calls()));
}

// By design
TEST_F(EnvironmentInfo, LoadAllEnvironmentsAppends) {
    proxy.answers({directoryAnswer(kProdAndTest), directoryAnswer(kThirdAlone),
                   directoryAnswer(kProdAndTest)});
    Info info;
    info.loadAllEnvironments();
    info.loadAllEnvironments();
    info.loadAllEnvironments();
    EXPECT_EQ(namesOf(info.getEnvironments()),
              (Names{"Prod/1", "Test/2", "Third/3", "Prod/1", "Test/2"}));
    EXPECT_TRUE(
        sameCalls(Calls{init()} + callsOfLoad("All") + callsOfLoad("All") + callsOfLoad("All"),
                  proxy.calls()));
}

TEST_F(EnvironmentInfo, ReturnedListFollowsWhatIsAppended) {
    proxy.answers({directoryAnswer(kProdAndTest), directoryAnswer(kThirdAlone)});
    Info info;
    const auto& list = info.getEnvironments();
    EXPECT_EQ(list.size(), 2U);
    info.loadAllEnvironments();
    EXPECT_EQ(list.size(), 3U);
}

// By design
TEST_F(EnvironmentInfo, EnvironmentsOutliveTheObjectThatLoadedThem) {
    proxy.answers(directoryAnswer(kProdAndTest));
    std::vector<const Environment*> kept;
    {
        Info info;
        kept = info.getEnvironments();
        Info copy(info);
        EXPECT_EQ(copy.getEnvironments(), kept) << "the very same pointers";
        Info assigned;
        assigned = info;
        EXPECT_EQ(assigned.getEnvironments(), kept);
    }
    EXPECT_EQ(namesOf(kept), (Names{"Prod/1", "Test/2"}));
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All") + Calls{init()}, proxy.calls()))
        << "a copy does not start the proxy, and nothing stops it";
}

TEST_F(EnvironmentInfo, AssignmentReplacesTheListAndToItselfChangesNothing) {
    proxy.answers({directoryAnswer(kProdAndTest), directoryAnswer(kThirdAlone)});
    Info two;
    two.loadAllEnvironments();
    Info three;
    three.loadAllEnvironments();
    three = two;
    EXPECT_EQ(namesOf(three.getEnvironments()), (Names{"Prod/1", "Test/2"}));
    const Info& itself = two;
    two = itself;
    EXPECT_EQ(namesOf(two.getEnvironments()), (Names{"Prod/1", "Test/2"}));
}

TEST_F(EnvironmentInfo, EmptyAnswerLeavesTheListEmptyAndTheNextLookupLoadsAgain) {
    proxy.answers({directoryAnswer(""), directoryAnswer(""), directoryAnswer("\nnothing"),
                   directoryAnswer(kProdAndTest)});
    Info info;
    EXPECT_EQ(info.getEnvironments().size(), 0U);
    EXPECT_EQ(info.getEnvironment("Prod"), nullptr);
    EXPECT_EQ(info.getEnvsForVersion("7").size(), 0U);
    EXPECT_EQ(info.getEnvironmentsForURL("http://s").size(), 2U);
    EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All", 0) + callsOfLoad("All", 0) +
                              callsOfLoad("7") + callsOfLoad("mapURLtoEnv::http://s"),
                          proxy.calls()));
}

// By design
TEST_F(EnvironmentInfo, EveryBlockIsDecodedOnItsOwn) {
    const std::string replaced = "\xEF\xBF\xBD";
    proxy.answers({block("Z\xC3\xBCrich\n1\n0\n\nZ\xC3"), block("\xBCrich\n2\n0\n\n"), end()});
    IcuInterposer::settings.localCodePage = "UTF-8";
    Info info;
    EXPECT_EQ(namesOf(info.getEnvironments()),
              (Names{"Z\xC3\xBCrich/1", "Z" + replaced + replaced + "rich/2"}));
}

// By design
TEST_F(EnvironmentInfo, ResultOfTheRequestTextIsIgnored) {
    for (const int result : {0, 1, -1, -1001, -5006, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(result);
        proxy.answers({gives(Function::SendNoAck, result), directoryAnswer(kProdAndTest)});
        Info info;
        EXPECT_EQ(info.getEnvironments().size(), 2U);
        EXPECT_TRUE(sameCalls(Calls{init()} + callsOfLoad("All"), proxy.takeCalls()));
    }
}

TEST_F(EnvironmentInfo, FailedEndMarkerCompletesNothing) {
    proxy.setLastError("no service");
    Info info;
    for (const int status : {-1, -42}) {
        proxy.answers(gives(Function::SendEOF, status));
        EXPECT_EQ(failureOf([&] { info.getEnvironments(); }),
                  failure<Client::MSPUnrecognisedException>(0, "no service"));
    }
    proxy.answers(gives(Function::SendEOF, -1001));
    EXPECT_EQ(failureOf([&] { info.getEnvironment("Prod"); }),
              failure<Client::MSPConnectionException>(0, "no service"));
    const Calls failed{sendNoAck("getEnv:All\r\n\r\n"), sendEof(), getLastError()};
    EXPECT_TRUE(sameCalls(Calls{init()} + failed + failed + failed, proxy.takeCalls()));

    proxy.answers(directoryAnswer(kProdAndTest));
    EXPECT_EQ(info.getEnvironments().size(), 2U) << "the list was empty, so it loads again";
}
