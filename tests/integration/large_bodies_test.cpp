// Bodies far larger than memory may grow, in both directions.
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <memory>
#include <sstream>

#include "BodyStreams.h"
#include "Client.h"
#include "Origin.h"
#include "Squid.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t kSize = std::uint64_t{64} << 20U;
constexpr long kMostKiB = 0;  // instrumented programs keep freed memory: only the bytes are checked
#else
constexpr std::uint64_t kSize = std::uint64_t{256} << 20U;
constexpr long kMostKiB = 32 * 1024;
#endif

// The largest resident size of this process so far, in KiB.
long peakKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            long peak = 0;
            status >> peak;
            return peak;
        }
    }
    return -1;
}

void expectSmallProcess() {
    if (kMostKiB > 0) {
        EXPECT_GT(peakKiB(), 0);
        EXPECT_LT(peakKiB(), kMostKiB);
    }
}

void expectUpload(Origin& origin) {
    GeneratedBody body(kSize);
    const Outcome outcome = exchange(
        {origin.url("/request"), "", Form::Stream, nullptr, {{"Service-Name", "Digest"}}, &body});
    EXPECT_EQ(outcome.failure, "") << outcome.message;
    EXPECT_EQ(outcome.body, GeneratedBody::digest(kSize));
}

void expectDownload(Origin& origin) {
    Client::MSPSession session;
    Client::MvServerRequest request(&session);
    request.setHeader(Client::HeaderKeys::kServerUrl, origin.url("/request"));
    request.setHeader(Client::HeaderKeys::kServiceName, "Pattern");
    std::istringstream size(std::to_string(kSize));
    request.setBody(&size);
    const std::unique_ptr<std::istream> response(request.send());
    std::uint64_t count = 0;
    std::array<char, 16384> block{};
    while (response->read(block.data(), block.size()).gcount() > 0) {
        count += static_cast<std::uint64_t>(response->gcount());
    }
    EXPECT_FALSE(response->bad());
    EXPECT_EQ(count, kSize);
}

TEST(LargeBodies, GoBothWaysInConstantMemory) {
    Origin origin(Origin::Scheme::Http);
    const StartedLibrary library({});
    expectUpload(origin);
    expectDownload(origin);
    expectSmallProcess();
}

TEST(LargeBodies, GoBothWaysOverTlsInConstantMemory) {
    Origin origin(Origin::Scheme::Https);
    const StartedLibrary library({{"MV_SERVERPROXY_CA_FILE", origin.caFile()}});
    expectUpload(origin);
    expectDownload(origin);
    expectSmallProcess();
}

TEST(LargeBodies, GoBothWaysThroughAForwardProxyInConstantMemory) {
    const Squid squid(Squid::Offers::Basic);
    Origin origin(Origin::Scheme::Http);
    const StartedLibrary library({{"http_proxy", squid.url("bob:secret@")}});
    expectUpload(origin);
    expectDownload(origin);
    expectSmallProcess();
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Integration
