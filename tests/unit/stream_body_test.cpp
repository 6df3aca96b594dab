// Requests with a stream body: headers first, then what the proxy asks for.
#include <climits>
#include <memory>

#include "RequestTest.h"
#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class StreamBody : public RequestTest {
protected:
    // One exchange with this body; the request is gone when this returns.
    void exchange(std::istream& stream) {
        MvServerRequest request(&session);
        request.setBody(&stream);
        EXPECT_EQ(request.execute(), "");
    }

    Failure failingExchange(std::istream& stream) {
        return failureOf([&] {
            MvServerRequest request(&session);
            request.setBody(&stream);
            request.execute();
        });
    }

    const Script kResponse{instruction(18), block("\n"), end()};
};

// A provider that always has the same credential.
class Provider : public CredentialProvider {
public:
    const Credential* getCredential(AuthScope* /*scope*/) const override { return &m_credential; }

private:
    Credential m_credential{"u", "p"};
};

constexpr char kAnswer[] = "user:u\r\npassword:p\r\ndomain:\r\n\r\n";

}  // namespace

TEST_F(StreamBody, ResponseMayComeWithoutTheBody) {
    proxy.answers({instruction(18), block("ResponseHeaderResponseCode=200\n\nThe answer"), end()});
    std::istringstream stream("body");
    {
        MvServerRequest request(&session);
        request.setHeader("Env-Name", "Production");
        request.setBody(&stream);
        EXPECT_EQ(request.execute(), "The answer");
        EXPECT_EQ(request.getResponseCode(), "200");
    }
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("Env-Name=Production\r\n\r\n"), sendEof(), receive(3), complete()}));
    EXPECT_EQ(stream.tellg(), std::streampos(0)) << "the body is not read";
}

TEST_F(StreamBody, IsSentWhenTheProxyAsksForIt) {
    proxy.answers({instruction(16), kResponse});
    std::istringstream stream("body");
    exchange(stream);
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("body"),
                                    sendEof(), receive(3), complete()}));
    EXPECT_EQ(logged(),
              " [DEBUG] : Encoded Headers\n"
              " [DEBUG] : \r\n\n"
              " [DEBUG] : Sending a part of Request Body Now\n"
              " [DEBUG] : The size of which is :- 4 bytes\n"
              " [INFO ] : Completed sending the request body!\n\n"
              " [INFO ] : Now receiving the response\n"
              " [DEBUG] : Received the response. The size is :-0bytes\n"
              " [DEBUG] : MvServerRequest::~MvServerRequest()\n");
}

TEST_F(StreamBody, GoesOutInChunksOfAtMost4096Bytes) {
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 8192U, 10000U, 40000U}) {
        SCOPED_TRACE(size);
        const std::string body = sampleBytes(size);
        Calls expected{sendNoAck("\r\n"), sendEof(), receive()};
        for (std::size_t at = 0; at < size; at += 4096) {
            expected.add(sendNoAck(body.substr(at, 4096)));
        }
        for (const Call& call : {sendEof(), receive(3), complete()}) {
            expected.add(call);
        }
        proxy.answers({instruction(16), kResponse});
        std::istringstream stream(body);
        exchange(stream);
        EXPECT_TRUE(sameCalls(expected, proxy.takeCalls()));
    }
}

TEST_F(StreamBody, IsReadFromWhereTheStreamStands) {
    proxy.answers({instruction(16), kResponse});
    std::istringstream stream("skipped body");
    stream.ignore(8);
    exchange(stream);
    EXPECT_EQ(proxy.calls().entries()[3], sendNoAck("body"));
}

TEST_F(StreamBody, IsNotConverted) {
    proxy.answers({instruction(16), kResponse});
    std::istringstream stream("\xff\xfe");
    exchange(stream);
    EXPECT_EQ(proxy.calls().entries()[3], sendNoAck("\xff\xfe"));
}

// By design: each chunk travels up to its first zero byte.
TEST_F(StreamBody, EachChunkIsCutAtItsFirstZeroByte) {
    std::string body(4096 + 3, 'x');
    body[2] = '\0';
    proxy.answers({instruction(16), kResponse});
    std::istringstream stream(body);
    exchange(stream);
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("xx"),
                                    sendNoAck("xxx"), sendEof(), receive(3), complete()}));
}

// --- streams of the application that fail --------------------------------------------------------

TEST_F(StreamBody, StreamThatFailsEndsTheBodySilently) {
    std::istringstream failed("unread");
    failed.setstate(std::ios::failbit);
    proxy.answers({instruction(16), kResponse});
    exchange(failed);
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendEof(), receive(3), complete()}));
}

TEST_F(StreamBody, ExceptionOfTheStreamPassesUnchanged) {
    std::istringstream stream("body");
    stream.exceptions(std::ios::eofbit);
    proxy.answers(instruction(16));
    {
        MvServerRequest request(&session);
        request.setBody(&stream);
        EXPECT_THROW(request.send(), std::ios::failure);
    }
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), complete()}));
}

// --- instructions --------------------------------------------------------------------------------

TEST_F(StreamBody, InstructionZeroGoesOnToTheResponse) {
    proxy.answers({nothing(), block("\nbody"), end()});
    MvServerRequest request(&session);
    std::istringstream stream("unread");
    request.setBody(&stream);
    EXPECT_EQ(request.execute(), "body");
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(3), complete()}));
}

TEST_F(StreamBody, InstructionZeroAfterTheBodyGoesOnToTheResponse) {
    proxy.answers({instruction(16), nothing(), block("\n"), end()});
    std::istringstream stream("body");
    exchange(stream);
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("body"),
                                    sendEof(), receive(3), complete()}));
}

TEST_F(StreamBody, AskedForAgainAnEmptyBodyIsSent) {
    constexpr std::size_t kTimes = 1000;
    proxy.answers({instruction(16).times(kTimes), kResponse});
    std::istringstream stream("body");
    exchange(stream);
    Calls expected{sendNoAck("\r\n"), sendEof(), receive(),
                   sendNoAck("body"), sendEof(), receive()};
    for (std::size_t i = 1; i < kTimes; ++i) {
        expected.add(sendEof());
        expected.add(receive());
    }
    expected.add(receive(2));
    expected.add(complete());
    EXPECT_TRUE(sameCalls(expected, proxy.calls()));
}

// By design: the 16 that follows the answer to a challenge is acted on in the same pass.
TEST_F(StreamBody, ChallengeAnsweredWith16SendsBodyInSamePass) {
    proxy.answers(
        {instruction(17), block("host:gateway\n").terminated(), instruction(16), kResponse});
    const Provider provider;
    std::istringstream stream("body");
    {
        MvServerRequest request(&session);
        request.setBody(&stream);
        request.setCredentialProvider(&provider);
        request.execute();
    }
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("\r\n"), sendEof(), receive(2), sendNoAck(kAnswer), receive(),
                     sendNoAck("body"), sendEof(), receive(3), complete()}));
}

TEST_F(StreamBody, ChallengeMayComeAfterTheBody) {
    proxy.answers({instruction(16), instruction(17), block("").terminated(), kResponse});
    const Provider provider;
    std::istringstream stream("body");
    {
        MvServerRequest request(&session);
        request.setBody(&stream);
        request.setCredentialProvider(&provider);
        request.execute();
    }
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("body"), sendEof(),
                     receive(2), sendNoAck(kAnswer), receive(3), complete()}));
}

// --- results of the proxy ------------------------------------------------------------------------

TEST_F(StreamBody, ResultZeroForAChunkEndsTheBodyAndTheExchangeGoesOn) {
    proxy.answers({gives(Function::SendNoAck, 1), gives(Function::SendNoAck, 0)});
    proxy.answers({instruction(16), kResponse});
    std::istringstream stream(std::string(10000, 'b'));
    exchange(stream);
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck(std::string(4096, 'b')),
                     sendEof(), receive(3), complete()}));
    EXPECT_EQ(stream.tellg(), std::streampos(4096));
}

TEST_F(StreamBody, FailuresBeforeTheBody) {
    proxy.setLastError("M");
    std::istringstream stream("body");

    proxy.answers(gives(Function::SendNoAck, -1001));
    EXPECT_EQ(failingExchange(stream), failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.takeCalls(), (Calls{sendNoAck("\r\n"), getLastError(), complete()}));

    proxy.answers(gives(Function::SendEOF, -1002));
    EXPECT_EQ(failingExchange(stream), failure<MSPProtocolException>(0, "M"));
    EXPECT_EQ(proxy.takeCalls(), (Calls{sendNoAck("\r\n"), sendEof(), getLastError(), complete()}));

    for (const int code : {-1, -2, -246, INT_MIN}) {
        SCOPED_TRACE(code);
        proxy.answers(status(code));
        EXPECT_EQ(failingExchange(stream), failure<MSPUnrecognisedException>(0, "M"));
        EXPECT_EQ(proxy.takeCalls(),
                  (Calls{sendNoAck("\r\n"), sendEof(), receive(), getLastError(), complete()}));
    }
}

TEST_F(StreamBody, FailureOfAChunkStopsThere) {
    proxy.setLastError("M");
    proxy.answers(
        {gives(Function::SendNoAck, 1), gives(Function::SendNoAck, -5005), instruction(16)});
    std::istringstream stream(std::string(10000, 'b'));
    EXPECT_EQ(failingExchange(stream), failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck(std::string(4096, 'b')),
                     getLastError(), complete()}));
}

TEST_F(StreamBody, FailureOfTheEndMarkerAfterTheBody) {
    proxy.setLastError("M");
    proxy.answers({gives(Function::SendEOF, 0), gives(Function::SendEOF, -1003), instruction(16)});
    std::istringstream stream("body");
    EXPECT_EQ(failingExchange(stream), failure<MSPRuntimeException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("body"),
                                    sendEof(), getLastError(), complete()}));
}

TEST_F(StreamBody, NegativeInstructionAfterTheBodyIsRaisedByTheLoop) {
    proxy.setLastError("M");
    proxy.answers({instruction(16), status(-1)});
    std::istringstream stream("body");
    EXPECT_EQ(failingExchange(stream), failure<MSPUnrecognisedException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(), sendNoAck("body"),
                                    sendEof(), receive(), getLastError(), complete()}));
    const std::string log = logged();
    const auto completed = log.find(" [INFO ] : Completed sending the request body!\n\n");
    const auto raised = log.find(" [ERROR] :  Exception caught. The error code is :--1\n");
    EXPECT_LT(completed, raised);
    EXPECT_NE(raised, std::string::npos);
}

// --- sendBody by itself --------------------------------------------------------------------------

TEST_F(StreamBody, SendBodyReturnsTheNextInstructionUnchanged) {
    for (const int code : {16, 17, 18, 0, -1, -1001, 255}) {
        MvServerRequest request(&session);
        std::istringstream stream("body");
        request.setBody(&stream);
        proxy.answers(instruction(code));
        EXPECT_EQ(request.sendBody(), code);
    }
}

TEST_F(StreamBody, SendBodyWithoutAStreamIsALocalFailure) {
    MvServerRequest request(&session);
    EXPECT_EQ(
        failureOf([&] { request.sendBody(); }),
        failure<MSPRuntimeException>(-1, "MvServerRequest::sendBody: no body stream is set."));
    EXPECT_EQ(proxy.calls(), Calls{});
}
