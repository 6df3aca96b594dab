// Servers that behave badly, or unusually, one case each.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "Client.h"
#include "RawServer.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "testing/Gzip.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

using Instructions = std::vector<int>;
using Clock = std::chrono::steady_clock;

const std::string kContinue = "HTTP/1.1 100 Continue\r\n\r\n";

TEST(RawServer, ThatNeverSays100GetsTheBodyAfterTheWaitAndIsNotWaitedForAgain) {
    RawServer server([](Connection& connection) {
        for (std::string head = connection.readHead(); !head.empty();
             head = connection.readHead()) {
            connection.answer(headerValue(head, "Expect") + "|" +
                              std::to_string(connection.readBody(head).size()));
        }
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_EXPECT_TIMEOUT_MS", "50"}}), 0);
    EXPECT_EQ(sendStream(headerText(server.url()), pattern(100000)).body, "100-continue|100000");
    EXPECT_EQ(sendStream(headerText(server.url()), pattern(100000)).body, "|100000");
}

TEST(RawServer, ThatSays417GetsTheRequestAgainWithoutExpect) {
    RawServer server([](Connection& connection) {
        for (std::string head = connection.readHead(); !head.empty();
             head = connection.readHead()) {
            if (!headerValue(head, "Expect").empty()) {
                connection.send(
                    "HTTP/1.1 417 Expectation Failed\r\nContent-Length: 0\r\nConnection: "
                    "close\r\n\r\n");
                return;
            }
            connection.answer(std::to_string(connection.readBody(head).size()));
        }
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(100000));
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_EQ(reply.instructions, (Instructions{16, 18}));
    EXPECT_EQ(reply.value("ResponseHeaderResponseCode"), "200");
    EXPECT_EQ(reply.body, "100000");
    EXPECT_EQ(server.connections(), 2);
}

TEST(RawServer, ThatSendsItsHeaderByteByByteIsUnderstood) {
    RawServer server([](Connection& connection) {
        connection.readBody(connection.readHead());
        for (const char c :
             std::string("HTTP/1.1 200 Fine\r\nX: 1\r\nContent-Length: 2\r\n\r\nab")) {
            connection.send(std::string(1, c));
        }
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), "x");
    EXPECT_EQ(reply.value("ResponseHeaderResponseText"), "Fine");
    EXPECT_EQ(reply.body, "ab");
}

TEST(RawServer, ThatAnswers413EarlyAndClosesIsHeard) {
    RawServer server([](Connection& connection) {
        connection.readHead();
        connection.send(kContinue);
        connection.readSome();
        connection.send("HTTP/1.1 413 Too Large\r\nContent-Length: 4\r\n\r\nbig\n");
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(5000000));
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_EQ(reply.instructions, (Instructions{16, 18}));
    EXPECT_EQ(reply.value("ResponseHeaderResponseCode"), "413");
    EXPECT_EQ(reply.body, "big\n");
}

TEST(RawServer, ThatAnswers200WithoutReadingTheBodyIsHeard) {
    RawServer server([](Connection& connection) {
        connection.readHead();
        connection.answer("done", "Connection: close\r\n");
        connection.awaitClose();
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(100000));
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_EQ(reply.body, "done");
}

TEST(RawServer, ThatCutsItsBodyShortIsAFailureAndNotAnEnd) {
    RawServer server([](Connection& connection) {
        connection.readBody(connection.readHead());
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), "x");
    EXPECT_EQ(reply.instructions, (Instructions{16, 18}));
    EXPECT_EQ(reply.body, "abc");
    EXPECT_EQ(reply.end, MV_STATUS_CONNECTION_LOST);
    EXPECT_EQ(reply.error, "cannot exchange with " + server.url() +
                               ": transfer closed with 7 bytes remaining to read (curl 18); the "
                               "server or something on the way closed it; try again");
}

TEST(RawServer, ThatCutsItsChunksShortIsAFailureAndNotAnEnd) {
    RawServer server([](Connection& connection) {
        connection.readBody(connection.readHead());
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabc");
    });
    ASSERT_EQ(start(), 0);
    EXPECT_EQ(sendStream(headerText(server.url()), "x").end, MV_STATUS_CONNECTION_LOST);
}

struct BadAnswer {
    const char* what;
    std::string answer;
    int code;
};

TEST(RawServer, AnswersThatAreNoneFailWithTheirStatusAndAText) {
    const std::vector<BadAnswer> rows{
        {"empty", "", MV_STATUS_CONNECTION_LOST},
        {"garbage", "what do you want?\r\n\r\n", MV_STATUS_PROTOCOL},
        {"a header line of 150 kB",
         "HTTP/1.1 200 OK\r\nX: " + std::string(150000, 'x') + "\r\n\r\n", MV_STATUS_PROTOCOL},
        {"headers of 400 kB",
         "HTTP/1.1 200 OK\r\n" +
             [] {
                 std::string lines;
                 for (int i = 0; i < 40; ++i) {
                     lines += "X" + std::to_string(i) + ": " + std::string(10000, 'x') + "\r\n";
                 }
                 return lines;
             }() +
             "\r\n",
         MV_STATUS_PROTOCOL},
    };
    for (const BadAnswer& row : rows) {
        SCOPED_TRACE(row.what);
        RawServer server([&](Connection& connection) {
            connection.readBody(connection.readHead());
            connection.send(row.answer);
        });
        ASSERT_EQ(start(), 0);
        for (const Reply& reply :
             {sendStream(headerText(server.url()), "x"), sendText(headerText(server.url()), "x")}) {
            EXPECT_EQ(reply.code, row.code);
            EXPECT_EQ(reply.error.find("cannot exchange with " + server.url() + ": "), 0U)
                << reply.error;
        }
        stop();
    }
}

TEST(RawServer, ThatSpeaksHttp10IsUnderstood) {
    RawServer server([](Connection& connection) {
        connection.readBody(connection.readHead());
        connection.send("HTTP/1.0 200 OK\r\n\r\nuntil the end");
    });
    ASSERT_EQ(start(), 0);
    EXPECT_EQ(sendStream(headerText(server.url()), pattern(100000)).body, "until the end");
}

TEST(RawServer, ThatNeverAnswersEndsWithTheIdleTime) {
    RawServer server([](Connection& connection) { connection.awaitClose(); });
    ASSERT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "200"}}), 0);
    const auto begin = Clock::now();
    const Reply reply = sendStream(headerText(server.url()), "x");
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(190));
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(reply.error, "cannot exchange with " + server.url() +
                               ": nothing moved for 200 ms; check the server, or raise "
                               "MV_SERVERPROXY_IDLE_TIMEOUT_MS");
}

// The connection stands still each time, for longer than a server may take.
TEST(IdleTime, DoesNotCountThePausesOfTheApplication) {
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1200)); };
    const std::string body = pattern(300000);
    RawServer server([](Connection& connection) {
        const std::string head = connection.readHead();
        connection.send(kContinue);
        connection.answer(connection.readBody(head));
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "1000"}}), 0);
    std::vector<char> block(MV_PROXY_BLOCK_SIZE);
    MvServerProxy_SendNoAck(headerText(server.url()).c_str());
    MvServerProxy_SendEOF();
    ASSERT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_SEND_BODY);
    ASSERT_EQ(MvServerProxy_SendNoAck(body.substr(0, 100000).c_str()), 1);
    ASSERT_EQ(MvServerProxy_SendNoAck(body.substr(100000, 100000).c_str()), 1);
    pause();
    ASSERT_EQ(MvServerProxy_SendNoAck(body.substr(200000).c_str()), 1);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    ASSERT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_RESPONSE_READY);
    pause();
    Reply reply;
    readResponse(reply);
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_TRUE(reply.body == body);
}

TEST(RawServer, ThatNeverReadsIsWaitedForInBoundedMemoryUntilTheIdleTime) {
    std::promise<void> over;
    RawServer server([&](Connection& connection) {
        connection.readHead();
        connection.send(kContinue);
        over.get_future().wait();
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "200"}}), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(30000000));
    over.set_value();
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(reply.instructions, Instructions{16});
}

TEST(RawServer, ThatDribblesEndsWithTheTotalTimeOnly) {
    RawServer server([](Connection& connection) {
        connection.readBody(connection.readHead());
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
        for (int i = 0; i < 200; ++i) {
            connection.send("x");
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "1000"},
                     {"MV_SERVERPROXY_TOTAL_TIMEOUT_MS", "1500"}}),
              0);
    const Reply reply = sendStream(headerText(server.url()), "x");
    EXPECT_EQ(reply.end, MV_STATUS_CANNOT_CONNECT);
    EXPECT_NE(reply.error.find("took longer than 1500 ms"), std::string::npos) << reply.error;
}

TEST(RawServer, ThatEchoesWhileItReadsDoesNotStandStill) {
    RawServer server([](Connection& connection) {
        connection.readHead();
        connection.send(kContinue + "HTTP/1.1 200 OK\r\n\r\n");
        for (std::string bytes = connection.readSome(); !bytes.empty();
             bytes = connection.readSome()) {
            connection.send(bytes);
            if (bytes.size() >= 5 && bytes.compare(bytes.size() - 5, 5, "0\r\n\r\n") == 0) {
                return;
            }
        }
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "5000"}}), 0);
    const std::size_t size = 60000000;
    const Reply reply = sendStream(headerText(server.url()), pattern(size));
    EXPECT_EQ(reply.code, 0) << reply.error;
    EXPECT_GT(reply.body.size(), size);  // the chunk sizes come along
}

TEST(RawServer, ThatEchoesMoreThanTheSpoolMayHoldEndsTheExchange) {
    RawServer server([](Connection& connection) {
        connection.readHead();
        connection.send(kContinue + "HTTP/1.1 200 OK\r\n\r\n");
        for (std::string bytes = connection.readSome(); !bytes.empty();
             bytes = connection.readSome()) {
            connection.send(bytes);
        }
    });
    ASSERT_EQ(start({{"MV_SERVERPROXY_SPOOL_LIMIT", "1000000"}}), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(60000000));
    EXPECT_EQ(reply.code, MV_STATUS_RUNTIME);
    EXPECT_NE(reply.error.find("larger than the limit of 1000000 bytes"), std::string::npos)
        << reply.error;
}

TEST(RawServer, ThatClosesKeptConnectionsCostsNothing) {
    RawServer server([](Connection& connection) {
        connection.answer(connection.readBody(connection.readHead()));
    });
    ASSERT_EQ(start(), 0);
    for (int i = 0; i < 64; ++i) {
        const Reply reply = sendStream(headerText(server.url()), std::to_string(i));
        ASSERT_EQ(reply.code, 0) << reply.error;
        ASSERT_EQ(reply.body, std::to_string(i));
    }
}

TEST(RawServer, ThatRedirectsIsNotFollowed) {
    RawServer second([](Connection& connection) { connection.answer("second"); });
    RawServer first([&](Connection& connection) {
        connection.readBody(connection.readHead());
        connection.send("HTTP/1.1 302 Found\r\nLocation: " + second.url() +
                        "\r\nContent-Length: 0\r\n\r\n");
    });
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(first.url()), "x");
    EXPECT_EQ(reply.value("ResponseHeaderResponseCode"), "302");
    EXPECT_EQ(reply.value("Location"), second.url());
    EXPECT_EQ(second.connections(), 0);
}

TEST(RawServer, GzipOfOneMemberIsHandedOverRawAndOfTwoAsOne) {
    const std::string big = pattern(300000);
    RawServer server([&](Connection& connection) {
        for (std::string head = connection.readHead(); !head.empty();
             head = connection.readHead()) {
            const std::string members = TestKit::gzip(big);
            connection.answer(
                connection.readBody(head) == "two" ? members + TestKit::gzip("tail") : members,
                "Content-Encoding: gzip\r\n");
        }
    });
    ASSERT_EQ(start(), 0);
    const Reply one = sendText(headerText(server.url()), "one");
    EXPECT_EQ(one.value("ResponseHeaderCompression"), "true");
    EXPECT_EQ(one.value("Content-Encoding"), "<none>");
    EXPECT_TRUE(one.body == TestKit::gzip(big));
    const Reply two = sendText(headerText(server.url()), "two");
    EXPECT_EQ(two.value("ResponseHeaderCompression"), "true");
    EXPECT_EQ(two.end, -1);
    EXPECT_FALSE(two.body == TestKit::gzip(big) + TestKit::gzip("tail"));
}

TEST(RawServer, WithAFullBacklogEndsWithTheConnectTimeout) {
    const FullBacklog backlog;
    ASSERT_EQ(start({{"MV_SERVERPROXY_CONNECT_TIMEOUT_MS", "300"}}), 0);
    const Reply reply = sendStream(headerText(backlog.url()), "x");
    EXPECT_EQ(reply.code, MV_STATUS_CANNOT_CONNECT);
    EXPECT_NE(reply.error.find("MV_SERVERPROXY_CONNECT_TIMEOUT_MS"), std::string::npos)
        << reply.error;
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
