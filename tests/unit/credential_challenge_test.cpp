// A challenge answered in the course of a request: provider, answer text, and what follows.

#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/ChallengedRequest.h"
#include "tests/unit/IcuInterposer.h"
#include "tests/unit/ScriptedProvider.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;
using namespace std::string_literals;

namespace {

class CredentialChallenge : public ProxyTest {
protected:
    PrivateTemp temp;
    Credential credential{"u", "p", "d"};
    ScriptedProvider provider{&credential};

    // The answer that the library sends for the credential.
    std::string answerFor(const Credential& given) {
        credential = given;
        proxy.answers({instruction(17), block(kChallenge), bodyThenResponse()});
        EXPECT_EQ(executeChallenged(&provider), "done");
        const Calls calls = proxy.takeCalls();
        for (const Call& call : calls.entries()) {
            if (call.text.rfind("user:", 0) == 0) {
                return call.text;
            }
        }
        return "nothing was sent";
    }

    // The scope the provider sees for a challenge.
    AuthScope scopeFor(const Step& challenge) {
        proxy.answers({instruction(17), challenge, bodyThenResponse()});
        EXPECT_EQ(executeChallenged(&provider), "done");
        return provider.scopes().back();
    }
};

const char kAnswer[] = "user:u\r\npassword:p\r\ndomain:d\r\n\r\n";

const Calls kBodyAndResponse{receive(), sendNoAck("<order/>"), sendEof(), receive(3), complete()};

}  // namespace

TEST_F(CredentialChallenge, ChallengeIsAnsweredOnceAndTheBodyFollows) {
    proxy.answers({instruction(17), block(kChallenge), bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&provider), "done");
    EXPECT_TRUE(sameCalls(callsUpToTheChallenge() + Calls{sendNoAck(kAnswer)} + kBodyAndResponse,
                          proxy.calls()));
}

TEST_F(CredentialChallenge, ProviderSeesHostPortAndRealm) {
    const AuthScope scope = scopeFor(block(kChallenge));
    EXPECT_EQ(scope.getHost(), "gateway");
    EXPECT_EQ(scope.getPort(), "3128");
    EXPECT_EQ(scope.getRealm(), "corp");
    EXPECT_EQ(provider.scopes().size(), 1U);
}

TEST_F(CredentialChallenge, AnswerIsUserPasswordDomainAndAnEmptyLine) {
    EXPECT_EQ(answerFor({"u", "p", "d"}), "user:u\r\npassword:p\r\ndomain:d\r\n\r\n");
    EXPECT_EQ(answerFor({"", "", ""}), "user:\r\npassword:\r\ndomain:\r\n\r\n");
}

TEST_F(CredentialChallenge, CredentialOfTwoTextsStillHasADomainLine) {
    EXPECT_EQ(answerFor({"u", "p"}), "user:u\r\npassword:p\r\ndomain:\r\n\r\n");
}

TEST_F(CredentialChallenge, TextsAreNeitherEscapedNorTrimmed) {
    EXPECT_EQ(answerFor({" u ", "p:\r\n=%41", "d\\"}),
              "user: u \r\npassword:p:\r\n=%41\r\ndomain:d\\\r\n\r\n");
}

TEST_F(CredentialChallenge, AnswerEndsAtItsFirstZeroByte) {
    EXPECT_EQ(answerFor({"u", "p\0q"s, "d"}), "user:u\r\npassword:p");
}

TEST_F(CredentialChallenge, AnswerTravelsAsUtf8) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    EXPECT_EQ(answerFor({"J\xF6rg", "p\xE4\xDF", "\xC5"}),
              "user:J\xC3\xB6rg\r\npassword:p\xC3\xA4\xC3\x9F\r\ndomain:\xC3\x85\r\n\r\n");
}

TEST_F(CredentialChallenge, LongAnswerTravelsWhole) {
    const std::string password(50000, 'x');
    EXPECT_EQ(answerFor({"u", password, "d"}),
              "user:u\r\npassword:" + password + "\r\ndomain:d\r\n\r\n");
}

TEST_F(CredentialChallenge, ChallengeWithoutBytesStillAsksWithAnEmptyScope) {
    const AuthScope scope = scopeFor(instruction(0));
    EXPECT_EQ(scope.getHost() + scope.getPort() + scope.getRealm(), "");
    EXPECT_EQ(provider.scopes().size(), 1U);
}

// By design
TEST_F(CredentialChallenge, LastLineWithoutLineFeedEndsInTheByteAfterTheChallenge) {
    EXPECT_EQ(scopeFor(block("host:a\nrealm:corp")).getRealm(), "corp\0"s);
    EXPECT_EQ(scopeFor(block("host:a\nrealm:corp").terminated('!')).getRealm(), "corp!");
    EXPECT_EQ(scopeFor(block("host:a\nrealm:corp\n").terminated()).getRealm(), "corp");
}

// By design
TEST_F(CredentialChallenge, NothingIsTrimmed) {
    const AuthScope scope = scopeFor(block("host:gateway\r\nport: 3128 \r\n"));
    EXPECT_EQ(scope.getHost(), "gateway\r");
    EXPECT_EQ(scope.getPort(), " 3128 \r");
}

// By design
TEST_F(CredentialChallenge, NullCredentialLogsTwiceAndFailsAsRuntimeException) {
    const char notSupplied[] = " Credentials Not supplied by credential Provider";
    const ScriptedProvider none(static_cast<const Credential*>(nullptr));
    proxy.answers({instruction(17), block(kChallenge)});
    EXPECT_EQ(failureOf([&] { executeChallenged(&none); }),
              failure<MSPRuntimeException>(0, notSupplied));
    EXPECT_EQ(errorLines(), (Lines{notSupplied, notSupplied}));
    EXPECT_TRUE(sameCalls(callsUpToTheChallenge() + Calls{complete()}, proxy.calls()));
}

TEST_F(CredentialChallenge, ChallengeThatFillsItsBlockIsReadWhole) {
    const std::string start = "host:a\nrealm:";
    const std::string realm(16384 - start.size(), 'r');
    const AuthScope scope = scopeFor(block(start + realm));
    EXPECT_EQ(scope.getHost(), "a");
    EXPECT_EQ(scope.getRealm(), realm + "\0"s);
}

TEST_F(CredentialChallenge, ChallengeLargerThanABlockIsRefused) {
    for (const int size : {16385, 20000, INT_MAX}) {
        SCOPED_TRACE(size);
        proxy.answers({instruction(17), block(kChallenge).claiming(size)});
        EXPECT_EQ(failureOf([&] { executeChallenged(&provider); }),
                  failure<MSPRuntimeException>(
                      -1, "Unexpected state.  count = " + std::to_string(size) + " pos = 0"));
    }
    EXPECT_TRUE(provider.scopes().empty());
    EXPECT_EQ(proxy.count(Function::Complete), 3U);
}

TEST_F(CredentialChallenge, ChallengeIsNotTakenFromTheInstructionBlock) {
    proxy.answers({block("host:wrong\n").claiming(17), block("port:1\n"), bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&provider), "done");
    EXPECT_EQ(provider.scopes().back().getHost(), "");
    EXPECT_EQ(provider.scopes().back().getPort(), "1");
}

TEST_F(CredentialChallenge, EveryChallengeIsReadAfresh) {
    proxy.answers({instruction(17), block("host:a\nrealm:a-long-realm\n"), instruction(17),
                   block("port:1"), bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&provider), "done");
    ASSERT_EQ(provider.scopes().size(), 2U);
    EXPECT_EQ(provider.scopes()[1].getHost(), "");
    EXPECT_EQ(provider.scopes()[1].getPort(), "1\0"s);
    EXPECT_EQ(provider.scopes()[1].getRealm(), "");
}

TEST_F(CredentialChallenge, ThousandChallengesGetAThousandAnswers) {
    for (int i = 0; i < 1000; ++i) {
        proxy.answers({instruction(17), block(kChallenge)});
    }
    proxy.answers(bodyThenResponse());
    EXPECT_EQ(executeChallenged(&provider), "done");
    EXPECT_EQ(provider.scopes().size(), 1000U);
    EXPECT_EQ(proxy.count(Function::SendNoAck), 1U + 1000U + 1U);
    EXPECT_EQ(proxy.count(Function::SendEOF), 2U) << "an answer has no end marker of its own";
    EXPECT_EQ(proxy.count(Function::Complete), 1U);
}

TEST_F(CredentialChallenge, AnswerTakenWithResultZeroGoesOn) {
    proxy.answers({instruction(17), block(kChallenge), bodyThenResponse()});
    proxy.failCall(6, 0);
    EXPECT_EQ(executeChallenged(&provider), "done");
}

TEST_F(CredentialChallenge, InstructionAfterTheAnswerIsFollowed) {
    for (const int next : {0, 18}) {  // both: no body is wanted
        SCOPED_TRACE(next);
        proxy.answers(
            {instruction(17), block(kChallenge), instruction(next), block("\ndone"), end()});
        EXPECT_EQ(executeChallenged(&provider), "done");
        EXPECT_EQ(proxy.takeCalls().count(Function::SendNoAck), 2U) << "headers and answer";
        EXPECT_EQ(proxy.leftOver(), "");
    }
}

TEST_F(CredentialChallenge, CredentialIsNotUsedAfterTheProviderReplacedIt) {
    std::unique_ptr<Credential> current;
    int asked = 0;
    const ScriptedProvider replacing([&](const AuthScope&) {
        current = std::make_unique<Credential>("u", "password number " + std::to_string(++asked));
        return current.get();
    });
    proxy.answers({instruction(17), block(kChallenge), instruction(17), block(kChallenge),
                   bodyThenResponse()});
    EXPECT_EQ(executeChallenged(&replacing), "done");
    EXPECT_TRUE(sameCalls(
        callsUpToTheChallenge() +
            Calls{sendNoAck("user:u\r\npassword:password number 1\r\ndomain:\r\n\r\n"), receive(2),
                  sendNoAck("user:u\r\npassword:password number 2\r\ndomain:\r\n\r\n")} +
            kBodyAndResponse,
        proxy.calls()));
}

TEST_F(CredentialChallenge, ProviderMayReplaceItselfForTheNextChallenge) {
    const Credential second("second", "2");
    const ScriptedProvider successor(&second);
    MSPSession session;
    MvServerRequest request(&session);
    const ScriptedProvider first([&](const AuthScope&) {
        request.setCredentialProvider(&successor);
        return &credential;
    });
    std::istringstream document("<order/>");
    request.setBody(&document);
    request.setCredentialProvider(&first);
    EXPECT_EQ(request.getCredentialProvider(), &first);
    proxy.answers({instruction(17), block(kChallenge), instruction(17), block(kChallenge),
                   bodyThenResponse()});
    EXPECT_EQ(request.execute(), "done");
    EXPECT_EQ(request.getCredentialProvider(), &successor);
    EXPECT_EQ(first.scopes().size(), 1U);
    EXPECT_EQ(successor.scopes().size(), 1U);
}

TEST_F(CredentialChallenge, ProviderMayRunAnExchangeOfItsOwn) {
    const ScriptedProvider nested([&](const AuthScope&) {
        proxy.answers({block("\ninner"), end(), bodyThenResponse()});
        MSPSession session;
        MvServerRequest request(&session);
        request.setBody("who?");
        EXPECT_EQ(request.execute(), "inner");
        return &credential;
    });
    proxy.answers({instruction(17), block(kChallenge)});
    EXPECT_EQ(executeChallenged(&nested), "done");
    EXPECT_TRUE(sameCalls(
        callsUpToTheChallenge() +
            Calls{send("\r\nwho?"), sendEof(), receive(2), complete(), sendNoAck(kAnswer)} +
            kBodyAndResponse,
        proxy.calls()));
}

TEST_F(CredentialChallenge, RequestStartsWithoutAProviderAndForgetsItOnNull) {
    MSPSession session;
    MvServerRequest request(&session);
    EXPECT_EQ(request.getCredentialProvider(), nullptr);
    request.setCredentialProvider(&provider);
    EXPECT_EQ(request.getCredentialProvider(), &provider);
    request.setCredentialProvider(nullptr);
    EXPECT_EQ(request.getCredentialProvider(), nullptr);
}
