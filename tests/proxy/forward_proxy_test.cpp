// Forward proxies that demand credentials, scripted: who is asked when, and what is sent how often.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>

#include "Client.h"
#include "RawServer.h"
#include "ScriptedProxy.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

using Instructions = std::vector<int>;
using Lines = std::vector<std::string>;

const char* const kTarget = "http://target.invalid/x";

class ForwardProxyTest : public ::testing::Test {
protected:
    // Names the proxy, with user and password in the URL when they are given.
    static int startWith(ScriptedProxy& proxy, const std::string& userInfo = "") {
        return start({{"http_proxy", "http://" + userInfo + proxy.server().authority()}});
    }
    static std::string challengeOf(ScriptedProxy& proxy, const std::string& realm) {
        return "host:127.0.0.1\nport:" + std::to_string(proxy.server().port()) +
               "\nrealm:" + realm + "\n";
    }
};

TEST_F(ForwardProxyTest, AChallengeComesBeforeTheBodyIsAskedForAndTheBodyIsSentOnce) {
    for (const std::size_t size : {100U, 70000U, 3000000U}) {
        SCOPED_TRACE(size);
        ScriptedProxy proxy(
            {"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}});
        ASSERT_EQ(startWith(proxy), 0);
        const std::string body = pattern(size);
        const Reply reply = sendStream(headerText(kTarget), body, {answerText("bob", "secret")});
        EXPECT_EQ(reply.code, 0) << reply.error;
        EXPECT_EQ(reply.instructions, (Instructions{17, 16, 18}));
        EXPECT_EQ(reply.challenges, Lines{challengeOf(proxy, "corp")});
        EXPECT_TRUE(reply.body == body);
        EXPECT_EQ(proxy.log(), (Lines{"407 none", "200 Basic " + std::to_string(size)}));
        stop();
    }
}

TEST_F(ForwardProxyTest, AWrongPasswordIsAskedForAgain) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}});
    ASSERT_EQ(startWith(proxy), 0);
    const Reply reply = sendStream(
        headerText(kTarget), "abc",
        {answerText("bob", "no"), answerText("bob", "nein"), answerText("bob", "secret")});
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_EQ(reply.instructions, (Instructions{17, 17, 17, 16, 18}));
    EXPECT_EQ(reply.body, "abc");
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "407 Basic", "407 Basic", "200 Basic 3"}));
}

TEST_F(ForwardProxyTest, ThreeRefusedAnswersEndTheExchange) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {}});
    ASSERT_EQ(startWith(proxy), 0);
    const Reply reply = sendStream(headerText(kTarget), "abc", {answerText("bob", "canary")});
    EXPECT_EQ(reply.instructions, (Instructions{17, 17, 17}));
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(reply.error,
              "cannot exchange with http://target.invalid:80/x through forward proxy " +
                  proxy.server().authority() +
                  ": the forward proxy refused the credentials three times (realm \"corp\", scheme "
                  "Basic); check user and password");
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "407 Basic", "407 Basic", "407 Basic"}));
}

TEST_F(ForwardProxyTest, AnAnswerServesLaterExchangesOfEveryKind) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}});
    ASSERT_EQ(startWith(proxy), 0);
    sendStream(headerText(kTarget), "1", {answerText("bob", "secret")});
    EXPECT_EQ(sendStream(headerText(kTarget), "22").instructions, (Instructions{16, 18}));
    EXPECT_EQ(sendText(headerText(kTarget), "333").body, "333");
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "200 Basic 1", "200 Basic 2", "200 Basic 3"}));
    // The connection that was refused and the one that carries the credentials.
    EXPECT_EQ(proxy.server().connections(), 2);
}

TEST_F(ForwardProxyTest, CredentialsInTheUrlOfTheProxyAreUsedWithoutAQuestion) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:se@cret")}});
    ASSERT_EQ(startWith(proxy, "bob:se%40cret@"), 0);
    EXPECT_EQ(sendStream(headerText(kTarget), "abc").instructions, (Instructions{16, 18}));
    EXPECT_EQ(sendText(headerText(kTarget), pattern(70000)).body, pattern(70000));
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "200 Basic 3", "200 Basic 70000"}));
}

TEST_F(ForwardProxyTest, WrongCredentialsInTheUrlAreAskedForLikeAnyOther) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}});
    ASSERT_EQ(startWith(proxy, "bob:old@"), 0);
    const Reply reply = sendStream(headerText(kTarget), "abc", {answerText("bob", "secret")});
    EXPECT_EQ(reply.instructions, (Instructions{17, 16, 18}));
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "407 Basic", "200 Basic 3"}));
}

TEST_F(ForwardProxyTest, DigestIsPreferredAndItsPasswordNeverTravels) {
    ScriptedProxy proxy(
        {"Proxy-Authenticate: Basic realm=\"corp\"\r\n"
         "Proxy-Authenticate: Digest realm=\"corp\", nonce=\"n1\", qop=\"auth\"\r\n",
         {"Digest username=\"bob\"*"}});
    ASSERT_EQ(startWith(proxy), 0);
    const std::string body = pattern(70000);
    const Reply reply = sendStream(headerText(kTarget), body, {answerText("bob", "secret")});
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_EQ(reply.instructions, (Instructions{17, 16, 18}));
    EXPECT_TRUE(reply.body == body);
    // The connection is a fresh one, so the nonce is fetched again, without the body.
    EXPECT_EQ(proxy.log(), (Lines{"407 none", "407 none", "200 Digest 70000"}));
    EXPECT_EQ(sendText(headerText(kTarget), "abc").body, "abc");
    EXPECT_EQ(proxy.log().back(), "200 Digest 3");
}

TEST_F(ForwardProxyTest, ATextBodyWithoutCredentialsFailsWithTheRemedy) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {}});
    ASSERT_EQ(startWith(proxy), 0);
    for (const std::size_t size : {3U, 3000000U}) {
        const Reply reply = sendText(headerText(kTarget), pattern(size));
        EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
        EXPECT_EQ(reply.error,
                  "cannot exchange with http://target.invalid:80/x through forward proxy " +
                      proxy.server().authority() +
                      ": the forward proxy demands credentials (realm \"corp\", scheme Basic); a "
                      "request sent as one text cannot be asked for them: put them into the URL of "
                      "the *_proxy variable, or send a request with a stream body and a credential "
                      "provider first");
    }
}

TEST_F(ForwardProxyTest, AStreamAfterARefusedTextIsSentOnceAndWhole) {
    for (const std::size_t size : {100U, 70000U, 3000000U}) {
        SCOPED_TRACE(size);
        ScriptedProxy proxy(
            {"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}});
        ASSERT_EQ(startWith(proxy), 0);
        const std::string body = pattern(size);
        EXPECT_EQ(sendText(headerText(kTarget), body).code, MV_STATUS_CANNOT_CONNECT);
        const Reply reply = sendStream(headerText(kTarget), body, {answerText("bob", "secret")});
        EXPECT_EQ(reply.code, 0) << reply.error;
        EXPECT_EQ(reply.instructions, (Instructions{17, 16, 18}));
        EXPECT_TRUE(reply.body == body);
        EXPECT_EQ(proxy.log(),
                  (Lines{"407 none", "407 none", "200 Basic " + std::to_string(size)}));
        stop();
    }
}

TEST_F(ForwardProxyTest, SchemesThatAreNotSpokenAreRefusedByName) {
    ScriptedProxy proxy({"Proxy-Authenticate: Negotiate\r\nProxy-Authenticate: Bearer\r\n", {}});
    ASSERT_EQ(startWith(proxy), 0);
    for (const Reply& reply :
         {sendStream(headerText(kTarget), "abc"), sendText(headerText(kTarget), "abc")}) {
        EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
        EXPECT_EQ(reply.error,
                  "cannot exchange with http://target.invalid:80/x through forward proxy " +
                      proxy.server().authority() +
                      ": the forward proxy demands credentials by a scheme that is not spoken here "
                      "(it offers: Negotiate, Bearer); have it offer Digest or Basic, or name "
                      "another one in the *_proxy variables");
        EXPECT_EQ(reply.challenges, Lines{});
    }
}

TEST_F(ForwardProxyTest, NtlmThatIsRefusedIsAskedForLikeAnyOther) {
    ScriptedProxy proxy({"Proxy-Authenticate: NTLM\r\n", {}});
    ASSERT_EQ(startWith(proxy), 0);
    const Reply reply =
        sendStream(headerText(kTarget), pattern(70000), {answerText("bob", "secret", "CORP")});
    EXPECT_EQ(reply.instructions, (Instructions{17, 17, 17}));
    EXPECT_EQ(reply.challenges, Lines(3, challengeOf(proxy, "")));
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(reply.error,
              "cannot exchange with http://target.invalid:80/x through forward proxy " +
                  proxy.server().authority() +
                  ": the forward proxy refused the credentials three times (realm "
                  "\"\", scheme NTLM); check user and password");
    // Refused at the first of its two steps, so nothing of the body has come.
    const Lines log = proxy.log();
    EXPECT_EQ(log.front(), "407 none");
    EXPECT_EQ(std::count(log.begin(), log.end(), "407 NTLM"),
              static_cast<std::ptrdiff_t>(log.size()) - 1);
}

// Of the body, a proxy that refuses leaves the end unread; whatever came next on that connection
// would be taken for the rest of it.
TEST_F(ForwardProxyTest, ARefusalOfAnUnreadBodyLeavesNoConnectionBehind) {
    constexpr std::size_t kUnread = 10;
    for (const std::size_t size : {kUnread, std::size_t{70000}, std::size_t{900000}}) {
        SCOPED_TRACE(size);
        RawServer* self = nullptr;
        RawServer proxy([&](Connection& connection) {
            for (std::string head = connection.readHead(); !head.empty();
                 head = connection.readHead()) {
                self->note(head.substr(0, head.find("\r\n")));
                connection.take(size - kUnread);
                connection.send("HTTP/1.1 403 Forbidden\r\nContent-Length: 6\r\n\r\ndenied");
            }
        });
        self = &proxy;
        ASSERT_EQ(start({{"http_proxy", "http://" + proxy.authority()}}), 0);
        for (int request = 0; request < 3; ++request) {
            const Reply reply = sendText(headerText(kTarget), pattern(size));
            EXPECT_EQ(reply.code, 0) << reply.error;
            EXPECT_EQ(reply.value("ResponseHeaderResponseCode"), "403");
            EXPECT_EQ(reply.body, "denied");
        }
        EXPECT_EQ(proxy.notes(), Lines(3, "POST http://target.invalid/x HTTP/1.1"));
        stop();
    }
}

TEST_F(ForwardProxyTest, ALateChallengeInMidBodyLosesNothing) {
    for (const std::size_t size : {100U, 65536U, 69632U, 131072U, 3000000U}) {
        SCOPED_TRACE(size);
        ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n",
                             {basic("bob:secret")},
                             true,
                             "/open "});
        ASSERT_EQ(startWith(proxy), 0);
        EXPECT_EQ(sendStream(headerText("http://target.invalid/open"), "a").instructions,
                  (Instructions{16, 18}));
        const std::string body = pattern(size);
        const Reply reply = sendStream(headerText(kTarget), body, {answerText("bob", "secret")});
        EXPECT_EQ(reply.code, 0) << reply.error;
        EXPECT_TRUE(reply.body == body);
        EXPECT_EQ(reply.instructions,
                  size > 65536 ? (Instructions{16, 17, 16, 18}) : (Instructions{16, 17, 18}));
        stop();
    }
}

TEST_F(ForwardProxyTest, AProxyThatReadsTheBodyFirstIsServedUpToTheWindow) {
    ScriptedProxy proxy(
        {"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}, false});
    ASSERT_EQ(start({{"http_proxy", proxy.url()}, {"MV_SERVERPROXY_EXPECT_TIMEOUT_MS", "10"}}), 0);
    const Reply small = sendStream(headerText(kTarget), "abc", {answerText("bob", "secret")});
    EXPECT_EQ(small.instructions, (Instructions{16, 17, 18}));
    EXPECT_EQ(small.body, "abc");
}

TEST_F(ForwardProxyTest, ATunnelThatIsRefusedIsNotALostConnection) {
    RawServer proxy([](Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
    });
    ASSERT_EQ(start({{"https_proxy", "http://" + proxy.authority()}}), 0);
    const Reply reply = sendStream(headerText("https://target.invalid/x"), "abc");
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(reply.error,
              "cannot exchange with https://target.invalid:443/x through forward proxy " +
                  proxy.authority() +
                  ": the forward proxy refused the way to target.invalid:443 with status 403; "
                  "check that it allows this host and port");
}

TEST_F(ForwardProxyTest, AChallengeToTheTunnelComesBeforeTheBodyToo) {
    RawServer* self = nullptr;
    RawServer proxy([&](Connection& connection) {
        for (std::string head = connection.readHead(); !head.empty();
             head = connection.readHead()) {
            const std::string given = headerValue(head, "Proxy-Authorization");
            self->note(head.substr(0, head.find("\r\n")) + " " + given);
            connection.send(given.empty()
                                ? "HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=\"Test \"A\" "
                                  "x\"\r\nContent-Length: 0\r\n\r\n"
                                : "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
        }
    });
    self = &proxy;
    ASSERT_EQ(start({{"https_proxy", "http://" + proxy.authority()}}), 0);
    const Reply reply =
        sendStream(headerText("https://target.invalid/x"), "abc", {answerText("bob", "secret")});
    EXPECT_EQ(reply.instructions, Instructions{17});
    EXPECT_EQ(reply.challenges, Lines{"host:127.0.0.1\nport:" + std::to_string(proxy.port()) +
                                      "\nrealm:Test \"A\" x\n"});
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(proxy.notes(), (Lines{"CONNECT target.invalid:443 HTTP/1.1 ",
                                    "CONNECT target.invalid:443 HTTP/1.1 " + basic("bob:secret")}));
}

TEST_F(ForwardProxyTest, CredentialsOfOneProxyNeverReachAnother) {
    ScriptedProxy first({"Proxy-Authenticate: Basic realm=\"one\"\r\n", {basic("bob:secret")}});
    RawServer* target = nullptr;
    RawServer direct([&](Connection& connection) {
        target->note(connection.readHead());
        connection.answer("");
    });
    target = &direct;
    ASSERT_EQ(start({{"http_proxy", first.url()}, {"no_proxy", "127.0.0.1"}}), 0);
    sendStream(headerText(kTarget), "1", {answerText("bob", "secret")});
    sendStream(headerText(direct.url()), "2");
    ASSERT_EQ(direct.notes().size(), 1U);
    EXPECT_EQ(headerValue(direct.notes()[0], "Proxy-Authorization"), "");
    stop();
    ScriptedProxy second({"Proxy-Authenticate: Basic realm=\"two\"\r\n", {basic("eve:other")}});
    ASSERT_EQ(startWith(second), 0);
    const Reply reply = sendStream(headerText(kTarget), "3", {answerText("eve", "other")});
    EXPECT_EQ(reply.instructions, (Instructions{17, 16, 18}));
    EXPECT_EQ(second.log(), (Lines{"407 none", "200 Basic 1"}));
}

// Asks for credentials, then refuses the way; what it was shown is in its notes.
class AskingProxy {
public:
    AskingProxy() : m_server([this](Connection& connection) { serve(connection); }) {}

    std::string url() const { return "http://" + m_server.authority(); }
    std::set<std::string> seen() const {
        const Lines notes = m_server.notes();
        return {notes.begin(), notes.end()};
    }

private:
    void serve(Connection& connection) {
        const std::string given = headerValue(connection.readHead(), "Proxy-Authorization");
        m_server.note(given);
        connection.send(given.empty()
                            ? "HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=\"r\"\r\n"
                              "Content-Length: 0\r\nConnection: close\r\n\r\n"
                            : "HTTP/1.1 403 No\r\nContent-Length: 0\r\n"
                              "Connection: close\r\n\r\n");
    }
    RawServer m_server;
};

TEST_F(ForwardProxyTest, CredentialsStayApartOnThreadsThatRunSideBySide) {
    const AskingProxy first;
    const AskingProxy second;
    ASSERT_EQ(start({{"http_proxy", first.url()}, {"https_proxy", second.url()}}), 0);
    const auto exchangeMany = [](const char* url, const std::string& answer) {
        for (int i = 0; i < 30; ++i) {
            sendStream(headerText(url), "abc", {answer});
        }
    };
    std::vector<std::thread> threads;
    for (int pair = 0; pair < 2; ++pair) {
        threads.emplace_back(exchangeMany, "http://target.invalid/x", answerText("bob", "one"));
        threads.emplace_back(exchangeMany, "https://target.invalid/x", answerText("eve", "two"));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(first.seen(), (std::set<std::string>{"", basic("bob:one")}));
    EXPECT_EQ(second.seen(), (std::set<std::string>{"", basic("eve:two")}));
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
