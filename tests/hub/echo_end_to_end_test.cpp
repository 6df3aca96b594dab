// /echo, sessions and compression, spoken to the running program.

#include "HubClient.h"
#include "HubProcess.h"

#include <gmock/gmock.h>

#include <csignal>
#include <random>

using HubTest::gunzipped;
using HubTest::post;
using HubTest::Reply;
using Morvenn::Net::MvServerProxy::Testing::HubProcess;

namespace {

std::string randomBytes(std::size_t count) {
    std::mt19937 generator(20240607);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(generator());
    }
    return bytes;
}

}  // namespace

TEST(Echo, GivesTheBodyAndItsContentTypeBack) {
    const HubProcess hub;
    const Reply reply = post(hub.url() + "/echo", "hello", {"Content-Type: text/x-greeting"});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("hello", reply.body);
    EXPECT_EQ("text/x-greeting", reply.header("Content-Type"));
    EXPECT_EQ("5", reply.header("Content-Length"));
}

TEST(Echo, BodyOfAnySizeComesBackByteForByte) {
    const HubProcess hub;
    for (const std::size_t size :
         {0u, 1u, 16383u, 16384u, 16385u, 262143u, 262144u, 262145u, 3000000u}) {
        SCOPED_TRACE(size);
        HubTest::Call call;
        call.url = hub.url() + "/echo";
        call.body = randomBytes(size);
        EXPECT_EQ(call.body, exchange(call).body);
        call.chunked = true;
        EXPECT_EQ(call.body, exchange(call).body);
    }
}

TEST(Echo, CompressesWhenAskedByEitherHeader) {
    const HubProcess hub;
    const std::string body = randomBytes(300000);
    for (const std::string header :
         {"Accept-Encoding: gzip", "Accept-Encoding: deflate, GZIP;q=0.5",
          "Use-Compression: true"}) {
        SCOPED_TRACE(header);
        const Reply reply = post(hub.url() + "/echo", body, {header});
        EXPECT_EQ("gzip", reply.header("Content-Encoding"));
        EXPECT_EQ(body, gunzipped(reply.body));
    }
}

TEST(Echo, DoesNotCompressUnasked) {
    const HubProcess hub;
    for (const std::string header : {"X: y", "Accept-Encoding: deflate",
                                     "Accept-Encoding: gzip;q=0", "Use-Compression: false"}) {
        SCOPED_TRACE(header);
        const Reply reply = post(hub.url() + "/echo", "plain", {header});
        EXPECT_EQ("", reply.header("Content-Encoding"));
        EXPECT_EQ("plain", reply.body);
    }
}

TEST(Session, IdOfTheAnswerContinuesTheSession) {
    const HubProcess hub;
    const Reply first = post(hub.url() + "/echo", "1");
    const std::string id = first.header("ResponseSessionID");
    EXPECT_THAT(id, testing::MatchesRegex("[0-9a-f]{32}"));
    EXPECT_EQ("1", first.header("Session-Request-Count"));
    const Reply second = post(hub.url() + "/echo", "2", {"SessionID: " + id});
    EXPECT_EQ(id, second.header("ResponseSessionID"));
    EXPECT_EQ("2", second.header("Session-Request-Count"));
}

TEST(Shutdown, IsAnsweredAndThenTheHubEndsWithStatus0) {
    HubProcess hub;
    const Reply reply = post(hub.url() + "/shutdown", "");
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("mvhub is shutting down\n", reply.body);
    EXPECT_EQ(0, hub.wait());
}

TEST(Shutdown, SigtermAndSigintEndTheHubWithStatus0) {
    for (const int number : {SIGTERM, SIGINT}) {
        HubProcess hub;
        hub.signal(number);
        EXPECT_EQ(0, hub.wait());
    }
}
