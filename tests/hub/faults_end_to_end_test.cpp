// Faulty answers as they arrive at a client.

#include "HubClient.h"
#include "HubProcess.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

using namespace Morvenn::Net::MvServerProxy::Testing;
using HubTest::post;
using HubTest::Reply;

namespace {

class FaultyHub : public testing::Test {
protected:
    Reply echo(const std::string& fault, const std::string& body = "hello") const {
        return post(m_hub.url() + "/echo", body, {"Hub-Fault: " + fault});
    }

    const HubProcess m_hub{{"--faults"}};
};

}  // namespace

TEST_F(FaultyHub, AnswersWellWhenNothingIsAskedFor) {
    const Reply reply = post(m_hub.url() + "/echo", "hello");
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("hello", reply.body);
}

TEST_F(FaultyHub, DelayHoldsTheAnswerBack) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ("hello", echo("delay:150").body);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(150));
}

TEST_F(FaultyHub, DribbleSendsByteByByte) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ("hello", echo("dribble:20").body);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}

TEST_F(FaultyHub, CutEndsTheBodyBeforeItsLength) {
    for (const std::string kept : {"", "h", "hell"}) {
        const Reply reply = echo("cut:" + std::to_string(kept.size()));
        EXPECT_EQ(CURLE_PARTIAL_FILE, reply.curlResult);
        EXPECT_EQ("5", reply.header("Content-Length"));
        EXPECT_EQ(kept, reply.body);
    }
}

TEST_F(FaultyHub, ResetComesInsteadOfTheAnswerOrWithinItsBody) {
    const Reply instead = echo("reset");
    EXPECT_EQ(CURLE_RECV_ERROR, instead.curlResult);
    EXPECT_EQ("", instead.headerText);
    const Reply within = echo("reset:2");
    EXPECT_EQ(CURLE_RECV_ERROR, within.curlResult);
    EXPECT_EQ(200, within.status);
}

TEST_F(FaultyHub, CloseEndsTheConnectionWithoutAByte) {
    EXPECT_EQ(CURLE_GOT_NOTHING, echo("close").curlResult);
}

TEST_F(FaultyHub, EarlyAnswersWhileTheBodyIsStillMissing) {
    const HubTest::RawConnection client(m_hub.port());
    client.send(
        "POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000000\r\n"
        "Hub-Fault: early:503\r\n\r\n");
    EXPECT_EQ(0u, client.readUntil("\r\n\r\n").rfind("HTTP/1.1 503 ", 0));
}

TEST_F(FaultyHub, LengthIsDeclaredWrongAndTheConnectionEnds) {
    const HubTest::RawConnection client(m_hub.port());
    client.send(
        "POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 5\r\n"
        "Hub-Fault: length:-2\r\n\r\nhello");
    int error = 0;
    const std::string answer = client.readToEnd(error);
    EXPECT_EQ(0, error);
    EXPECT_NE(std::string::npos, answer.find("\r\nContent-Length: 3\r\n"));
    EXPECT_EQ(answer.find("Content-Length"), answer.rfind("Content-Length"));
    EXPECT_EQ("\r\n\r\nhello", answer.substr(answer.size() - 9));
    EXPECT_EQ(CURLE_PARTIAL_FILE, echo("length:10").curlResult);
}

TEST_F(FaultyHub, HeaderGrowsByAboutTheSizeAskedFor) {
    EXPECT_NEAR(50000.0, static_cast<double>(echo("headers:50000").headerText.size()), 1000.0);
    EXPECT_EQ(50000u, echo("headerline:50000").header("Hub-Padding").size());
}

TEST_F(FaultyHub, HeaderOfAMillionBytesLeavesWhole) {
    const HubTest::RawConnection client(m_hub.port());
    client.send(
        "POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n"
        "Connection: close\r\nHub-Fault: headerline:1000000\r\n\r\n");
    int error = 0;
    EXPECT_NE(std::string::npos, client.readToEnd(error).find(std::string(1000000, 'x') + "\r\n"));
    EXPECT_EQ(0, error);
}

TEST_F(FaultyHub, GzipIsSpoiledAsAskedFor) {
    const std::string body(1000, 'a');
    for (const std::string kind : {"garbage", "damaged", "cut", "empty"}) {
        SCOPED_TRACE(kind);
        const Reply reply = echo("gzip:" + kind, body);
        EXPECT_EQ("gzip", reply.header("Content-Encoding"));
        EXPECT_THROW(HubTest::gunzipped(reply.body), std::runtime_error);
    }
    EXPECT_EQ(body, HubTest::gunzipped(echo("gzip:members", body).body));
    const std::string trailing = echo("gzip:trailing", body).body;
    EXPECT_EQ("rubbish after the end", trailing.substr(trailing.size() - 21));
}

TEST_F(FaultyHub, RedirectNamesItsTarget) {
    const Reply reply = echo("redirect:http://127.0.0.1:1/x");
    EXPECT_EQ(302, reply.status);
    EXPECT_EQ("http://127.0.0.1:1/x", reply.header("Location"));
}

TEST_F(FaultyHub, QueryArgumentAsksAsTheHeaderDoes) {
    EXPECT_EQ(418, post(m_hub.url() + "/echo?fault=early:418", "x").status);
}

TEST_F(FaultyHub, FaultsOutlastTheIdleTime) {
    const HubProcess hub({"--faults", "--idle-timeout", "1"});
    EXPECT_EQ("hello", post(hub.url() + "/echo", "hello", {"Hub-Fault: delay:2100"}).body);
}

TEST_F(FaultyHub, DelayedAnswerDoesNotHoldTheStopUp) {
    HubProcess hub({"--faults"});
    const HubTest::RawConnection client(hub.port());
    client.send(
        "POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n"
        "Hub-Fault: delay:600000\r\nExpect: 100-continue\r\n\r\n");
    client.readUntil("100 Continue");
    EXPECT_EQ(0, hub.stop());
}

TEST(Faults, AreRefusedByAHubThatWasNotStartedForThem) {
    const HubProcess hub;
    const Reply reply = post(hub.url() + "/echo", "x", {"Hub-Fault: close"});
    EXPECT_EQ(403, reply.status);
    EXPECT_EQ("the request asks for a fault; start mvhub with --faults\n", reply.body);
}
