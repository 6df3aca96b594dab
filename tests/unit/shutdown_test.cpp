// Asking the server to shut down.
#include <climits>
#include <memory>

#include "IcuInterposer.h"
#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class Shutdown : public RequestTest {
protected:
    std::unique_ptr<MvServerRequest> request{new MvServerRequest(&session)};

    void receiveSessionId(const std::string& id) {
        proxy.answers({block("ResponseSessionID=" + id + "\n\n"), end()});
        MvServerRequest first(&session);
        first.setBody("x");
        first.execute();
        proxy.takeCalls();
    }

    ~Shutdown() override { IcuInterposer::settings = {}; }
};

}  // namespace

TEST_F(Shutdown, SendsItsTextAndCompletesWithoutReadingAResponse) {
    request->shutdownServer();
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("ShutdownServer\r\n\r\n"), sendEof(), complete()}));
    request.reset();
    EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("ShutdownServer\r\n\r\n"), sendEof(), complete(2)}))
        << "the request's own exchange ends, too";
    EXPECT_EQ(lines(), (Lines{" [DEBUG] : MvServerRequest::~MvServerRequest()"}));
}

TEST_F(Shutdown, CarriesHeadersAndSessionId) {
    receiveSessionId("S");
    request->setHeader("Env-Name", "Production");
    request->shutdownServer();
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("ShutdownServer\r\nEnv-Name=Production\r\nSessionID=S\r\n\r\n"),
                     sendEof(), complete()}));
}

TEST_F(Shutdown, KeepsAnIdThatTheApplicationSet) {
    receiveSessionId("S");
    request->setHeader("SessionID", "mine");
    request->shutdownServer();
    EXPECT_EQ(proxy.calls().entries().front(),
              sendNoAck("ShutdownServer\r\nSessionID=mine\r\n\r\n"));
}

TEST_F(Shutdown, TextIsConvertedToUtf8) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    request->setHeader("A", "\xe9");
    request->shutdownServer();
    EXPECT_EQ(proxy.calls().entries().front(), sendNoAck("ShutdownServer\r\nA=\xC3\xA9\r\n\r\n"));
}

// By design: only the end marker decides whether the text was taken.
TEST_F(Shutdown, ResultOfTheTextIsIgnored) {
    for (const int result : {0, 7, -1, -1001, INT_MIN}) {
        proxy.answers(gives(Function::SendNoAck, result));
        EXPECT_NO_THROW(request->shutdownServer()) << result;
        EXPECT_EQ(proxy.takeCalls(),
                  (Calls{sendNoAck("ShutdownServer\r\n\r\n"), sendEof(), complete()}));
    }
}

TEST_F(Shutdown, EndMarkerThatIsNotNegativeIsGood) {
    proxy.answers(gives(Function::SendEOF, 5));
    EXPECT_NO_THROW(request->shutdownServer());
    EXPECT_EQ(proxy.calls().count(Function::Complete), 1U);
}

TEST_F(Shutdown, FailureOfTheEndMarkerIsRaisedAndCompletesNothing) {
    proxy.setLastError("M");
    proxy.answers(gives(Function::SendEOF, -1001));
    EXPECT_EQ(failureOf([this] { request->shutdownServer(); }),
              failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("ShutdownServer\r\n\r\n"), sendEof(), getLastError()}));
}

TEST_F(Shutdown, TextThatCannotBeConvertedLeavesAsAConversionFailure) {
    IcuInterposer::settings.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    EXPECT_EQ(failureOf([this] { request->shutdownServer(); }),
              failure<Utf8ConversionException>(0, "An error occured converting " +
                                                      IcuInterposer::describe("UTF-8") +
                                                      " to Unicode.\nU_INVALID_CHAR_FOUND\n"));
    EXPECT_EQ(proxy.calls(), Calls{});
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(Shutdown, NeitherTestsNorMarksTheRequestAsSent) {
    proxy.answers({block("\n"), end(), block("\n"), end()});
    request->shutdownServer();
    request->setBody("x");
    request->execute();
    EXPECT_NO_THROW(request->shutdownServer());
    MvServerRequest other(&session);
    other.shutdownServer();
    other.setBody("x");
    EXPECT_NO_THROW(other.execute());
}

TEST_F(Shutdown, DoesNotNeedAValidRequest) {
    request->setHeader("generatePKCS7Signatures", "null");
    EXPECT_NO_THROW(request->shutdownServer());
}
