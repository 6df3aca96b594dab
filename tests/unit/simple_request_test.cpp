// A whole exchange in one call.
#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "testing/Bytes.h"
#include "testing/GTest.h"
#include "testing/Gzip.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace std::string_literals;

namespace {

const char kHeaders[] =
    "App-Xml=<app/>\r\n"
    "Base-Full-Url=http://server/app\r\n"
    "SessionID=S1\r\n"
    "Use-Callback=false\r\n"
    "Use-Compression=true\r\n"
    "XmlRpc=<rpc/>\r\n"
    "\r\n";

struct Answer {
    int result = 0;
    bool given = false;  // whether there is a text
    std::string text;
};

bool operator==(const Answer& a, const Answer& b) {
    return a.result == b.result && a.given == b.given && a.text == b.text;
}

std::ostream& operator<<(std::ostream& out, const Answer& a) {
    return out << a.result << ", " << (a.given ? escaped(a.text) : "null");
}

Answer answered(const std::string& text) {
    return {0, true, text};
}

Answer failedWith(const std::string& message) {
    return {-1, true, message};
}

class SimpleRequest : public ProxyTest {
protected:
    PrivateTemp temp;

    static Answer call(const std::string& body) {
        char* response = nullptr;
        const int result = MvServerSimpleRequest("http://server/app", body.c_str(), "S1", "<app/>",
                                                 "<rpc/>", &response);
        const std::unique_ptr<char, decltype(&std::free)> owner(response, std::free);
        return {result, response != nullptr, response == nullptr ? "" : response};
    }

    void answersBody(const std::string& body) {
        proxy.answers({instruction(16), instruction(18), block("\n" + body), end()});
    }
};

}  // namespace

TEST_F(SimpleRequest, SendsSixHeadersAndTheBodyWithItsZero) {
    answersBody("done");
    EXPECT_EQ(call("<order/>"), answered("done"));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck(kHeaders), sendEof(), receive(),
                                sendNoAck("<order/>"), sendEof(), receive(3), complete()},
                          proxy.calls()));
}

TEST_F(SimpleRequest, EmptyTextsAreSentAsEmptyValues) {
    answersBody("");
    char* response = nullptr;
    EXPECT_EQ(MvServerSimpleRequest("", "", "", "", "", &response), 0);
    ASSERT_NE(response, nullptr);
    EXPECT_STREQ(response, "");
    std::free(response);
    EXPECT_EQ(proxy.calls().entries()[1].text,
              "App-Xml=\r\nBase-Full-Url=\r\nSessionID=\r\nUse-Callback=false\r\n"
              "Use-Compression=true\r\nXmlRpc=\r\n\r\n");
}

TEST_F(SimpleRequest, EmptyBodySendsOneZeroByte) {
    answersBody("done");
    EXPECT_EQ(call(""), answered("done"));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck(kHeaders), sendEof(), receive(), sendNoAck(""),
                                sendEof(), receive(3), complete()},
                          proxy.calls()));
}

TEST_F(SimpleRequest, ZeroOfTheBodyCountsForItsChunks) {
    const struct {
        std::size_t length;
        std::size_t chunks;
    } rows[] = {{4094, 1}, {4095, 1}, {4096, 2}, {4097, 2}, {8191, 2}, {8192, 3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.length);
        answersBody("done");
        EXPECT_EQ(call(std::string(row.length, 'x')), answered("done"));
        EXPECT_EQ(proxy.takeCalls().count(Function::SendNoAck), 1 + row.chunks);
    }
}

TEST_F(SimpleRequest, BodyIsNotSentUnlessTheProxyAsks) {
    proxy.answers({instruction(18), block("\ndone"), end()});
    EXPECT_EQ(call("<order/>"), answered("done"));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck(kHeaders), sendEof(), receive(3), complete()},
                          proxy.calls()));
}

TEST_F(SimpleRequest, CompressedResponseArrivesInflated) {
    proxy.answers({instruction(18), block("ResponseHeaderCompression=true\n\n"),
                   block(gzip("inflated")), end()});
    EXPECT_EQ(call("<order/>"), answered("inflated"));
}

TEST_F(SimpleRequest, ResponseIsCutAtItsFirstZeroByte) {
    proxy.answers({instruction(18), block("\nbefore\0after"s), end()});
    EXPECT_EQ(call("<order/>"), answered("before"));
}

TEST_F(SimpleRequest, ProxyIsStartedByTheFirstCallOnlyAndNeverStopped) {
    answersBody("one");
    EXPECT_EQ(call("1"), answered("one"));
    answersBody("two");
    EXPECT_EQ(call("2"), answered("two"));
    EXPECT_EQ(proxy.count(Function::Init), 1U);
    EXPECT_EQ(proxy.count(Function::Term), 0U);
}

TEST_F(SimpleRequest, SessionOfTheResponseIsNotKept) {
    proxy.answers({instruction(18), block("ResponseSessionID=S2\n\ndone"), end()});
    EXPECT_EQ(call("1"), answered("done"));
    answersBody("done");
    EXPECT_EQ(call("2"), answered("done"));
    EXPECT_EQ(proxy.calls().entries().back().function, Function::Complete);
    const Calls calls = proxy.takeCalls();
    std::size_t headers = 0;
    for (const Call& sent : calls.entries()) {
        headers += sent.text == kHeaders ? 1 : 0;
    }
    EXPECT_EQ(headers, 2U) << calls;
}

TEST_F(SimpleRequest, WithoutResponseParameterOnlyTheResultComesBack) {
    answersBody("done");
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", nullptr), 0);
    proxy.answers({gives(Function::SendEOF, -1001)});
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", nullptr), -1);
}

TEST_F(SimpleRequest, ResponseParameterIsNullWhileTheExchangeRuns) {
    char before[] = "before";
    char* response = before;
    proxy.answers(gives(Function::Init, 0).doing([&] { EXPECT_EQ(response, nullptr); }));
    answersBody("done");
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), 0);
    ASSERT_NE(response, before);
    EXPECT_STREQ(response, "done");
    std::free(response);
}

TEST_F(SimpleRequest, EveryFailureOfTheFamilyGivesMinusOneAndItsMessage) {
    const std::string message = "the text of the failure";
    proxy.setLastError(message);
    const struct {
        const char* what;
        Step step;
    } rows[] = {
        {"starting the proxy", gives(Function::Init, 1)},
        {"the headers", gives(Function::SendNoAck, -1002)},
        {"the end marker", gives(Function::SendEOF, -1003)},
        {"the instruction", instruction(-1)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        proxy.answers(row.step);
        EXPECT_EQ(call("<order/>"), failedWith(message));
        EXPECT_EQ(proxy.takeCalls().count(Function::Complete), 1U);
    }
}

TEST_F(SimpleRequest, FailureInTheBodyOfTheResponseGivesMinusOneAndItsMessage) {
    proxy.setLastError("connection lost");
    proxy.answers({instruction(18), block("\npart"), instruction(-5005)});
    EXPECT_EQ(call("<order/>"), failedWith("connection lost"));
    EXPECT_TRUE(sameCalls(
        Calls{init(), sendNoAck(kHeaders), sendEof(), receive(3), getLastError(), complete()},
        proxy.calls()));
}

TEST_F(SimpleRequest, CredentialChallengeCannotBeAnswered) {
    proxy.answers({instruction(17)});
    EXPECT_EQ(call("<order/>"), failedWith("No credential Provider available"));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck(kHeaders), sendEof(), receive(), complete()},
                          proxy.calls()));
}

TEST_F(SimpleRequest, MessageIsCutAtItsFirstZeroByte) {
    proxy.answers({throwing(Function::SendEOF, Client::MSPRuntimeException(-1, "cut\0here"s))});
    EXPECT_EQ(call("<order/>"), failedWith("cut"));
}

TEST_F(SimpleRequest, ForeignExceptionsPassUnchangedAndLeaveTheResponseNull) {
    char before[] = "before";
    char* response = before;
    proxy.answers({throwing(Function::SendEOF, std::range_error("not of the family"))});
    EXPECT_THROW(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), std::range_error);
    EXPECT_EQ(response, nullptr);
    EXPECT_TRUE(sameCalls(
        Calls{init(),
              sendNoAck("App-Xml=a\r\nBase-Full-Url=u\r\nSessionID=s\r\nUse-Callback=false\r\n"
                        "Use-Compression=true\r\nXmlRpc=x\r\n\r\n"),
              sendEof(), complete()},
        proxy.calls()));
}
