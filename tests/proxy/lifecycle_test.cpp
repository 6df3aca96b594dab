// Starting, stopping, forking, threads: the process around the exchanges.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include "Client.h"
#include "ForkMark.h"
#include "RawServer.h"
#include "ScriptedProxy.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

void echo(Connection& connection) {
    for (std::string head = connection.readHead(); !head.empty(); head = connection.readHead()) {
        connection.answer(connection.readBody(head));
    }
}

std::ptrdiff_t countThreads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

// How the child that ran `work` ended.
template <typename Work>
int inChild(const Work& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Lifecycle, NothingWorksBeforeInitAndTheTextSaysWhatToDo) {
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    EXPECT_EQ(MvServerProxy_Send("\r\n"), MV_STATUS_RUNTIME);
    EXPECT_EQ(MvServerProxy_SendNoAck("\r\n"), MV_STATUS_RUNTIME);
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_RUNTIME);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_STATUS_RUNTIME);
    EXPECT_EQ(lastError(), "the proxy library is not started; call MvServerProxy_Init first");
    EXPECT_EQ(MvServerProxy_Complete(), 0);
    EXPECT_EQ(MvServerProxy_Term(), 0);
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(lastError(), "");
}

TEST(Lifecycle, InitAndTermComeInAnyNumberAndOrder) {
    RawServer server(echo);
    EXPECT_EQ(MvServerProxy_Term(), 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(start(), 0);
        EXPECT_EQ(MvServerProxy_Init(nullptr, nullptr), 0);
        EXPECT_EQ(sendStream(headerText(server.url()), "x").body, "x");
        EXPECT_EQ(MvServerProxy_Term(), 0);
        EXPECT_EQ(MvServerProxy_Term(), 0);
        EXPECT_EQ(sendStream(headerText(server.url()), "x").code, MV_STATUS_RUNTIME);
    }
}

TEST(Lifecycle, ASecondInitLeavesARunningExchangeAlone) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    ASSERT_GT(MvServerProxy_Send((headerText(server.url()) + "abc").c_str()), 0);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    EXPECT_EQ(MvServerProxy_Init(nullptr, nullptr), 0);
    Reply reply;
    readResponse(reply);
    EXPECT_EQ(reply.body, "abc");
}

TEST(Lifecycle, ABadSettingIsRefusedByNameAndCanBeCorrected) {
    EXPECT_EQ(start({{"MV_SERVERPROXY_IDLE_TIMEOUT_MS", "soon"}}), MV_STATUS_RUNTIME);
    EXPECT_EQ(
        lastError(),
        "MV_SERVERPROXY_IDLE_TIMEOUT_MS is \"soon\"; give a whole number of milliseconds from "
        "1 to 2147483647");
    EXPECT_EQ(start(), 0);
}

TEST(Lifecycle, CompleteIsHarmlessAtAnyMoment) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    const std::string header = headerText(server.url());
    const std::string body = pattern(100000);
    for (int calls = 0; calls < 6; ++calls) {
        SCOPED_TRACE(calls);
        const std::array<std::function<int()>, 6> steps{
            [&] { return MvServerProxy_SendNoAck(header.c_str()); },
            [] { return MvServerProxy_SendEOF(); },
            [&] { return MvServerProxy_Receive(block.data()); },
            [&] { return MvServerProxy_SendNoAck(body.c_str()); },
            [] { return MvServerProxy_SendEOF(); },
            [&] { return MvServerProxy_Receive(block.data()); }};
        for (int i = 0; i < calls; ++i) {
            EXPECT_GE(steps.at(static_cast<std::size_t>(i))(), 0);
        }
        EXPECT_EQ(MvServerProxy_Complete(), 0);
        EXPECT_EQ(MvServerProxy_Complete(), 0);
        EXPECT_EQ(sendStream(header, "x").body, "x");
    }
}

TEST(Lifecycle, CallsOutOfOrderAreRefusedAndChangeNothing) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_PROTOCOL);
    EXPECT_EQ(
        lastError(),
        "MvServerProxy_SendEOF was called out of order (state Idle); begin with a header text");
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_STATUS_PROTOCOL);
    ASSERT_GT(MvServerProxy_SendNoAck(headerText(server.url()).c_str()), 0);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_STATUS_PROTOCOL);
    EXPECT_EQ(MvServerProxy_SendEOF(), 0);
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_PROTOCOL);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_SEND_BODY);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_STATUS_PROTOCOL);
    EXPECT_EQ(MvServerProxy_SendNoAck(nullptr), MV_STATUS_PROTOCOL);
    EXPECT_EQ(MvServerProxy_SendEOF(), 0);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_INSTRUCTION_RESPONSE_READY);
}

TEST(Lifecycle, AFailureIsRepeatedUntilTheNextExchange) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    ASSERT_GT(MvServerProxy_SendNoAck("no equals sign\r\n\r\n"), 0);
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_PROTOCOL);
    const std::string text = lastError();
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_PROTOCOL);
    EXPECT_EQ(MvServerProxy_Receive(block.data()), MV_STATUS_PROTOCOL);
    EXPECT_EQ(lastError(), text);
    EXPECT_EQ(sendStream(headerText(server.url()), "x").body, "x");
    EXPECT_EQ(lastError(), "");
}

TEST(Fork, TheChildIsRefusedAndTheParentGoesOn) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    const std::string text = headerText(server.url()) + "abc";
    ASSERT_GT(MvServerProxy_Send(text.c_str()), 0);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    EXPECT_EQ(inChild([&] {
                  const bool refused = MvServerProxy_Send(text.c_str()) == MV_STATUS_RUNTIME &&
                                       MvServerProxy_Init(nullptr, nullptr) == MV_STATUS_RUNTIME &&
                                       MvServerProxy_Complete() == 0 && MvServerProxy_Term() == 0;
                  return refused && lastError().find("forked") != std::string::npos ? 0 : 1;
              }),
              0);
    Reply reply;
    readResponse(reply);
    EXPECT_EQ(reply.body, "abc");
    EXPECT_EQ(sendStream(headerText(server.url()), "x").body, "x");
    EXPECT_EQ(server.connections(), 1);
}

TEST(Fork, AChildOfAProcessThatNeverStartedTheLibraryMayStartIt) {
    EXPECT_EQ(inChild([] { return start(); }), 0);
}

TEST(Fork, AChildMadeWithoutTheCLibraryIsToldFromItsParent) {
    ForkMark mark;
    EXPECT_FALSE(mark.isChild());
    EXPECT_EQ(inChild([&] { return mark.isChild() ? 1 : 0; }), 0) << "nothing was marked";
    mark.set();
    EXPECT_FALSE(mark.isChild());
    const auto child = static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (child == 0) {
        ::_exit(mark.isChild() ? 7 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 7);
    EXPECT_FALSE(mark.isChild());
}

TEST(Threads, EachHasItsOwnExchange) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                const std::string body = std::to_string(t) + ":" + std::to_string(i);
                wrong += sendStream(headerText(server.url()), body).body != body ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(Threads, TermEndsTheExchangesOfTheOthersWithAText) {
    RawServer server(echo);
    ASSERT_EQ(start(), 0);
    ASSERT_GT(MvServerProxy_Send((headerText(server.url()) + "abc").c_str()), 0);
    std::thread(stop).join();
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_RUNTIME);
    EXPECT_NE(lastError(), "");
    ASSERT_EQ(start(), 0);
    EXPECT_EQ(sendStream(headerText(server.url()), "x").body, "x");
}

TEST(Threads, NoneIsStartedNotEvenForHostNames) {
    ASSERT_EQ(start(), 0);
    const auto before = countThreads();
    MvServerProxy_Send((headerText("http://no-such-host.invalid/") + "x").c_str());
    EXPECT_EQ(MvServerProxy_SendEOF(), MV_STATUS_CANNOT_CONNECT);
    EXPECT_EQ(countThreads(), before);
    EXPECT_NE(lastError().find("the host name \"no-such-host.invalid\" cannot be resolved"),
              std::string::npos)
        << lastError();
}

TEST(Signals, APeerThatGoesAwayRaisesNone) {
    RawServer server([&](Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 100 Continue\r\n\r\n");
        connection.readSome();
        connection.reset();
    });
    ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    ASSERT_EQ(start(), 0);
    const Reply reply = sendStream(headerText(server.url()), pattern(20000000));
    EXPECT_EQ(reply.code, MV_STATUS_CONNECTION_LOST);
    EXPECT_NE(reply.error, "");
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
