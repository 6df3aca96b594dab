// A password that went through exchanges, good and bad: where it must not be found afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "Client.h"
#include "Failure.h"
#include "ScriptedProxy.h"
#include "Trace.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

const char* const kTarget = "http://target.invalid/x";

std::string fileText(const std::string& name) {
    std::ostringstream out;
    out << std::ifstream(name).rdbuf();
    return out.str();
}

class TraceTest : public ::testing::Test {
protected:
    TraceTest() {
        std::string name = "/tmp/mvproxy-trace-XXXXXX";
        ::close(::mkstemp(name.data()));
        ::unlink(name.c_str());
        m_file = name;
    }
    ~TraceTest() override { ::unlink(m_file.c_str()); }

    std::string m_file;
};

TEST_F(TraceTest, HasALineForEveryCallAndNoSecretInAny) {
    ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {basic("bob:canary2")}});
    ASSERT_EQ(start({{"MV_SERVERPROXY_TRACE", m_file}, {"http_proxy", proxy.url()}}), 0);
    const std::string header =
        "Authorization=canary\r\nCookie=canary\r\nEnv-Name=E\"1\r\nServer-Url=http://canary:canary@"
        "target.invalid/x?canary\r\nSessionID=canary\r\n\r\n";
    const Reply reply = sendStream(header, "canary body",
                                   {answerText("canary", "canary1"), answerText("bob", "canary2")});
    EXPECT_EQ(reply.code, 0) << reply.error;
    sendText(header, "canary");
    sendText("canary\r\n\r\n", "canary");
    sendText("A=canary\nB\r\n\r\n", "canary");
    sendStream("Env-Name=canary-free\r\nX=1\r\ncanary=2\r\n\r\n", "canary");
    stop();
    const std::string text = fileText(m_file);
    EXPECT_EQ(text.find("canary"), text.find("canary-free")) << text;
    EXPECT_EQ(text.find("canary", text.find("canary-free") + 1), std::string::npos) << text;
    EXPECT_EQ(text.find(basic("bob:canary2").substr(6)), std::string::npos);
    EXPECT_NE(text.find("\"call\":\"SendNoAck\",\"from\":\"Idle\",\"to\":\"Header\",\"result\":1"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\"header\":{\"shown\":{\"Env-Name\":\"E\\\"1\"},\"others\":4}"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\"result\":17"), std::string::npos);
    EXPECT_NE(text.find("\"url\":\"http://target.invalid:80/x\""), std::string::npos);
}

// One line for each function, in the order of the calls; of the text that is asked for, its size.
TEST_F(TraceTest, ShowsEachOfTheEightFunctions) {
    ASSERT_EQ(start({{"MV_SERVERPROXY_TRACE", m_file}}), 0);
    MvServerProxy_Send("canary");
    MvServerProxy_SendEOF();
    const std::string text = lastError();
    MvServerProxy_Complete();
    lastError();
    MvServerProxy_SendNoAck("canary");
    char block[MV_PROXY_BLOCK_SIZE] = {};
    MvServerProxy_Receive(block);
    stop();
    const std::vector<std::string> expected{
        "\"call\":\"Init\",\"from\":\"\",\"to\":\"\",\"result\":0",
        "\"call\":\"Send\",\"from\":\"Idle\",\"to\":\"Header\",\"result\":1",
        "\"call\":\"SendEOF\",\"from\":\"Header\",\"to\":\"Failed\",\"result\":-1002",
        "\"call\":\"GetLastError\",\"from\":\"Failed\",\"to\":\"Failed\",\"result\":0,\"us\":0,"
        "\"bytes\":" +
            std::to_string(text.size()) + "}",
        "\"call\":\"Complete\",\"from\":\"Failed\",\"to\":\"Idle\",\"result\":0",
        "\"call\":\"GetLastError\",\"from\":\"Idle\",\"to\":\"Idle\",\"result\":0,\"us\":0}",
        "\"call\":\"SendNoAck\",\"from\":\"Idle\",\"to\":\"Header\",\"result\":1",
        "\"call\":\"Receive\",\"from\":\"Header\",\"to\":\"Header\",\"result\":-1002",
        "\"call\":\"Term\",\"from\":\"\",\"to\":\"\",\"result\":0"};
    std::ifstream file(m_file);
    for (const std::string& call : expected) {
        std::string line;
        std::getline(file, line);
        EXPECT_NE(line.find(call), std::string::npos) << line << "\n  lacks " << call;
    }
    EXPECT_EQ(file.peek(), std::char_traits<char>::eof());
    EXPECT_EQ(fileText(m_file).find("canary"), std::string::npos);
}

TEST_F(TraceTest, IsReadableByItsOwnerOnlyAndFollowsNoLink) {
    ASSERT_EQ(start({{"MV_SERVERPROXY_TRACE", m_file}}), 0);
    struct stat status {};
    ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    stop();
    const std::string link = m_file + ".link";
    ASSERT_EQ(::symlink(m_file.c_str(), link.c_str()), 0);
    EXPECT_EQ(start({{"MV_SERVERPROXY_TRACE", link}}), MV_STATUS_RUNTIME);
    EXPECT_NE(lastError().find(link), std::string::npos) << lastError();
    ::unlink(link.c_str());
}

TEST(TraceLine, IsOneLineOfJsonWhateverComesIn) {
    TraceEntry entry;
    entry.call = "SendNoAck";
    entry.stateBefore = "Idle";
    entry.stateAfter = "Header";
    entry.result = 1;
    entry.microseconds = 12;
    entry.text = "Env-Name=\"\\\n\x01\xFF\r\nSecret=x\r\nno equals\r\n\r\nService-Name=body";
    entry.isHeader = true;
    entry.failure = "a\nb";
    EXPECT_EQ(traceLine(entry, 1700000000123456, 7),
              "{\"at\":\"2023-11-14T22:13:20.123456Z\",\"thread\":7,\"call\":\"SendNoAck\","
              "\"from\":\"Idle\",\"to\":\"Header\",\"result\":1,\"us\":12,\"bytes\":56,"
              "\"header\":{\"shown\":{\"Env-Name\":\"\\\"\\\\\"},\"others\":3},"
              "\"failure\":\"a\\u000ab\"}\n");
}

// How often a text stands in the writable memory of this process. The needle comes scrambled, and
// the place where it is put together is not counted, so the search does not find itself.
class MemorySearch {
public:
    explicit MemorySearch(const std::string& scrambled) : m_size(scrambled.size()) {
        for (std::size_t i = 0; i < m_size; ++i) {
            m_needle[i] = static_cast<char>(scrambled[i] ^ 1);
        }
    }
    ~MemorySearch() { ::explicit_bzero(m_needle, sizeof(m_needle)); }

    int count() {
        int found = 0;
        std::ifstream maps("/proc/self/maps");
        const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        std::string line;
        while (std::getline(maps, line)) {
            unsigned long from = 0;
            unsigned long to = 0;
            char mode[5] = {};
            if (std::sscanf(line.c_str(), "%lx-%lx %4s", &from, &to, mode) == 3 && mode[1] == 'w' &&
                to - from <= kLargestMapping) {
                found += countBetween(memory, from, to);
            }
        }
        ::close(memory);
        return found;
    }

private:
    static constexpr std::size_t kStep = 65536;
    // Larger ones are the shadow of a sanitizer: terabytes that hold no data of the program.
    static constexpr unsigned long kLargestMapping = 1UL << 30U;

    int countBetween(int memory, unsigned long from, unsigned long to) {
        int found = 0;
        for (; from < to; from += kStep) {
            const ssize_t size =
                ::pread(memory, m_block, kStep + m_size - 1, static_cast<off_t>(from));
            const char* end = m_block + std::max<ssize_t>(size, 0);
            for (const char* hit = m_block; (hit = next(hit, end)) != nullptr; ++hit) {
                const auto at = from + static_cast<unsigned long>(hit - m_block);
                const bool own =
                    isIn(at, m_block, sizeof(m_block)) || isIn(at, m_needle, sizeof(m_needle));
                found += own ? 0 : 1;
            }
            ::explicit_bzero(m_block, sizeof(m_block));
        }
        return found;
    }
    const char* next(const char* begin, const char* end) const {
        const auto size = static_cast<std::size_t>(end - begin);
        return static_cast<const char*>(::memmem(begin, size, m_needle, m_size));
    }
    static bool isIn(unsigned long address, const char* begin, std::size_t size) {
        const auto first = reinterpret_cast<unsigned long>(begin);
        return address >= first && address < first + size;
    }

    std::size_t m_size;
    char m_needle[64] = {};
    static char m_block[2 * kStep];
};
char MemorySearch::m_block[2 * kStep];

// Sends an answer that comes scrambled, and leaves no copy of it.
void sendAnswer(const char* scrambled) {
    char answer[128] = {};
    for (std::size_t i = 0; scrambled[i] != '\0'; ++i) {
        answer[i] = static_cast<char>(scrambled[i] ^ 1);
    }
    ASSERT_GT(MvServerProxy_SendNoAck(answer), 0);
    ::explicit_bzero(answer, sizeof(answer));
}

// Up to the credential challenge, and the answer to it. The server's notion of the password lives
// in a process of its own and leaves nothing here.
void answerChallenge(const char* scrambledAnswer) {
    char block[MV_PROXY_BLOCK_SIZE] = {};
    ASSERT_GT(MvServerProxy_SendNoAck(headerText(kTarget).c_str()), 0);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    ASSERT_EQ(MvServerProxy_Receive(block), MV_INSTRUCTION_CREDENTIAL_CHALLENGE);
    ASSERT_GT(MvServerProxy_Receive(block), 0);
    sendAnswer(scrambledAnswer);
}

void exchangeWithPassword(const char* scrambledAnswer) {
    char block[MV_PROXY_BLOCK_SIZE] = {};
    answerChallenge(scrambledAnswer);
    ASSERT_EQ(MvServerProxy_Receive(block), MV_INSTRUCTION_SEND_BODY);
    ASSERT_GT(MvServerProxy_SendNoAck("body"), 0);
    ASSERT_EQ(MvServerProxy_SendEOF(), 0);
    ASSERT_EQ(MvServerProxy_Receive(block), MV_INSTRUCTION_RESPONSE_READY);
    while (MvServerProxy_Receive(block) > 0) {
    }
    MvServerProxy_Complete();
}

// Lets requests with those credentials through ("Basic *": with any); its process ends with the
// pipe.
class ProxyProcess {
public:
    explicit ProxyProcess(const std::string& accepted = "Basic *") {
        int ready[2] = {};
        int over[2] = {};
        if (::pipe(ready) != 0 || ::pipe(over) != 0) {
            throw std::runtime_error("no pipe");
        }
        m_pid = ::fork();
        if (m_pid == 0) {
            ::close(over[1]);
            {
                ScriptedProxy proxy({"Proxy-Authenticate: Basic realm=\"corp\"\r\n", {accepted}});
                const int port = proxy.server().port();
                static_cast<void>(!::write(ready[1], &port, sizeof(port)));
                char end = 0;
                static_cast<void>(!::read(over[0], &end, 1));
            }
            ::_exit(0);
        }
        static_cast<void>(!::read(ready[0], &m_port, sizeof(m_port)));
        m_over = over[1];
        ::close(over[0]);
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~ProxyProcess() {
        ::close(m_over);
        ::waitpid(m_pid, nullptr, 0);
    }
    ProxyProcess(const ProxyProcess&) = delete;
    ProxyProcess& operator=(const ProxyProcess&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }

private:
    pid_t m_pid = -1;
    int m_over = -1;
    int m_port = 0;
};

// "user:bob", "password:xyzzy-plugh-frotz-0123", scrambled.
const char kAnswer[] =
    "trds;cnc\x0c\x0bq`rrvnse;yx{{x,qmtfi,gsnu{,1032\x0c\x0benl`ho;\x0c\x0b\x0c\x0b";
// The password, and base64 of "bob:xyzzy-plugh-frotz-", scrambled; what follows depends on the
// rest.
const char kPassword[] = "yx{{x,qmtfi,gsnu{,1032";
const char kBase64[] = "Xl8hNoi4doq4MYCreVenMV[xc2S7";

TEST(Memory, HoldsNoPasswordOnceTheLibraryIsStopped) {
    const ProxyProcess proxy;
    ASSERT_EQ(start({{"http_proxy", proxy.url()}}), 0);
    exchangeWithPassword(kAnswer);
    MemorySearch plain(kPassword);
    EXPECT_GT(plain.count(), 0) << "it is kept for later exchanges";
    stop();
    EXPECT_EQ(plain.count(), 0);
}

TEST(Memory, HoldsNoBase64OfThePasswordOnceTheLibraryIsStopped) {
    MemorySearch encoded(kBase64);
    const ProxyProcess proxy;
    ASSERT_EQ(start({{"http_proxy", proxy.url()}}), 0);
    exchangeWithPassword(kAnswer);
    stop();
    EXPECT_EQ(encoded.count(), 0);
}

TEST(Memory, HoldsNoPasswordOnceItIsRefused) {
    const ProxyProcess proxy("Basic nobody");
    ASSERT_EQ(start({{"http_proxy", proxy.url()}}), 0);
    answerChallenge(kAnswer);
    MemorySearch plain(kPassword);
    MemorySearch encoded(kBase64);
    EXPECT_GT(plain.count(), 0) << "it is there to be sent";
    char block[MV_PROXY_BLOCK_SIZE] = {};
    EXPECT_EQ(MvServerProxy_Receive(block), MV_INSTRUCTION_CREDENTIAL_CHALLENGE);
    EXPECT_EQ(plain.count(), 0);
    EXPECT_EQ(encoded.count(), 0);
    stop();
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
