// Forward proxies beyond Basic and Digest on plain http: NTLM, and proxies that speak https.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "Client.h"
#include "Origin.h"
#include "Squid.h"
#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

using Lines = std::vector<std::string>;

std::string textOf(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

// Bodies of all sizes to both kinds of target arrive, and the provider is asked once for each kind.
void exchangeThrough(const Squid& squid, const std::string& realm) {
    Origin http(Origin::Scheme::Http);
    Origin https(Origin::Scheme::Https);
    const TempFolder folder;
    folder.write("trusted.pem", textOf(https.caFile()) + squid.authorityText());
    for (Origin* origin : {&http, &https}) {
        const StartedLibrary library(
            {{"all_proxy", squid.url()}, {"MV_SERVERPROXY_CA_FILE", folder.file("trusted.pem")}});
        const RecordingProvider provider({kPassword});
        for (const Form form : {Form::Stream, Form::Text}) {
            for (const std::size_t size : {100U, 70000U, 3000000U}) {
                SCOPED_TRACE(origin->url("") + " " + std::to_string(size));
                const std::string body = pattern(size);
                const Outcome outcome = exchange({origin->url("/echo"), body, form, &provider});
                EXPECT_EQ(outcome.failure, "") << outcome.message;
                EXPECT_TRUE(outcome.body == body);
                EXPECT_EQ(origin->arrived(1),
                          Lines{"POST /echo 200, " + std::to_string(size) + " bytes in"});
            }
        }
        EXPECT_EQ(provider.scopes(),
                  Lines{"127.0.0.1 " + std::to_string(squid.port()) + " " + realm});
    }
}

TEST(ProxyKinds, NtlmIsAnsweredWhenTheProxyOffersNothingElse) {
    const Squid squid(Squid::Offers::Ntlm);
    exchangeThrough(squid, "");
    const Lines seen = squid.seen(1);
    EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](const std::string& line) {
        return line.find(" NTLM%20") != std::string::npos || line.substr(line.size() - 2) == " -";
    }));
}

TEST(ProxyKinds, AProxyThatIsReachedByHttpsTakesBasicAndDigest) {
    exchangeThrough(Squid(Squid::Offers::Basic, Squid::Door::Https), kBasicRealm);
    exchangeThrough(Squid(Squid::Offers::Digest, Squid::Door::Https), kDigestRealm);
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Integration
