// The memory that the library keeps for the life of the process: exactly these places and amounts.
#include <cstdlib>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/retained/Memory.h"
#include "tests/unit/ChallengedRequest.h"
#include "tests/unit/Directory.h"
#include "tests/unit/ScriptedProvider.h"
#include "tests/unit/Signing.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;
using Memory::Kept;

namespace {

// Of an array whose elements have a destructor: the platform keeps their number in front of them.
constexpr std::size_t kArrayCookie = sizeof(std::size_t);

class RetainedTest : public ProxyTest {
protected:
    PrivateTemp temp;

    // What one run of the work keeps. A run before it makes what exists once in a process: the
    // log's instance, the standard library's locales.
    Kept kept(const Script& script, const std::function<void()>& work) {
        Memory::keptBy([] {});
        run(script, work);
        proxy.answers(script);
        return Memory::keptBy([&] {
            work();
            proxy.takeCalls();
        });
    }

private:
    void run(const Script& script, const std::function<void()>& work) {
        proxy.answers(script);
        work();
        proxy.takeCalls();
    }
};

class SimpleRequest : public RetainedTest {};
class EnvironmentInfo : public RetainedTest {};
class Pkcs7 : public RetainedTest {};
class CredentialChallenge : public RetainedTest {};
class Retained : public RetainedTest {};

void callOnce(const std::string& body) {
    char* response = nullptr;
    MvServerSimpleRequest("url", body.c_str(), "", "", "", &response);
    std::free(response);
}

Kept stringBuffersFor(std::size_t length) {
    return {1, kArrayCookie + sizeof(std::stringbuf) * (length + 1)};
}

const Script kDone{instruction(16), instruction(18), block("\ndone"), end()};

}  // namespace

// --- kept on purpose ----------------------------------------------------------------------------

TEST_F(SimpleRequest, RetainsOneStringBufferForEveryByteOfTheBody) {
    for (const std::size_t length : {0U, 1U, 14U, 15U, 16U, 100U, 4095U, 4096U}) {
        SCOPED_TRACE(length);
        const std::string body(length, 'x');
        EXPECT_EQ(kept(kDone, [&] { callOnce(body); }), stringBuffersFor(length));
    }
}

TEST_F(SimpleRequest, RetainsTheSameWhenItFails) {
    const std::string body(100, 'x');
    EXPECT_EQ(kept(instruction(-1), [&] { callOnce(body); }), stringBuffersFor(100));
    const Step foreign = throwing(Function::SendEOF, std::range_error("not of the family"));
    EXPECT_EQ(kept(foreign, [&] { EXPECT_THROW(callOnce(body), std::range_error); }),
              stringBuffersFor(100));
}

TEST_F(EnvironmentInfo, RetainsTheEnvironmentsAndNothingElse) {
    const auto load = [] { Admin::EnvironmentInfo().getEnvironments(); };
    EXPECT_EQ(kept(directoryAnswer("\n"), load), (Kept{0, 0}));
    EXPECT_EQ(kept(directoryAnswer("A\n1\n\n"), load), (Kept{1, sizeof(Admin::Environment)}));
    EXPECT_EQ(kept(directoryAnswer("A\n1\n\nB\n2\n\nC\n3\n\n"), load),
              (Kept{3, 3 * sizeof(Admin::Environment)}));
}

TEST_F(Pkcs7, SingleFormsKeepTheirOneElementArray) {
    const Kept oneElement{1, kArrayCookie + sizeof(std::string)};
    std::string item = "item";
    EXPECT_EQ(kept(oneSignature(), [&] { Crypto::PKCS7().sign(item); }), oneElement);
    EXPECT_EQ(kept(oneSignature(), [&] { Crypto::PKCS7().sign("item", 4); }), oneElement);
}

TEST_F(Pkcs7, SignatureOfASingleFormStaysInTheArrayThatIsKept) {
    const Script longSignature =
        signatureRecord("00000001 01 00000064" + hex(std::string(100, 's')));
    EXPECT_EQ(kept(longSignature, [] { Crypto::PKCS7().sign("item", 4); }),
              (Kept{2, kArrayCookie + sizeof(std::string) + 101}));
}

TEST_F(Pkcs7, FailedExchangeKeepsSessionAndRequest) {
    const Kept kept_ = kept(gives(Function::SendEOF, -1001), [] {
        EXPECT_THROW(Crypto::PKCS7().sign("item", 4), Client::MSPConnectionException);
    });
    const std::size_t objects = sizeof(Client::MSPSession) + sizeof(Client::MvServerRequest) +
                                sizeof(Client::ResponseStream);
    EXPECT_GE(kept_.bytes, objects);
    EXPECT_LT(kept_.bytes, objects + 1024) << "beside them only the one header";
}

TEST_F(Pkcs7, ExchangeThatFailsInItsBodyKeepsNoResponseStream) {
    const Kept kept_ = kept({instruction(18), block("\nAAAA"), instruction(-1001)}, [] {
        EXPECT_THROW(Crypto::PKCS7().sign("item", 4), Client::MSPConnectionException);
    });
    const std::size_t objects = sizeof(Client::MSPSession) + sizeof(Client::MvServerRequest);
    EXPECT_GE(kept_.bytes, objects);
    EXPECT_LT(kept_.bytes, objects + 1024);
}

// --- everything else is released ----------------------------------------------------------------

TEST_F(Pkcs7, FailureToStartTheProxyKeepsNothing) {
    EXPECT_EQ(
        kept(gives(Function::Init, -1001),
             [] { EXPECT_THROW(Crypto::PKCS7().sign("item", 4), Client::MSPConnectionException); }),
        (Kept{0, 0}));
}

TEST_F(Pkcs7, BatchFormsKeepNothingOnceTheCallerReleasedTheArray) {
    std::string items[] = {"ab", "a text that does not fit into the string object itself"};
    const Script answer = signatureRecord("00000002 01 00000001 41 01 00000001 42");
    EXPECT_EQ(kept(answer, [&] { delete[] Crypto::PKCS7().sign(items, 2); }), (Kept{0, 0}));
    std::string bad[] = {"ab", ""};
    EXPECT_EQ(kept({}, [&] { EXPECT_THROW(Crypto::PKCS7().sign(bad, 2), Client::MSPException); }),
              (Kept{0, 0}));
}

TEST_F(Pkcs7, AnswerThatCannotBeReadKeepsNothing) {
    for (const char* record : {"000000", "00000003 01 00000001 41", "ffffffff"}) {
        SCOPED_TRACE(record);
        EXPECT_EQ(kept(signatureRecord(record),
                       [] { EXPECT_ANY_THROW(Crypto::PKCS7().sign("item", 4)); }),
                  (Kept{0, 0}));
    }
}

TEST_F(Pkcs7, SingleFormOfAnAnswerWithoutEntryKeepsNothing) {
    EXPECT_EQ(
        kept(signatureRecord("00000000"),
             [] { EXPECT_THROW(Crypto::PKCS7().sign("item", 4), Client::MSPRuntimeException); }),
        (Kept{0, 0}));
}

TEST_F(EnvironmentInfo, FailedLoadsKeepNothing) {
    const auto load = [] { EXPECT_ANY_THROW(Admin::EnvironmentInfo().getEnvironments()); };
    EXPECT_EQ(kept(gives(Function::SendEOF, -1001), load), (Kept{0, 0}));
    EXPECT_EQ(kept({block("A\n1\n\n"), instruction(-1001)}, load), (Kept{0, 0}));
}

TEST_F(CredentialChallenge, OneStringBufferForEveryByteIsAllocatedAndReleased) {
    const Client::Credential credential("u", "p");
    const Script script{instruction(17), block(std::string(3000, 'x')), bodyThenResponse()};
    const auto execute = [&] {
        const ScriptedProvider provider(&credential);
        executeChallenged(&provider);
    };
    EXPECT_EQ(kept(script, execute), (Kept{0, 0}));
    EXPECT_EQ(Memory::largestRequest(), kArrayCookie + sizeof(std::stringbuf) * 3001);
}

TEST_F(CredentialChallenge, ScopeIsReleasedHoweverTheChallengeEnds) {
    const Client::Credential credential("u", "p");
    const Script challenge{instruction(17), block("host:" + std::string(100, 'h') + "\n")};
    const struct {
        const char* end;
        Script script;
        ScriptedProvider::Answer answer;
    } rows[] = {
        {"answer refused by the proxy",
         {challenge, gives(Function::SendNoAck, 1), gives(Function::SendNoAck, -1001)},
         [&](const auto&) { return &credential; }},
        {"no credential", challenge, [](const auto&) { return nullptr; }},
        {"refusal", challenge,
         [](const auto&) -> const Client::Credential* {
             throw Client::CredentialsUnavailableException("no");
         }},
        {"foreign exception", challenge,
         [](const auto&) -> const Client::Credential* { throw std::range_error("no"); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.end);
        EXPECT_EQ(kept(row.script,
                       [&] {
                           const ScriptedProvider provider(row.answer);
                           EXPECT_ANY_THROW(executeChallenged(&provider));
                       }),
                  (Kept{0, 0}));
    }
}

TEST_F(Retained, GoodAndFailedRequestsKeepNothing) {
    const auto execute = [] { executeChallenged(nullptr); };
    EXPECT_EQ(kept(bodyThenResponse(), execute), (Kept{0, 0}));
    for (const Script& script :
         {Script{gives(Function::SendEOF, -1001)}, Script{instruction(-1002)},
          Script{instruction(17)}, Script{instruction(18), block("\npart"), instruction(-1003)}}) {
        EXPECT_EQ(kept(script, [&] { EXPECT_THROW(execute(), Client::MSPException); }),
                  (Kept{0, 0}));
    }
}
