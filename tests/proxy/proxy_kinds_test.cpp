// Forward proxies that are no HTTP proxies, and addresses of the newer kind: SOCKS and IPv6.
#include <gtest/gtest.h>

#include "Client.h"
#include "RawServer.h"
#include "ScriptedProxy.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

using Instructions = std::vector<int>;
using Lines = std::vector<std::string>;

std::string shownPort(const std::string& twoBytes) {
    return std::to_string(static_cast<unsigned char>(twoBytes.at(0)) * 256 +
                          static_cast<unsigned char>(twoBytes.at(1)));
}

std::string shownAddress(const std::string& fourBytes) {
    std::string shown;
    for (const char byte : fourBytes) {
        shown += (shown.empty() ? "" : ".") + std::to_string(static_cast<unsigned char>(byte));
    }
    return shown;
}

std::string takeUntilZero(Connection& connection) {
    std::string text;
    for (std::string byte = connection.take(1); byte.size() == 1 && byte[0] != '\0';
         byte = connection.take(1)) {
        text += byte;
    }
    return text;
}

std::string takeCounted(Connection& connection) {
    return connection.take(static_cast<unsigned char>(connection.take(1).at(0)));
}

// A SOCKS proxy of versions 4, 4a and 5 that answers in the target's place with the body it got. It
// notes where it was to connect to and who asked.
class SocksProxy {
public:
    enum class Wants { Nothing, Password };
    explicit SocksProxy(Wants wants = Wants::Nothing, char reply = 0)
        : m_wants(wants), m_reply(reply), m_server([this](Connection& peer) { serve(peer); }) {}

    std::string authority() const { return m_server.authority(); }
    Lines seen() const { return m_server.notes(); }

private:
    void serve(Connection& peer) {
        const std::string version = peer.take(1);
        if (!(version == "\x05" ? greets5(peer) : greets4(peer))) {
            return;
        }
        for (std::string head = peer.readHead(); !head.empty(); head = peer.readHead()) {
            peer.answer(peer.readBody(head));
        }
    }
    bool greets4(Connection& peer) {
        peer.take(1);
        const std::string port = peer.take(2);
        const std::string address = peer.take(4);
        const std::string user = takeUntilZero(peer);
        const bool named = address.compare(0, 3, std::string(3, '\0')) == 0;
        m_server.note("4 " + (named ? takeUntilZero(peer) : shownAddress(address)) + ":" +
                      shownPort(port) + " " + user);
        peer.send(std::string(1, '\0') + (m_reply == 0 ? "\x5a" : "\x5b") + std::string(6, '\0'));
        return m_reply == 0;
    }
    bool greets5(Connection& peer) {
        const char wanted = m_wants == Wants::Password ? '\x02' : '\0';
        const bool offered = takeCounted(peer).find(wanted) != std::string::npos;
        peer.send(std::string("\x05") + (offered ? wanted : '\xff'));
        if (!offered) {
            return false;
        }
        std::string who;
        if (m_wants == Wants::Password) {
            peer.take(1);
            who = takeCounted(peer) + "/";
            who += takeCounted(peer);
            peer.send(std::string("\x01\x00", 2));
        }
        peer.take(3);
        const std::string kind = peer.take(1);
        const std::string host =
            kind == "\x01" ? shownAddress(peer.take(4)) : "name " + takeCounted(peer);
        m_server.note("5 " + host + ":" + shownPort(peer.take(2)) + " " + who);
        peer.send(std::string("\x05", 1) + m_reply + std::string("\0\x01\0\0\0\0\0\0", 8));
        return m_reply == 0;
    }

    const Wants m_wants;
    const char m_reply;
    RawServer m_server;
};

TEST(Socks, EachKindLeadsToTheTargetWithOrWithoutItsName) {
    struct Row {
        const char* scheme;
        const char* target;
        const char* seen;
    };
    for (const Row& row : std::initializer_list<Row>{
             {"socks4", "http://127.0.0.9:81/x", "4 127.0.0.9:81 "},
             {"socks4a", "http://target.invalid/x", "4 target.invalid:80 "},
             {"socks5", "http://127.0.0.9:81/x", "5 127.0.0.9:81 "},
             {"socks5h", "http://target.invalid/x", "5 name target.invalid:80 "}}) {
        SCOPED_TRACE(row.scheme);
        const SocksProxy proxy;
        ASSERT_EQ(start({{"all_proxy", std::string(row.scheme) + "://" + proxy.authority()},
                         {"MV_SERVERPROXY_EXPECT_TIMEOUT_MS", "10"}}),
                  0);
        for (const std::size_t size : {100U, 70000U}) {
            const Reply reply = sendStream(headerText(row.target), pattern(size));
            EXPECT_EQ(reply.code, 0) << reply.error;
            EXPECT_EQ(reply.instructions, (Instructions{16, 18}));
            EXPECT_TRUE(reply.body == pattern(size));
            EXPECT_EQ(sendText(headerText(row.target), "abc").body, "abc");
        }
        EXPECT_EQ(proxy.seen(), Lines{row.seen});
        stop();
    }
}

TEST(Socks, UserAndPasswordOfTheUrlAreGivenWhenTheyAreAskedFor) {
    const SocksProxy proxy(SocksProxy::Wants::Password);
    ASSERT_EQ(start({{"all_proxy", "socks5h://bob:pa%3Ass@" + proxy.authority()}}), 0);
    EXPECT_EQ(sendStream(headerText("http://target.invalid/x"), "abc").body, "abc");
    EXPECT_EQ(proxy.seen(), Lines{"5 name target.invalid:80 bob/pa:ss"});
}

TEST(Socks, RefusalsNameTheProxyAndTheWayOut) {
    const SocksProxy refuses(SocksProxy::Wants::Nothing, 2);
    const SocksProxy asks(SocksProxy::Wants::Password);
    for (const SocksProxy* proxy : {&refuses, &asks}) {
        ASSERT_EQ(start({{"all_proxy", "socks5h://" + proxy->authority()}}), 0);
        const Reply reply = sendStream(headerText("http://target.invalid/x"), "abc");
        EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
        EXPECT_EQ(reply.error.rfind("cannot exchange with http://target.invalid:80/x through "
                                    "forward proxy " +
                                        proxy->authority() + ": ",
                                    0),
                  0U)
            << reply.error;
        EXPECT_NE(reply.error.find("; check the *_proxy variables and the forward proxy"),
                  std::string::npos)
            << reply.error;
        stop();
    }
}

// Without IPv6 on this machine the same exchanges have to fail with a text that names the address.
void expectAnswerOrNoIpv6(const Reply& reply, const std::string& authority,
                          const std::string& body) {
    if (hasIpv6Loopback()) {
        EXPECT_EQ(reply.code, 0) << reply.error;
        EXPECT_EQ(reply.body, body);
        return;
    }
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_NE(reply.error.find(authority), std::string::npos) << reply.error;
}

TEST(Ipv6, ATargetInBracketsIsReached) {
    RawServer* self = nullptr;
    RawServer server(
        [&](Connection& connection) {
            for (std::string head = connection.readHead(); !head.empty();
                 head = connection.readHead()) {
                self->note(headerValue(head, "Host"));
                connection.answer(connection.readBody(head));
            }
        },
        hasIpv6Loopback() ? AF_INET6 : AF_INET);
    self = &server;
    const std::string authority = "[::1]:" + std::to_string(server.port());
    ASSERT_EQ(start({{"http_proxy", "http://127.0.0.1:1"}, {"no_proxy", "::1"}}), 0);
    expectAnswerOrNoIpv6(sendStream(headerText("http://" + authority + "/x"), "abc"), authority,
                         "abc");
    expectAnswerOrNoIpv6(sendText(headerText("http://" + authority + "/x"), "abc"), authority,
                         "abc");
    EXPECT_EQ(server.notes(), hasIpv6Loopback() ? Lines(2, authority) : Lines{});
}

TEST(Ipv6, AForwardProxyIsReachedAndItsAddressTravelsThroughTheChallenge) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:secret")}},
                        hasIpv6Loopback() ? AF_INET6 : AF_INET);
    const std::string authority = "[::1]:" + std::to_string(proxy.server().port());
    ASSERT_EQ(start({{"http_proxy", "http://" + authority}}), 0);
    const Reply reply =
        sendStream(headerText("http://target.invalid/x"), "abc", {answerText("bob", "secret")});
    expectAnswerOrNoIpv6(reply, authority, "abc");
    EXPECT_EQ(reply.challenges,
              hasIpv6Loopback() ? Lines{"host:%3A%3A1\nport:" +
                                        std::to_string(proxy.server().port()) + "\nrealm:corp\n"}
                                : Lines{});
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
