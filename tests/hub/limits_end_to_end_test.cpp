// What one client cannot do to the others: limits, slow clients, memory; and the command line.

#include "HubClient.h"
#include "HubProcess.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <memory>

using namespace Morvenn::Net::MvServerProxy::Testing;
using HubTest::get;
using HubTest::post;
using HubTest::RawConnection;
using HubTest::Reply;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kMemoryBoundKib = 1024 * 1024;  // the sanitizer's own memory included
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr long kMemoryBoundKib = 1024 * 1024;
#else
constexpr long kMemoryBoundKib = 32 * 1024;
#endif
#else
constexpr long kMemoryBoundKib = 32 * 1024;
#endif

constexpr char kHalfAHeader[] = "POST /echo HTTP/1.1\r\nHost: loc";

// The most memory the process has had at once.
long peakKib(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string word;
    long kib = 0;
    while (status >> word) {
        if (word == "VmHWM:") {
            status >> kib;
        }
    }
    return kib;
}

std::vector<std::unique_ptr<RawConnection>> slowClients(const HubProcess& hub, int count) {
    std::vector<std::unique_ptr<RawConnection>> clients;
    for (int i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<RawConnection>(hub.port()));
        clients.back()->send(kHalfAHeader);
    }
    return clients;
}

}  // namespace

TEST(SlowClients, SixtyThreeOfThemDoNotSlowTheLastConnectionDown) {
    const HubProcess hub;
    const auto clients = slowClients(hub, 63);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ("quick", post(hub.url() + "/echo", "quick").body);
    }
    clients.front()->send("alhost\r\nContent-Length: 4\r\n\r\nslow");
    EXPECT_NE(std::string::npos, clients.front()->readUntil("slow").find("\r\n\r\nslow"));
    EXPECT_LT(peakKib(hub.pid()), kMemoryBoundKib);
}

TEST(SlowClients, BeyondSixtyFourTheNextWaitsUntilOneLeaves) {
    const HubProcess hub;
    auto clients = slowClients(hub, 64);
    const RawConnection next(hub.port());
    next.send("POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 4\r\n\r\nnext");
    clients.pop_back();
    EXPECT_NE(std::string::npos, next.readUntil("next").find("\r\n\r\nnext"));
}

TEST(SlowClients, ConnectionWithoutAByteIsClosedAfterTheIdleTime) {
    const HubProcess hub({"--idle-timeout", "1"});
    const RawConnection client(hub.port());
    client.send(kHalfAHeader);
    int error = 0;
    client.readToEnd(error);
    EXPECT_EQ(0, error);
}

TEST(SlowClients, DoNotHoldTheStopUp) {
    HubProcess hub;
    const auto clients = slowClients(hub, 64);
    EXPECT_EQ(0, hub.stop());
}

TEST(Limits, LargeEchoNeedsLittleMemory) {
    const HubProcess hub({"--body-limit", "0"});
    HubTest::Call call;
    call.url = hub.url() + "/echo";
    call.body = std::string(100 * 1024 * 1024, 'x');
    EXPECT_TRUE(call.body == exchange(call).body);
    EXPECT_LT(peakKib(hub.pid()), kMemoryBoundKib);
}

TEST(Limits, BodyBeyondTheLimitIsRefusedAnnouncedOrNot) {
    const HubProcess hub({"--body-limit", "1000"});
    HubTest::Call call;
    call.url = hub.url() + "/echo";
    call.body = std::string(1000, 'x');
    EXPECT_EQ(200, exchange(call).status);
    call.body += 'x';
    const Reply reply = exchange(call);
    EXPECT_EQ(413, reply.status);
    EXPECT_EQ("the body exceeds 1000 bytes; start mvhub with a larger --body-limit\n", reply.body);
    call.chunked = true;
    EXPECT_EQ(413, exchange(call).status);
}

// What is sent without its length cannot be refused before it has come; it is not read to its end.
TEST(Limits, BodyWithoutLengthFarBeyondTheLimitEndsTheConnection) {
    const HubProcess hub({"--body-limit", "1000"});
    const RawConnection client(hub.port());
    client.send("POST /echo HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string chunk = "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    constexpr int kManyChunks = 16 * 1024;  // a gibibyte, more than all buffers on the way hold
    const auto sendMany = [&] {
        for (int i = 0; i < kManyChunks; ++i) {
            client.send(chunk);
        }
    };
    EXPECT_THROW(sendMany(), std::runtime_error);
    EXPECT_TRUE(
        hub.waitForLog("mvhub: POST /echo refused: the body exceeds 1000 bytes; start mvhub "
                       "with a larger --body-limit\n"));
    EXPECT_TRUE(hub.waitForLog(", broken off\n"));
    EXPECT_EQ("next", post(hub.url() + "/echo", "next").body);
}

TEST(Limits, HeaderBeyond64KibIsRefused) {
    const HubProcess hub;
    EXPECT_EQ(200, post(hub.url() + "/echo", "x", {"X: " + std::string(60000, 'x')}).status);
    const Reply reply = post(hub.url() + "/echo", "x", {"X: " + std::string(70000, 'x')});
    EXPECT_EQ(431, reply.status);
    EXPECT_EQ("request line and headers exceed 65536 bytes\n", reply.body);
}

TEST(Limits, DocumentBeyond16MibIsRefusedByAServiceThatNeedsItWhole) {
    const HubProcess hub;
    const Reply reply = post(hub.url() + "/request", std::string(16 * 1024 * 1024 + 1, ' '),
                             {"Service-Name: XmlReverse"});
    EXPECT_EQ(413, reply.status);
    EXPECT_EQ("this service takes documents of at most 16777216 bytes\n", reply.body);
}

TEST(Paths, UnknownPathIs404AndWrongMethod405) {
    const HubProcess hub;
    EXPECT_EQ(404, get(hub.url() + "/").status);
    EXPECT_EQ(404, get(hub.url() + "/echo/../../etc/passwd").status);
    EXPECT_EQ(405, get(hub.url() + "/echo").status);
    EXPECT_EQ(405, post(hub.url() + "/environments?select=All", "").status);
    EXPECT_EQ(405, get(hub.url() + "/shutdown").status);
}

TEST(Paths, ForeignHostAndWebPageAreRefused) {
    const HubProcess hub;
    EXPECT_EQ(421, post(hub.url() + "/shutdown", "", {"Host: example.com"}).status);
    EXPECT_EQ(403, post(hub.url() + "/shutdown", "", {"Origin: http://example.com"}).status);
    EXPECT_EQ(200, post(hub.url() + "/echo", "").status);
}

TEST(CommandLine, PortFileIsPrivateHoldsThePortAndGoesWithTheHub) {
    const std::string file = testing::TempDir() + "/mvhub-port-" + std::to_string(::getpid());
    HubProcess hub({"--port-file", file});
    // The ready line comes after the file.
    std::string port;
    std::getline(std::ifstream(file) >> std::ws, port);
    EXPECT_EQ(std::to_string(hub.port()), port);
    struct stat status = {};
    ASSERT_EQ(0, ::stat(file.c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 0777u);
    EXPECT_EQ(0, hub.stop());
    EXPECT_NE(0, ::stat(file.c_str(), &status));
}

TEST(CommandLine, PortInUseIsToldWithTheRemedy) {
    const HubProcess hub;
    std::string output;
    EXPECT_EQ(1, runHub({"--port", std::to_string(hub.port())}, output));
    EXPECT_EQ("mvhub: cannot listen on 127.0.0.1:" + std::to_string(hub.port()) +
                  ": Address already in use; choose another with --port, or --port 0 for a free "
                  "one\n",
              output);
}

TEST(CommandLine, SeveralAddressesAreListenedOnWithOnePort) {
    const HubProcess hub({"--listen", "127.0.0.1", "--listen", "127.0.0.2"});
    const std::string second = "http://127.0.0.2:" + std::to_string(hub.port());
    EXPECT_TRUE(hub.waitForLog("mvhub: also listening on " + second + "\n"));
    for (const std::string& url : {hub.url(), second}) {
        EXPECT_EQ("abc", post(url + "/echo", "abc", {"Host: localhost"}).body);
    }
}

TEST(CommandLine, EachAddressBeyondLoopbackCounts) {
    std::string output;
    EXPECT_EQ(2, runHub({"--port", "0", "--listen", "127.0.0.1", "--listen", "0.0.0.0"}, output));
    EXPECT_EQ(
        "--listen 0.0.0.0 is reachable from other machines and requires --tls\n"
        "Run with --help for more information.\n",
        output);
}

TEST(CommandLine, AddressBeyondLoopbackRequiresTls) {
    std::string output;
    EXPECT_EQ(2, runHub({"--port", "0", "--listen", "0.0.0.0"}, output));
    EXPECT_EQ(
        "--listen 0.0.0.0 is reachable from other machines and requires --tls\n"
        "Run with --help for more information.\n",
        output);
}

TEST(CommandLine, AddressBeyondLoopbackWarnsAndRefusesShutdown) {
    const HubProcess hub({"--listen", "0.0.0.0", "--tls"});
    EXPECT_TRUE(
        hub.waitForLog("mvhub: warning: every machine that reaches 0.0.0.0 can use this "
                       "hub; it is made for development, not for a network\n"));
    HubTest::Call call;
    call.url = "https://127.0.0.1:" + std::to_string(hub.port()) + "/shutdown";
    call.caFile = hub.caFile();
    EXPECT_EQ(403, exchange(call).status);
}

TEST(CommandLine, UsageErrorsEndWithStatus2) {
    std::string output;
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--unknown"},
                                               {"--port", "70000"},
                                               {"--port", "x"},
                                               {"--key", "k"},
                                               {"--idle-timeout", "0"},
                                               {"--print-ca", "--key", "k", "--cert", "c"}}) {
        SCOPED_TRACE(arguments.front());
        EXPECT_EQ(2, runHub(arguments, output));
        EXPECT_NE("", output);
    }
}

TEST(CommandLine, HelpAndVersionEndWithStatus0) {
    std::string output;
    EXPECT_EQ(0, runHub({"--help"}, output));
    for (const char* option : {"--port", "--environments", "--tls", "--faults", "--state-dir"}) {
        EXPECT_NE(std::string::npos, output.find(option)) << option;
    }
    EXPECT_EQ(0, runHub({"--version"}, output));
    EXPECT_EQ("mvhub " MVHUB_VERSION "\n", output);
}

TEST(CommandLine, KeyThatDoesNotFitItsCertificateKeepsTheHubFromStarting) {
    const HubProcess hub({"--tls"});
    const HubProcess other({"--tls"});
    std::string output;
    EXPECT_EQ(1, runHub({"--port", "0", "--key", hub.folder() + "/state/hub.key", "--cert",
                         other.folder() + "/state/hub.pem"},
                        output));
    EXPECT_EQ(0u, output.rfind("mvhub: cannot use the key with this certificate: ", 0)) << output;
}
