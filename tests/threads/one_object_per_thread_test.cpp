// Sixteen threads, each with objects of its own, once the library has been started and a line has
// been logged. The thread sanitizer watches this in the preset "tsan".
#include <cstdlib>
#include <sstream>
#include <thread>
#include <vector>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/GTest.h"
#include "testing/Gzip.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Logger = Util::MvServerCppBindingLogger;

namespace {

constexpr int kThreads = 16;

// MV_THREADS_EXCHANGES in the environment gives the number of exchanges of each thread.
int exchanges() {
    const char* value = std::getenv("MV_THREADS_EXCHANGES");
    return value == nullptr ? 100 : std::atoi(value);
}

class Gateway : public CredentialProvider {
public:
    const Credential* getCredential(AuthScope* /*scope*/) const override { return &m_credential; }

private:
    Credential m_credential{"u", "p"};
};

std::string compressedRequest(const std::string& text) {
    FakeProxy proxy;
    proxy.answers({instruction(17), block("host:h\n"), instruction(16), instruction(18),
                   block("ResponseHeaderCompression=true\nResponseSessionID=s\n\n"),
                   block(gzip(text)), end()});
    MSPSession session;
    const Gateway gateway;
    std::istringstream body("the body");
    MvServerRequest request(&session);
    request.setHeader("Locale", "de");
    request.setBody(&body);
    request.setCredentialProvider(&gateway);
    return request.execute();
}

std::string failingRequest() {
    FakeProxy proxy;
    proxy.setLastError("broken");
    proxy.answers({gives(Function::SendEOF, -1001)});
    MSPSession session;
    MvServerRequest request(&session);
    request.setBody("text");
    try {
        return request.execute();
    } catch (const MSPConnectionException& e) {
        return e.getMessage();
    }
}

int lookup() {
    FakeProxy proxy;
    proxy.answers({block("Production\n7\n1\ntype=web\n\n"), end()});
    Admin::EnvironmentInfo info;
    return info.getEnvironments().at(0)->getIndex();
}

std::string signature() {
    FakeProxy proxy;
    proxy.answers({instruction(18), block("\nAAAAAQEAAAADQUJD"), end()});
    Crypto::PKCS7 pkcs7;
    return pkcs7.sign("item", 4U);
}

// How many of the exchanges did not come out as they should.
int wrongExchanges(int thread) {
    int wrong = 0;
    const std::string text(1000, static_cast<char>('a' + thread));
    for (int i = 0; i < exchanges(); ++i) {
        wrong += compressedRequest(text) == text ? 0 : 1;
        wrong += failingRequest() == "broken" ? 0 : 1;
        wrong += lookup() == 7 ? 0 : 1;
        wrong += signature() == "ABC" ? 0 : 1;
    }
    return wrong;
}

void runThreads() {
    std::vector<int> wrong(kThreads, -1);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(
            [i, &wrong] { wrong[static_cast<std::size_t>(i)] = wrongExchanges(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(kThreads, 0));
}

}  // namespace

TEST(OneObjectPerThread, SixteenThreadsExchangeAtOnceWithTheirFailuresLogged) {
    const PrivateTemp temp;
    setLogLevel("ERROR");
    {
        FakeProxy proxy;
        MvServerRequest::init();
    }
    Logger::error("warmed");
    runThreads();
    EXPECT_EQ(errorLines().size(), 1 + 2U * kThreads * static_cast<std::size_t>(exchanges()));
}

TEST(OneObjectPerThread, LinesOfSixteenThreadsStayWholeAtDebugLevel) {
    const PrivateTemp temp;
    setLogLevel("DEBUG");
    Logger::getInstance();
    {
        FakeProxy proxy;
        MvServerRequest::init();
    }
    runThreads();
    std::size_t broken = 0;
    std::size_t scopes = 0;
    for (const std::string& line : logLines()) {
        broken += line.find("MvServerRequest::~MvServerRequest()") != std::string::npos &&
                          line != " [DEBUG] : MvServerRequest::~MvServerRequest()"
                      ? 1
                      : 0;
        scopes += line == " [DEBUG] : MvServerRequest::~MvServerRequest()" ? 1 : 0;
    }
    EXPECT_EQ(broken, 0U);
    EXPECT_EQ(scopes, 3U * kThreads * static_cast<std::size_t>(exchanges()));
}
