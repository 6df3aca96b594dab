// nginx as origin: certificates, compression, refusals before the body, connections that end.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

#include "BodyStreams.h"
#include "Client.h"
#include "Nginx.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

using Lines = std::vector<std::string>;

class NginxOrigin : public ::testing::Test {
protected:
    static void SetUpTestSuite() { s_nginx = std::make_unique<Nginx>(); }
    static void TearDownTestSuite() { s_nginx.reset(); }

    static std::unique_ptr<Nginx> s_nginx;
};

std::unique_ptr<Nginx> NginxOrigin::s_nginx;

struct BadServer {
    const char* name;
    const char* why;
};
constexpr std::array<BadServer, 6> kBadServers{{
    {"unknownCa", "unable to get local issuer certificate"},
    {"wrongName", "no alternative certificate subject name matches target host name"},
    {"expired", "certificate has expired"},
    {"notYetValid", "certificate is not yet valid"},
    {"selfSigned", "self-signed certificate"},
    {"oldProtocol", "protocol"},
}};

TEST_F(NginxOrigin, BadCertificatesAreRefusedBeforeAnythingIsSent) {
    const StartedLibrary library({{"MV_SERVERPROXY_CA_FILE", s_nginx->caFile()}});
    const std::size_t before = s_nginx->tlsRequests(0).size();
    for (const BadServer& server : kBadServers) {
        const std::string url = s_nginx->tlsUrl(server.name, "/text");
        for (const Form form : {Form::Stream, Form::Text}) {
            SCOPED_TRACE(server.name);
            const Outcome outcome = exchange({url, pattern(70000), form});
            EXPECT_EQ(outcome.failure, "MSPConnectionException");
            EXPECT_EQ(outcome.message.rfind("cannot exchange with " + url + ": ", 0), 0U)
                << outcome.message;
            EXPECT_NE(outcome.message.find(server.why), std::string::npos) << outcome.message;
        }
    }
    const Outcome good = exchange({s_nginx->tlsUrl("good", "/text"), "abc", Form::Stream});
    EXPECT_EQ(good.failure, "") << good.message;
    EXPECT_TRUE(good.body == Nginx::text());
    // The good one is the only request that any of the servers on https has seen.
    const Lines seen = s_nginx->tlsRequests(before + 1);
    ASSERT_EQ(seen.size(), before + 1) << seen.front();
    EXPECT_EQ(seen.back().rfind(s_nginx->tlsUrl("good", "").substr(18) + " 200 ", 0), 0U)
        << seen.back();
}

TEST_F(NginxOrigin, ForwardProxiesWithBadCertificatesAreSentNothing) {
    const std::size_t before = s_nginx->tlsRequests(0).size();
    for (const BadServer& server : kBadServers) {
        const std::string authority = s_nginx->tlsUrl(server.name, "").substr(8);
        const StartedLibrary library({{"all_proxy", "https://bob:secret@" + authority},
                                      {"MV_SERVERPROXY_CA_FILE", s_nginx->caFile()}});
        for (const char* target : {"http://127.0.0.1:9/x", "https://127.0.0.1:9/x"}) {
            SCOPED_TRACE(std::string(server.name) + " " + target);
            const Outcome outcome = exchange({target, "abc", Form::Stream});
            EXPECT_EQ(outcome.failure, "MSPConnectionException");
            EXPECT_EQ(outcome.message.rfind(std::string("cannot exchange with ") + target +
                                                " through forward proxy " + authority + ": ",
                                            0),
                      0U)
                << outcome.message;
            EXPECT_NE(outcome.message.find(server.why), std::string::npos) << outcome.message;
        }
    }
    const StartedLibrary library({{"MV_SERVERPROXY_CA_FILE", s_nginx->caFile()}});
    EXPECT_EQ(exchange({s_nginx->tlsUrl("good", "/text"), "abc", Form::Stream}).code, "200");
    EXPECT_EQ(s_nginx->tlsRequests(before + 1).size(), before + 1);
}

TEST_F(NginxOrigin, TheSystemsAuthoritiesDoNotVouchForATestAuthority) {
    const StartedLibrary library({});
    const Outcome outcome = exchange({s_nginx->tlsUrl("good", "/text"), "abc", Form::Stream});
    EXPECT_EQ(outcome.failure, "MSPConnectionException");
}

TEST_F(NginxOrigin, ItsGzipArrivesInflatedWhenAskedFor) {
    const StartedLibrary library({{"MV_SERVERPROXY_CA_FILE", s_nginx->caFile()}});
    for (const std::string& url : {s_nginx->plainUrl("/text"), s_nginx->tlsUrl("good", "/text")}) {
        for (const std::string compressed : {"true", "false"}) {
            const Outcome outcome =
                exchange({url, "abc", Form::Stream, nullptr, {{"Use-Compression", compressed}}});
            EXPECT_EQ(outcome.failure, "") << outcome.message;
            EXPECT_TRUE(outcome.body == Nginx::text()) << outcome.body.size();
        }
    }
}

TEST_F(NginxOrigin, ItsGzipIsHandedOverAsItCame) {
    const StartedLibrary library({});
    const std::string header =
        "Server-Url=" + s_nginx->plainUrl("/text") + "\r\nUse-Compression=true\r\n\r\n";
    MvServerProxy_SendNoAck(header.c_str());
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    ASSERT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_SEND_BODY);
    ASSERT_EQ(MvServerProxy_SendNoAck("abc"), 1);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    ASSERT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_RESPONSE_READY);
    std::string response;
    int count = 0;
    while ((count = MvServerProxy_Receive(block.data())) > 0) {
        response.append(block.data(), static_cast<std::size_t>(count));
    }
    MvServerProxy_Complete();
    EXPECT_EQ(count, -1);
    const std::size_t begin = response.find("\n\n") + 2;
    EXPECT_NE(response.substr(0, begin).find("\nResponseHeaderCompression=true\n"),
              std::string::npos);
    EXPECT_EQ(response.substr(begin, 3), "\x1f\x8b\x08");  // how every gzip member begins
    EXPECT_LT(response.size(), Nginx::text().size() / 2);
}

TEST_F(NginxOrigin, ARefusalEndsTheBodyEarlyAndIsDelivered) {
    const StartedLibrary library({});
    constexpr std::uint64_t kSize = std::uint64_t{64} << 20U;
    GeneratedBody body(kSize);
    const Outcome outcome =
        exchange({s_nginx->plainUrl("/deny"), "", Form::Stream, nullptr, {}, &body});
    EXPECT_EQ(outcome.failure, "") << outcome.message;
    EXPECT_EQ(outcome.code, "413");
    EXPECT_EQ(outcome.body, Nginx::kDenied);
    EXPECT_LT(body.given(), kSize / 2);
}

TEST_F(NginxOrigin, ConnectionsThatServeThreeRequestsServeThemAll) {
    const StartedLibrary library({});
    const std::size_t before = s_nginx->plainRequests(0).size();
    for (int request = 0; request < 20; ++request) {
        const Form form = request % 2 == 0 ? Form::Stream : Form::Text;
        const Outcome outcome = exchange({s_nginx->plainUrl("/text"), "abc", form});
        ASSERT_EQ(outcome.failure, "") << request << " " << outcome.message;
    }
    Lines seen = s_nginx->plainRequests(before + 20);
    seen.erase(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(seen.size(), 20U);
    EXPECT_EQ(seen.front(), "200 1");
    for (const std::string& line : seen) {
        EXPECT_TRUE(line == "200 1" || line == "200 2" || line == "200 3") << line;
    }
}

TEST_F(NginxOrigin, ConnectionsClosedBehindAPauseAreReplaced) {
    const StartedLibrary library({});
    for (int request = 0; request < 5; ++request) {
        const Outcome outcome = exchange({s_nginx->plainUrl("/text"), "abc", Form::Stream});
        EXPECT_EQ(outcome.failure, "") << request << " " << outcome.message;
        std::this_thread::sleep_for(std::chrono::milliseconds(120));  // the application's pause
    }
}

TEST_F(NginxOrigin, AReloadInBetweenFailsNoExchange) {
    const StartedLibrary library({});
    s_nginx->reload();
    ASSERT_TRUE(waitUntil([&] {
        const Outcome outcome = exchange({s_nginx->plainUrl("/text"), "abc", Form::Stream});
        EXPECT_EQ(outcome.failure, "") << outcome.message;
        return s_nginx->hasReloaded();
    }));
    EXPECT_EQ(exchange({s_nginx->plainUrl("/text"), "abc", Form::Text}).code, "200");
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Integration
