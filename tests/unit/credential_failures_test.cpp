// Challenges that cannot be answered: class, type code, message, error lines and calls of each.
#include <climits>
#include <stdexcept>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/ChallengedRequest.h"
#include "tests/unit/ScriptedProvider.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

class CredentialFailures : public ProxyTest {
protected:
    PrivateTemp temp;
    Credential credential{"anna", "p-a-s-s-w-o-r-d", "CORP"};
    ScriptedProvider provider{&credential};

    Failure challengedWith(const CredentialProvider& asked) {
        proxy.answers({instruction(17), block(kChallenge)});
        return failureOf([&] { executeChallenged(&asked); });
    }
};

const char kNoCredentials[] = " Credentials Not supplied by credential Provider";
const char kAnswer[] = "user:anna\r\npassword:p-a-s-s-w-o-r-d\r\ndomain:CORP\r\n\r\n";

}  // namespace

TEST_F(CredentialFailures, WithoutProviderTheChallengeIsNotRead) {
    proxy.answers({instruction(17)});
    EXPECT_EQ(failureOf([] { executeChallenged(nullptr); }),
              failure<MSPException>(0, "No credential Provider available"));
    EXPECT_EQ(errorLines(), (Lines{"No credential Provider available"}));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck("\r\n"), sendEof(), receive(), complete()},
                          proxy.calls()));
}

TEST_F(CredentialFailures, FailedReadOfTheChallengeIsAProtocolFailureWhateverTheStatus) {
    const int statuses[] = {-1, -2, -42, -246, -1001, -1002, -1003, -5005, -5006, INT_MIN};
    Lines expectedLines;
    for (const int status : statuses) {
        SCOPED_TRACE(status);
        proxy.answers({instruction(17), instruction(status)});
        EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }),
                  failure<MSPProtocolException>(0, "Invalid response challenge recieved"));
        expectedLines.push_back("Invalid response challenge recieved");
    }
    EXPECT_EQ(errorLines(), expectedLines);
    EXPECT_TRUE(provider.scopes().empty());
    EXPECT_EQ(proxy.count(Function::GetLastError), 0U);
    EXPECT_EQ(proxy.count(Function::Complete), std::size(statuses));
    EXPECT_EQ(proxy.count(Function::SendNoAck), std::size(statuses)) << "headers, no answer";
}

TEST_F(CredentialFailures, RefusalKeepsTypeCodeAndMessageInARuntimeFailure) {
    const ScriptedProvider refusing([](const AuthScope&) -> const Credential* {
        throw CredentialsUnavailableException(7, "not today");
    });
    EXPECT_EQ(challengedWith(refusing), failure<MSPRuntimeException>(7, "not today"));
    EXPECT_EQ(errorLines(), (Lines{kNoCredentials}));
    EXPECT_TRUE(sameCalls(callsUpToTheChallenge() + Calls{complete()}, proxy.calls()));
}

TEST_F(CredentialFailures, RefusalWithAMessageOnlyHasTypeCodeZero) {
    const ScriptedProvider refusing(
        [](const AuthScope&) -> const Credential* { throw CredentialsUnavailableException(""); });
    EXPECT_EQ(challengedWith(refusing), failure<MSPRuntimeException>(0, ""));
}

TEST_F(CredentialFailures, OtherExceptionsOfTheFamilyPassUnchanged) {
    const ScriptedProvider failing([](const AuthScope&) -> const Credential* {
        throw MSPConnectionException(5, "directory is down");
    });
    EXPECT_EQ(challengedWith(failing), failure<MSPConnectionException>(5, "directory is down"));
    EXPECT_EQ(errorLines(), Lines{});
    EXPECT_TRUE(sameCalls(callsUpToTheChallenge() + Calls{complete()}, proxy.calls()));
}

TEST_F(CredentialFailures, ForeignExceptionsPassUnchanged) {
    const ScriptedProvider throwingInt(
        [](const AuthScope&) -> const Credential* { throw 42; });  // NOLINT
    const ScriptedProvider throwingStandard(
        [](const AuthScope&) -> const Credential* { throw std::range_error("mine"); });
    proxy.answers({instruction(17), block(kChallenge)});
    EXPECT_THROW(executeChallenged(&throwingInt), int);
    proxy.answers({instruction(17), block(kChallenge)});
    EXPECT_THROW(executeChallenged(&throwingStandard), std::range_error);
    EXPECT_EQ(errorLines(), Lines{});
    EXPECT_EQ(proxy.count(Function::Complete), 2U);
}

TEST_F(CredentialFailures, RefusedAnswerRaisesTheClassOfTheStatus) {
    proxy.answers({instruction(17), block(kChallenge), gives(Function::SendNoAck, 1),
                   gives(Function::SendNoAck, -1001)});
    proxy.setLastError("gateway is gone");
    EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }),
              failure<MSPConnectionException>(0, "gateway is gone"));
    EXPECT_EQ(errorLines(),
              (Lines{" Exception caught. The error code is :--1001", "gateway is gone"}));
    EXPECT_TRUE(
        sameCalls(callsUpToTheChallenge() + Calls{sendNoAck(kAnswer), getLastError(), complete()},
                  proxy.calls()));
}

TEST_F(CredentialFailures, NegativeInstructionAfterTheAnswerIsRaisedBySend) {
    const struct {
        int status;
        Failure expected;
    } rows[] = {
        {-1001, failure<MSPConnectionException>(0, "M")},
        {-5005, failure<MSPConnectionException>(0, "M")},
        {-1002, failure<MSPProtocolException>(0, "M")},
        {-1003, failure<MSPRuntimeException>(0, "M")},
        {-1, failure<MSPUnrecognisedException>(0, "M")},
        {-2, failure<MSPUnrecognisedException>(0, "M")},
        {INT_MIN, failure<MSPUnrecognisedException>(0, "M")},
    };
    proxy.setLastError("M");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        proxy.answers({instruction(17), block(kChallenge), instruction(row.status)});
        EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }), row.expected);
        const Calls calls = proxy.takeCalls();
        EXPECT_EQ(calls.count(Function::GetLastError), 1U);
        EXPECT_EQ(calls.count(Function::Complete), 1U);
    }
}

TEST_F(CredentialFailures, DebugLogShowsTheChallengeAndNeverTheCredential) {
    setLogLevel("DEBUG");
    Util::MvServerCppBindingLogger::getInstance();
    proxy.answers({instruction(17), block(kChallenge), bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&provider), "done");
    EXPECT_EQ(
        logLines(),
        (Lines{" [DEBUG] : MvServerRequest::init()", " [INFO ] : MvServerCppBinding Initialized",
               " [DEBUG] : Encoded Headers", " [DEBUG] : \r", "",
               " [INFO ] : Credential challenge by Forward Proxy. Credential Call "
               "back invoked",
               " [DEBUG] : Credential Callback response", " [DEBUG] : host:gateway", "port:3128",
               "realm:corp", "",
               " [DEBUG] : Credentials Provided. wont be logged due to security "
               "reasons",
               " [DEBUG] : Sending a part of Request Body Now",
               " [DEBUG] : The size of which is :- 8 bytes",
               " [INFO ] : Completed sending the request body!", "",
               " [INFO ] : Now receiving the response",
               " [DEBUG] : Received the response. The size is :-4bytes",
               " [DEBUG] : MvServerRequest::~MvServerRequest()"}));
    const std::string log = fileText(logPath());
    for (const char* secret : {"p-a-s-s-w-o-r-d", "anna", "CORP", "password:"}) {
        EXPECT_EQ(log.find(secret), std::string::npos) << secret;
    }
}

TEST_F(CredentialFailures, ChallengeIsLoggedUpToItsFirstZeroByte) {
    setLogLevel("DEBUG");
    Util::MvServerCppBindingLogger::getInstance();
    const std::string challenge("host:a\0realm:hidden\n", 20);
    proxy.answers({instruction(17), block(challenge), bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&provider), "done");
    const std::string log = fileText(logPath());
    EXPECT_NE(log.find(" [DEBUG] : host:a\n [DEBUG] : Credentials Provided."), std::string::npos);
    EXPECT_EQ(log.find("hidden"), std::string::npos);
}
