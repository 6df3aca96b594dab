// The session id on its way from response to request.
#include "IcuInterposer.h"
#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

class Session : public RequestTest {
protected:
    // One exchange on a session; gives the text that was sent.
    std::string exchange(MSPSession& on, const std::string& responseHeaders) {
        proxy.takeCalls();
        proxy.answers({block(responseHeaders + "\n"), end()});
        MvServerRequest request(&on);
        request.setBody("x");
        request.execute();
        return proxy.calls().entries().front().text;
    }

    ~Session() override { IcuInterposer::settings = {}; }
};

const std::string kIdS = "ResponseSessionID=S\r\n";
const std::string kWithoutId = "\r\nx";
const std::string kWithIdS = "SessionID=S\r\n\r\nx";

}  // namespace

TEST_F(Session, RequestWithoutASessionIsALocalFailureAndSendsNothing) {
    const Failure expected =
        failure<MSPRuntimeException>(-1, "This MvServerRequest was created without an MSPSession.");
    MvServerRequest request(nullptr);
    request.setBody("x");
    EXPECT_EQ(failureOf([&] { request.send(); }), expected);
    EXPECT_EQ(failureOf([&] { request.shutdownServer(); }), expected);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Session, FreshSessionSendsNoId) {
    EXPECT_EQ(exchange(session, ""), kWithoutId);
}

TEST_F(Session, IdOfTheResponseGoesWithTheNextRequest) {
    EXPECT_EQ(exchange(session, kIdS), kWithoutId);
    EXPECT_EQ(exchange(session, "ResponseSessionID=T\n"), kWithIdS);
    EXPECT_EQ(exchange(session, ""), "SessionID=T\r\n\r\nx");
}

// By design: a response without the key empties the id.
TEST_F(Session, ResponseWithoutTheKeyEmptiesTheId) {
    exchange(session, kIdS);
    EXPECT_EQ(exchange(session, ""), kWithIdS);
    EXPECT_EQ(exchange(session, ""), kWithoutId);
}

// By design: the first value set for a name stays, also before that of the session.
TEST_F(Session, IdSetByTheApplicationOutlivesTheSessions) {
    exchange(session, kIdS);
    proxy.takeCalls();
    proxy.answers({block("\n"), end()});
    MvServerRequest request(&session);
    request.setHeader("SessionID", "mine");
    request.setBody("x");
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), send("SessionID=mine\r\n\r\nx"));
}

TEST_F(Session, StreamBodyCarriesTheIdToo) {
    exchange(session, kIdS);
    proxy.takeCalls();
    proxy.answers({instruction(18), block("\n"), end()});
    MvServerRequest request(&session);
    std::istringstream stream("unread");
    request.setBody(&stream);
    request.execute();
    EXPECT_EQ(proxy.calls(),
              (Calls{sendNoAck("SessionID=S\r\n\r\n"), sendEof(), receive(3), complete()}));
}

TEST_F(Session, CopiesHaveAnIdOfTheirOwn) {
    exchange(session, kIdS);
    MSPSession copy(session);
    MSPSession assigned;
    assigned = session;
    EXPECT_EQ(exchange(session, ""), kWithIdS);
    EXPECT_EQ(exchange(session, ""), kWithoutId);
    EXPECT_EQ(exchange(copy, ""), kWithIdS);
    EXPECT_EQ(exchange(assigned, ""), kWithIdS);
}

TEST_F(Session, AssignedToItselfKeepsItsId) {
    exchange(session, kIdS);
    MSPSession& same = session;
    session = same;
    EXPECT_EQ(exchange(session, ""), kWithIdS);
}

TEST_F(Session, SessionsDoNotMix) {
    MSPSession other;
    exchange(session, kIdS);
    EXPECT_EQ(exchange(other, ""), kWithoutId);
    EXPECT_EQ(exchange(session, ""), kWithIdS);
}

TEST_F(Session, IdIsStoredBeforeTheBodyIsRead) {
    proxy.setLastError("M");
    proxy.answers({block(kIdS + "\n"), status(-1001)});
    {
        MvServerRequest request(&session);
        request.setBody("x");
        EXPECT_EQ(failureOf([&] { request.execute(); }), failure<MSPConnectionException>(0, "M"));
    }
    EXPECT_EQ(exchange(session, ""), kWithIdS);
}

TEST_F(Session, RequestThatFailsBeforeItsResponseLeavesTheId) {
    exchange(session, kIdS);
    proxy.answers(gives(Function::Send, -1001));
    {
        MvServerRequest request(&session);
        request.setBody("x");
        EXPECT_THROW(request.execute(), MSPConnectionException);
    }
    EXPECT_EQ(exchange(session, ""), kWithIdS);
}

TEST_F(Session, IdIsKeptInTheLocalCodePage) {
    IcuInterposer::settings.localCodePage = "ISO-8859-1";
    exchange(session, "ResponseSessionID=\xC3\xA9\n");
    EXPECT_EQ(exchange(session, "ResponseSessionID=\xC3\xA9\n"), "SessionID=\xe9\r\n\r\nx")
        << "a text body travels as it is";

    proxy.takeCalls();
    proxy.answers({instruction(18), block("\n"), end()});
    MvServerRequest request(&session);
    std::istringstream stream;
    request.setBody(&stream);
    request.execute();
    EXPECT_EQ(proxy.calls().entries().front(), sendNoAck("SessionID=\xC3\xA9\r\n\r\n"))
        << "the headers of a stream body are converted";
}

TEST_F(Session, IdThatCannotBeConvertedLeavesAsAConversionFailure) {
    proxy.answers(block(kIdS + "\n"));
    IcuInterposer::settings.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    {
        MvServerRequest request(&session);
        request.setBody("x");
        EXPECT_EQ(failureOf([&] { request.send(); }),
                  failure<Utf8ConversionException>(0, "An error occured converting " +
                                                          IcuInterposer::describe("UTF-8") +
                                                          " to Unicode.\nU_INVALID_CHAR_FOUND\n"));
    }
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\nx"), sendEof(), receive(), complete()}));
    EXPECT_EQ(lines(), (Lines{" [INFO ] : Now receiving the response",
                              " [DEBUG] : MvServerRequest::~MvServerRequest()"}));
}

TEST_F(Session, RequestWithoutOneIsRefusedBeforeAnythingIsSent) {
    const Failure expected =
        failure<MSPRuntimeException>(-1, "This MvServerRequest was created without an MSPSession.");
    {
        MvServerRequest request(nullptr);
        request.setBody("x");
        EXPECT_EQ(failureOf([&] { request.send(); }), expected);
        EXPECT_EQ(failureOf([&] { request.shutdownServer(); }), expected);
    }
    EXPECT_EQ(proxy.calls(), (Calls{complete()}));
}
