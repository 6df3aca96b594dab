// Settings, the choice of a forward proxy, and what a challenge says.
#include <gtest/gtest.h>

#include <map>

#include "Config.h"
#include "CredentialStore.h"
#include "ExchangeState.h"
#include "Failure.h"
#include "NoProxy.h"
#include "ProxyChallenge.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

using Environment = std::map<std::string, std::string>;

Variables of(const Environment& environment) {
    return [&environment](const char* name) -> const char* {
        const auto entry = environment.find(name);
        return entry == environment.end() ? nullptr : entry->second.c_str();
    };
}

std::string proxyFor(const Environment& environment, const std::string& url) {
    const ForwardProxies proxies = forwardProxies(of(environment));
    const ForwardProxy* proxy = proxies.leadingTo(targetUrl(url));
    return proxy == nullptr ? "direct" : proxy->url();
}

TEST(Settings, HaveTheirDocumentedDefaults) {
    const Config config = readConfig(of({}));
    EXPECT_EQ(config.hub, "http://127.0.0.1:16064");
    EXPECT_EQ(config.connectTimeoutMs, 30000);
    EXPECT_EQ(config.idleTimeoutMs, 300000);
    EXPECT_EQ(config.totalTimeoutMs, 0);
    EXPECT_EQ(config.expectTimeoutMs, 1000);
    EXPECT_EQ(config.spoolLimit, 1073741824);
    EXPECT_EQ(config.headerLimit, 65536);
}

TEST(Settings, ThatCannotBeUsedAreRefusedByName) {
    for (const auto& [name, value] :
         Environment{{"MV_SERVERPROXY_CONNECT_TIMEOUT_MS", "0"},
                     {"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "-1"},
                     {"MV_SERVERPROXY_TOTAL_TIMEOUT_MS", "1 s"},
                     {"MV_SERVERPROXY_EXPECT_TIMEOUT_MS", "0x10"},
                     {"MV_SERVERPROXY_SPOOL_LIMIT", "99999999999999999999"},
                     {"MV_SERVERPROXY_HEADER_LIMIT", "10"},
                     {"MV_SERVERPROXY_HUB", "ftp://h/"},
                     {"http_proxy", "gopher://h:1"},
                     {"https_proxy", "http://"}}) {
        try {
            readConfig(of({{name, value}}));
            ADD_FAILURE() << name << "=" << value << " was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, MV_STATUS_RUNTIME);
            EXPECT_NE(failure.text.find(name), std::string::npos) << failure.text;
        }
    }
}

TEST(ForwardProxies, FollowTheUsualVariables) {
    struct Row {
        Environment environment;
        const char* url;
        const char* proxy;
    };
    const std::vector<Row> rows{
        {{}, "http://h/", "direct"},
        {{{"http_proxy", "http://p:1"}}, "http://h/", "http://p:1"},
        {{{"http_proxy", "http://p:1"}}, "https://h/", "direct"},
        {{{"HTTP_PROXY", "http://p:1"}}, "http://h/", "direct"},
        {{{"https_proxy", "p:1"}}, "https://h/", "http://p:1"},
        {{{"HTTPS_PROXY", "p:1"}}, "https://h/", "http://p:1"},
        {{{"https_proxy", "p:1"}, {"HTTPS_PROXY", "q:1"}}, "https://h/", "http://p:1"},
        {{{"all_proxy", "socks5h://p"}}, "http://h/", "socks5h://p:1080"},
        {{{"ALL_PROXY", "p:1"}}, "https://h/", "http://p:1"},
        {{{"all_proxy", "q:1"}, {"http_proxy", "p:1"}}, "http://h/", "http://p:1"},
        {{{"http_proxy", "p"}}, "http://h/", "http://p:1080"},
        {{{"http_proxy", "http://p:80"}}, "http://h/", "http://p:80"},
        {{{"http_proxy", "https://p"}}, "http://h/", "https://p:443"},
        {{{"http_proxy", "u:s@[::1]:3128"}}, "http://h/", "http://[::1]:3128"},
        {{{"http_proxy", ""}}, "http://h/", "direct"},
        {{{"http_proxy", "p:1"}, {"no_proxy", "h"}}, "http://h/", "direct"},
        {{{"http_proxy", "p:1"}, {"NO_PROXY", "h"}}, "http://h/", "direct"},
        {{{"http_proxy", "p:1"}, {"NO_PROXY", "h"}, {"no_proxy", ""}}, "http://h/", "http://p:1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.environment) + " " + row.url);
        EXPECT_EQ(proxyFor(row.environment, row.url), row.proxy);
    }
}

TEST(ForwardProxies, UserAndPasswordComeOutOfTheUrlDecoded) {
    const Environment environment{{"http_proxy", "http://al%40ice:pa%3Ass@p:1"}};
    const ForwardProxies proxies = forwardProxies(of(environment));
    EXPECT_EQ(proxies.forHttp->user.view(), "al@ice");
    EXPECT_EQ(proxies.forHttp->password.view(), "pa:ss");
    EXPECT_EQ(proxies.forHttp->url(), "http://p:1");
}

TEST(NoProxy, ListsHostsDomainsAddressesAndNetworksWithOrWithoutAPort) {
    struct Row {
        const char* host;
        const char* list;
        bool bypasses;
    };
    for (const Row& row : std::initializer_list<Row>{{"h", "", false},
                                                     {"h", "*", true},
                                                     {"h", "h", true},
                                                     {"H.Example", "h.eXample", true},
                                                     {"a.example.com", "example.com", true},
                                                     {"a.example.com", ".example.com", true},
                                                     {"a.example.com", "*.example.com", true},
                                                     {"example.com", ".example.com", true},
                                                     {"badexample.com", "example.com", false},
                                                     {"example.com", "a.example.com", false},
                                                     {"example.com.", "example.com", true},
                                                     {"h", "a, h b", true},
                                                     {"h", "a,,b", false},
                                                     {"10.1.2.3", "10.1.2.3", true},
                                                     {"10.1.2.3", "2.3", false},
                                                     {"10.1.2.3", "10.0.0.0/8", true},
                                                     {"11.1.2.3", "10.0.0.0/8", false},
                                                     {"10.1.2.3", "10.1.2.0/30", true},
                                                     {"10.1.2.4", "10.1.2.0/30", false},
                                                     {"10.1.2.3", "0.0.0.0/0", true},
                                                     {"10.1.2.3", "10.0.0.0/33", false},
                                                     {"10.1.2.3", "10.0.0.0/x", false},
                                                     {"::1", "[::1]", true},
                                                     {"fe80::1", "fe80::/10", true},
                                                     {"::1", "127.0.0.1", false},
                                                     {"::1", "::1", true},
                                                     {"a.example.com", "example.com:80", true},
                                                     {"a.example.com", "example.com:81", false},
                                                     {"10.1.2.3", "10.1.2.3:80", true},
                                                     {"10.1.2.3", "10.1.2.3:81", false},
                                                     {"::1", "[::1]:80", true},
                                                     {"::1", "[::1]:81", false},
                                                     {"::1:80", "[::1]:80", false},
                                                     {"h", "*:81", false},
                                                     {"h", "*:80", true},
                                                     {"h", "h:", true},
                                                     {"h", ":80", false},
                                                     {"h", "[h", false}}) {
        EXPECT_EQ(bypassesProxy(row.host, "80", row.list), row.bypasses)
            << row.host << " in " << row.list;
    }
}

TEST(ProxyChallenge, TheStrongestSchemeThatIsSpokenIsTaken) {
    struct Row {
        std::vector<std::string> challenges;
        const char* scheme;
        const char* realm;
        const char* offered;
    };
    const std::vector<Row> rows{
        {{"Basic realm=\"corp\""}, "Basic", "corp", "Basic"},
        {{"Basic realm=corp"}, "Basic", "corp", "Basic"},
        {{"basic REALM=\"corp\", charset=\"UTF-8\""}, "Basic", "corp", "basic"},
        {{"Basic realm=\"b\"", "Digest realm=\"d\", nonce=\"x=\", qop=\"auth\""},
         "Digest",
         "d",
         "Basic, Digest"},
        {{"Basic realm=\"b\", Digest realm=\"d\", nonce=\"x\""}, "Digest", "d", "Basic, Digest"},
        {{"NTLM", "Basic realm=\"b\""}, "Basic", "b", "NTLM, Basic"},
        {{"NTLM"}, "NTLM", "", "NTLM"},
        {{"Negotiate"}, "unknown", "", "Negotiate"},
        {{"Basic realm=\"Test Basic: \"corp\" realm\""},
         "Basic",
         "Test Basic: \"corp\" realm",
         "Basic"},
        {{"Basic realm=\"a\\\"b\", x=y"}, "Basic", "a\"b", "Basic"},
        {{"Basic realm=\"open"}, "Basic", "open", "Basic"},
        {{"Basic"}, "Basic", "", "Basic"},
        {{""}, "unknown", "", ""},
        {{"="}, "unknown", "", ""},
        {{}, "unknown", "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.challenges));
        const ProxyOffer offer = strongestOffer(row.challenges, true);
        EXPECT_STREQ(nameOf(offer.scheme), row.scheme);
        EXPECT_EQ(offer.realm, row.realm);
        EXPECT_EQ(offer.offered, row.offered);
    }
    EXPECT_EQ(strongestOffer({"NTLM"}, false).scheme, AuthScheme::Unknown);
}

TEST(ProxyChallenge, ItsTextSurvivesAReaderThatCutsAtColons) {
    ForwardProxy proxy;
    proxy.host = "::1";
    proxy.port = "3128";
    EXPECT_EQ(challengeText(proxy, "a: b\r\nc"), "host:%3A%3A1\nport:3128\nrealm:a%3A b  c\n");
    EXPECT_EQ(challengeText(proxy, std::string(5000, 'x')).size(),
              std::string("host:%3A%3A1\nport:3128\nrealm:\n").size() + 1024);
}

TEST(ProxyChallenge, AnAnswerIsReadToItsEmptyLine) {
    const Credentials plain = readAnswer("user:u\r\npassword:p:q\r\ndomain:\r\n\r\n");
    EXPECT_EQ(plain.user.view(), "u");
    EXPECT_EQ(plain.password.view(), "p:q");
    EXPECT_EQ(readAnswer("user:u\r\npassword:\r\ndomain:D\r\n\r\n").user.view(), "D\\u");
    EXPECT_EQ(readAnswer("user:u\r\n\r\nuser:x\r\n").user.view(), "u");
    EXPECT_THROW(readAnswer("user:\r\npassword:p\r\n\r\n"), Failure);
    EXPECT_TRUE(isAnswer("user:"));
    EXPECT_FALSE(isAnswer("User=1"));
}

TEST(CredentialStore, ForgetsOnlyWhatWasRefused) {
    CredentialStore store({});
    store.remember("p", {Secret("u"), Secret("1"), true}, AuthScheme::Basic);
    const auto first = store.about("p");
    store.remember("p", {Secret("u"), Secret("2"), true}, AuthScheme::Basic);
    store.forget("p", first.number);
    EXPECT_EQ(store.about("p").credentials.password.view(), "2");
    store.forget("p", store.about("p").number);
    EXPECT_FALSE(store.about("p").credentials.given);
}

TEST(TextTools, EscapedTextComesBack) {
    EXPECT_EQ(escaped("a=b%c", "=%"), "a%3Db%25c");
    EXPECT_EQ(unescaped("a%3db%25c%20", "=%"), "a=b%c%20");
    EXPECT_EQ(unescaped("%253D", "=%"), "%3D");
    EXPECT_EQ(percentEncoded("a b/\xC3\xA4"), "a%20b%2F%C3%A4");
}

TEST(ExchangeState, EveryStateMayEndFailOrBeReplaced) {
    for (std::size_t from = 0; from < kStateCount; ++from) {
        for (const State to : {State::Idle, State::Header, State::Failed}) {
            EXPECT_TRUE(isLegalMove(static_cast<State>(from), to));
        }
        EXPECT_FALSE(isLegalMove(State::Response, static_cast<State>(from)) &&
                     static_cast<State>(from) == State::Body);
    }
    EXPECT_TRUE(isLegalMove(State::Waiting, State::Body));
    EXPECT_FALSE(isLegalMove(State::Idle, State::Body));
    EXPECT_FALSE(isLegalMove(State::Challenge, State::Body));
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
