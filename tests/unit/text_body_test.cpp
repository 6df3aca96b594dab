// Requests with a text body: one text, one end marker, then the response.
#include <climits>
#include <memory>

#include "IcuInterposer.h"
#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class TextBody : public RequestTest {
protected:
    MvServerRequest request{&session};

    ~TextBody() override { IcuInterposer::settings = {}; }
};

}  // namespace

TEST_F(TextBody, HeadersAndBodyGoOutInOneTextAndNoInstructionIsRead) {
    proxy.answers({block("ResponseHeaderResponseCode=200\n\nThe answer"), end()});
    request.setHeader("Env-Name", "Production");
    request.setBody("<query/>");
    EXPECT_EQ(request.execute(), "The answer");
    EXPECT_EQ(request.getResponseCode(), "200");
    EXPECT_EQ(proxy.calls(), (Calls{send("Env-Name=Production\r\n\r\n<query/>"), sendEof(),
                                    receive(2), complete()}));
    EXPECT_EQ(lines(), (Lines{" [INFO ] : Now receiving the response",
                              " [DEBUG] : Received the response. The size is :-10bytes"}));
}

TEST_F(TextBody, WithoutHeadersAnEmptyLineComesFirst) {
    proxy.answers({block("\n"), end()});
    request.setBody("body");
    EXPECT_EQ(request.execute(), "");
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\nbody"), sendEof(), receive(2), complete()}));
}

// By design: unlike the headers of a stream body nothing is converted.
TEST_F(TextBody, HeadersAndBodyGoOutUnconvertedInOneText) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    proxy.answers({block("\n"), end()});
    request.setHeader("A", "\xe9");
    request.setBody("\xff\xe9");
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), send("A=\xe9\r\n\r\n\xff\xe9"));
}

// By design: texts travel up to their first zero byte.
TEST_F(TextBody, TextIsCutAtItsFirstZeroByte) {
    proxy.answers({block("\n"), end()});
    request.setHeader("A", std::string("1\0x", 3));
    request.setBody("body");
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), send("A=1"));
}

TEST_F(TextBody, BodyIsCopiedWhenItIsSet) {
    char text[] = "first";
    request.setBody(text);
    text[0] = 'X';
    proxy.answers({block("\n"), end()});
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), send("\r\nfirst"));
}

TEST_F(TextBody, LastBodySetCounts) {
    request.setBody("first");
    request.setBody("second");
    proxy.answers({block("\n"), end()});
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), send("\r\nsecond"));
}

TEST_F(TextBody, WinsOverAStreamThatIsThenNotRead) {
    std::istringstream stream("stream");
    request.setBody("text");
    request.setBody(&stream);
    proxy.answers({block("\n"), end()});
    request.execute();
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\ntext"), sendEof(), receive(2), complete()}));
    EXPECT_EQ(stream.tellg(), std::streampos(0));
}

TEST_F(TextBody, EmptyTextIsNoBody) {
    std::istringstream stream("unread");
    request.setBody(&stream);
    request.setBody("");
    proxy.answers({instruction(18), block("\n"), end()});
    request.execute();
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), receive(3), complete()}));
}

TEST_F(TextBody, LongTextGoesOutWhole) {
    const std::string body(3000000, 'b');
    request.setBody(body.c_str());
    proxy.answers({block("\n"), end()});
    request.execute();
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\n" + body), sendEof(), receive(2), complete()}));
}

TEST_F(TextBody, AnyResultThatIsNotNegativeIsGood) {
    for (const int result : {0, 1, 17, INT_MAX}) {
        MvServerRequest fresh(&session);
        fresh.setBody("x");
        proxy.answers(
            {gives(Function::Send, result), gives(Function::SendEOF, result), block("\n"), end()});
        EXPECT_EQ(fresh.execute(), "") << result;
    }
}

// --- failures -----------------------------------------------------------------------------------

TEST_F(TextBody, EveryFailingCallRaisesTheClassOfItsStatus) {
    const struct {
        int status;
        Failure expected;
    } rows[] = {
        {-1, failure<MSPUnrecognisedException>(0, "M")},
        {-42, failure<MSPUnrecognisedException>(0, "M")},
        {-1001, failure<MSPConnectionException>(0, "M")},
        {-1002, failure<MSPProtocolException>(0, "M")},
        {-1003, failure<MSPRuntimeException>(0, "M")},
        {-5005, failure<MSPConnectionException>(0, "M")},
        {INT_MIN, failure<MSPUnrecognisedException>(0, "M")},
    };
    proxy.setLastError("M");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        const auto sendOnce = [this] {
            MvServerRequest fresh(&session);
            fresh.setBody("x");
            delete fresh.send();
        };
        proxy.answers(gives(Function::Send, row.status));
        EXPECT_EQ(failureOf(sendOnce), row.expected);
        EXPECT_EQ(proxy.takeCalls(), (Calls{send("\r\nx"), getLastError(), complete()}));

        proxy.answers(gives(Function::SendEOF, row.status));
        EXPECT_EQ(failureOf(sendOnce), row.expected);
        EXPECT_EQ(proxy.takeCalls(), (Calls{send("\r\nx"), sendEof(), getLastError(), complete()}));
    }
}
