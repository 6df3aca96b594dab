// Forward proxies of squid over several exchanges: what is remembered, and where it goes.
#include <gtest/gtest.h>

#include "Client.h"
#include "Origin.h"
#include "Squid.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

using Lines = std::vector<std::string>;

constexpr char kBasicCredentials[] = "Basic%20Ym9iOnNlY3JldA==";  // bob:secret

std::string asked(const Squid& squid, const std::string& realm) {
    return "127.0.0.1 " + std::to_string(squid.port()) + " " + realm;
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Credentials, StaleDigestNoncesAreRenewedWithoutAQuestion) {
    const Squid squid(Squid::Offers::Digest, Squid::Door::Http, 3);
    Origin http(Origin::Scheme::Http);
    Origin https(Origin::Scheme::Https);
    const StartedLibrary library(
        {{"all_proxy", squid.url()}, {"MV_SERVERPROXY_CA_FILE", https.caFile()}});
    const RecordingProvider provider({kPassword});
    for (int round = 0; round < 5; ++round) {
        for (Origin* origin : {&http, &https}) {
            for (const std::size_t size : {200U, 500000U}) {
                const std::string body = pattern(size);
                const Outcome outcome =
                    exchange({origin->url("/echo"), body, Form::Stream, &provider});
                ASSERT_EQ(outcome.failure, "") << round << " " << size << " " << outcome.message;
                EXPECT_TRUE(outcome.body == body);
            }
        }
    }
    EXPECT_EQ(provider.scopes(), Lines{asked(squid, kDigestRealm)});
    EXPECT_EQ(http.arrived(10).size(), 10U);
    EXPECT_EQ(https.arrived(10).size(), 10U);
}

TEST(Credentials, OfOneProxyNeverReachAnotherNorTheTarget) {
    const Squid basic(Squid::Offers::Basic);
    const Squid digest(Squid::Offers::Digest);
    Origin http(Origin::Scheme::Http);
    Origin https(Origin::Scheme::Https);
    const StartedLibrary library({{"http_proxy", basic.url()},
                                  {"https_proxy", digest.url()},
                                  {"MV_SERVERPROXY_CA_FILE", https.caFile()}});
    const RecordingProvider provider({kPassword});
    const Request headers{
        http.url("/request"), "abc", Form::Stream, &provider, {{"Service-Name", "Headers"}}};
    const Outcome arrived = exchange(headers);
    EXPECT_EQ(arrived.code, "200") << arrived.message;
    EXPECT_FALSE(holds(arrived.body, "Proxy-Authorization")) << arrived.body;
    EXPECT_EQ(exchange({https.url("/echo"), "abc", Form::Stream, &provider}).body, "abc");
    EXPECT_EQ(provider.scopes(), (Lines{asked(basic, kBasicRealm), asked(digest, kDigestRealm)}));

    EXPECT_EQ(basic.seen(2), (Lines{"407 POST " + headers.url + " -",
                                    "200 POST " + headers.url + " " + kBasicCredentials}));
    for (const std::string& line : digest.seen(2)) {
        EXPECT_TRUE(holds(line, " CONNECT 127.0.0.1:")) << line;
        EXPECT_FALSE(holds(line, "Basic")) << line;
    }
}

TEST(Credentials, AreForgottenWhenTheLibraryIsStopped) {
    const Squid squid(Squid::Offers::Basic);
    const Origin origin(Origin::Scheme::Http);
    const RecordingProvider provider({kPassword});
    for (int start = 1; start <= 2; ++start) {
        const StartedLibrary library({{"http_proxy", squid.url()}});
        for (int request = 0; request < 3; ++request) {
            EXPECT_EQ(exchange({origin.url("/echo"), "abc", Form::Stream, &provider}).body, "abc");
        }
        EXPECT_EQ(provider.scopes(),
                  Lines(static_cast<std::size_t>(start), asked(squid, kBasicRealm)));
    }
}

TEST(Credentials, ChangeOfUserGoesWithAFreshQuestionOnly) {
    const Squid squid(Squid::Offers::Basic);
    const Origin origin(Origin::Scheme::Http);
    const StartedLibrary library({{"http_proxy", squid.url("bob:outdated@")}});
    const RecordingProvider provider({kPassword});
    EXPECT_EQ(exchange({origin.url("/echo"), "abc", Form::Stream, &provider}).body, "abc");
    EXPECT_EQ(exchange({origin.url("/echo"), "def", Form::Text, &provider}).body, "def");
    EXPECT_EQ(provider.scopes(), Lines{asked(squid, kBasicRealm)});
    const std::string line = " POST " + origin.url("/echo") + " ";
    const std::string outdated = "Basic%20Ym9iOm91dGRhdGVk";  // bob:outdated
    EXPECT_EQ(squid.seen(4),
              (Lines{"407" + line + "-", "407" + line + outdated, "200" + line + kBasicCredentials,
                     "200" + line + kBasicCredentials}));
}

TEST(Credentials, TargetsThatNeedNoProxyAreReachedWithoutIt) {
    const Squid squid(Squid::Offers::Basic);
    const Origin origin(Origin::Scheme::Http);
    const RecordingProvider provider({kPassword});
    const std::string url = origin.url("/echo");
    {
        const StartedLibrary library(
            {{"http_proxy", squid.url()}, {"no_proxy", "other.invalid,127.0.0.1"}});
        EXPECT_EQ(exchange({url, "direct", Form::Stream, &provider}).body, "direct");
        EXPECT_EQ(provider.scopes(), Lines{});
    }
    const StartedLibrary library({{"http_proxy", squid.url()}, {"no_proxy", "other.invalid"}});
    EXPECT_EQ(exchange({url, "proxied", Form::Stream, &provider}).body, "proxied");
    EXPECT_EQ(squid.seen(2),
              (Lines{"407 POST " + url + " -", "200 POST " + url + " " + kBasicCredentials}));
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Integration
