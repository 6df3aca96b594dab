// How headers are kept, and the text in which they go out.
#include <climits>

#include "IcuInterposer.h"
#include "RequestTest.h"
#include "client/HeaderText.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class RequestHeaders : public RequestTest {
protected:
    MvServerRequest request{&session};

    // The header text as it reaches the proxy.
    std::string sentText() {
        proxy.takeCalls();
        request.submitRequestHeader();
        const Calls calls = proxy.takeCalls();
        EXPECT_EQ(calls.size(), 2U);
        EXPECT_EQ(calls.entries().back(), sendEof());
        EXPECT_EQ(calls.entries().front().function, Function::SendNoAck);
        return calls.entries().front().text;
    }

    ~RequestHeaders() override { IcuInterposer::settings = {}; }
};

}  // namespace

TEST_F(RequestHeaders, NoHeadersAreALoneLineEnd) {
    EXPECT_EQ(sentText(), "\r\n");
    EXPECT_EQ(Internal::formatHeaders({}), "\r\n");
}

TEST_F(RequestHeaders, EachHeaderIsALineAndAnEmptyLineEndsThem) {
    request.setHeader("A", "1");
    request.setHeader("B", "2");
    EXPECT_EQ(sentText(), "A=1\r\nB=2\r\n\r\n");
}

TEST_F(RequestHeaders, NamesAscendByteByByte) {
    request.setHeader("a", "lower");
    request.setHeader("Service-Name", "s");
    request.setHeader("Env-Name", "e");
    request.setHeader("B", "upper");
    request.setHeader("\xC3\xA9", "beyond");
    request.setHeader("BB", "longer");
    EXPECT_EQ(sentText(),
              "B=upper\r\nBB=longer\r\nEnv-Name=e\r\nService-Name=s\r\na=lower\r\n"
              "\xC3\xA9=beyond\r\n\r\n");
}

// By design: the first value set for a name stays.
TEST_F(RequestHeaders, FirstValueSetForANameStays) {
    request.setHeader("Locale", "en");
    request.setHeader("Locale", "de");
    request.setHeader("locale", "other name");
    EXPECT_EQ(sentText(), "Locale=en\r\nlocale=other name\r\n\r\n");
}

TEST_F(RequestHeaders, AnEmptyFirstValueStaysToo) {
    request.setHeader("Locale", "");
    request.setHeader("Locale", "de");
    EXPECT_EQ(sentText(), "Locale=\r\n\r\n");
}

// By design: names and values are not checked.
TEST_F(RequestHeaders, LineBreaksPassUnchanged) {
    request.setHeader("", "no name");
    request.setHeader("A", "1\r\nInjected=2");
    request.setHeader("B=", "=3=");
    EXPECT_EQ(sentText(), "=no name\r\nA=1\r\nInjected=2\r\nB===3=\r\n\r\n");
}

TEST_F(RequestHeaders, TextEndsAtItsFirstZeroByte) {
    request.setHeader("A", std::string("1\0x", 3));
    request.setHeader("B", "2");
    EXPECT_EQ(sentText(), "A=1");
}

TEST_F(RequestHeaders, TextIsConvertedToUtf8) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    request.setHeader("A", "\xe9");
    EXPECT_EQ(sentText(), "A=\xC3\xA9\r\n\r\n");
}

TEST_F(RequestHeaders, LongHeadersGoOutWhole) {
    const std::string value(100000, 'v');
    request.setHeader("A", value);
    EXPECT_EQ(sentText(), "A=" + value + "\r\n\r\n");
}

TEST_F(RequestHeaders, ConvertedTextIsLoggedAtDebugLevel) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    request.setHeader("A", "\xe9");
    request.submitRequestHeader();
    EXPECT_EQ(logged(), " [DEBUG] : Encoded Headers\n [DEBUG] : A=\xC3\xA9\r\n\r\n\n");
}

// --- failures -----------------------------------------------------------------------------------

TEST_F(RequestHeaders, ConversionFailureIsALocalFailureAndNothingIsSent) {
    IcuInterposer::settings.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    const std::string message =
        "Exception occurred while converting to UTF-8 bytes."
        "An error occured converting " +
        IcuInterposer::describe("UTF-8") + " to Unicode.\nU_INVALID_CHAR_FOUND\n";
    EXPECT_EQ(failureOf([this] { request.submitRequestHeader(); }),
              failure<MSPRuntimeException>(-1, message));
    EXPECT_EQ(proxy.calls(), Calls{});
    EXPECT_EQ(logged(), " [ERROR] : " + message + "\n [ERROR] : -1\n");
}

TEST_F(RequestHeaders, RefusalOfTheTextIsRaisedBeforeTheEndMarker) {
    proxy.setLastError("M");
    proxy.answers(gives(Function::SendNoAck, -1002));
    EXPECT_EQ(failureOf([this] { request.submitRequestHeader(); }),
              failure<MSPProtocolException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), getLastError()}));
}

TEST_F(RequestHeaders, RefusalOfTheEndMarkerIsRaised) {
    proxy.setLastError("M");
    proxy.answers(gives(Function::SendEOF, -5005));
    EXPECT_EQ(failureOf([this] { request.submitRequestHeader(); }),
              failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("\r\n"), sendEof(), getLastError()}));
}

TEST_F(RequestHeaders, AnyResultThatIsNotNegativeIsGood) {
    for (const int result : {0, 1, 5, INT_MAX}) {
        proxy.answers({gives(Function::SendNoAck, result), gives(Function::SendEOF, result)});
        EXPECT_NO_THROW(request.submitRequestHeader()) << result;
    }
}
