// Which requests send() refuses before it sends anything.
#include <map>

#include "RequestTest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

constexpr const char* kTargets[] = {"Env-Name", "Server-Url", "Base-Server-Url", "Base-Full-Url"};
constexpr char kMessage[] =
    "Not a signature generation request, and both the environment name and server URL supplied are "
    "empty.";

// What a header can be, as far as the check is concerned. A null pointer: not set.
constexpr const char* kTargetValues[] = {nullptr, "", "null"};
constexpr const char* kMarkerValues[] = {nullptr, "", "true", "null"};

class Validity : public RequestTest {
protected:
    using Headers = std::map<std::string, std::string>;

    // A request that passes the check ends at the proxy's refusal.
    void SetUp() override {
        RequestTest::SetUp();
        proxy.answers(gives(Function::Send, -1003).forever());
    }

    bool isRefused(const Headers& headers) {
        MvServerRequest request(&session);
        for (const auto& [name, value] : headers) {
            request.setHeader(name, value);
        }
        request.setBody("x");
        proxy.takeCalls();
        const Failure came = failureOf([&] { request.send(); });
        const bool refused = came == failure<MSPProtocolException>(0, kMessage);
        EXPECT_EQ(proxy.calls().count(Function::Send), refused ? 0U : 1U) << came;
        return refused;
    }
};

void put(std::map<std::string, std::string>& headers, const char* name, const char* value) {
    if (value != nullptr) {
        headers[name] = value;
    }
}

}  // namespace

TEST_F(Validity, RefusalNeedsEveryTargetMissingAndTheMarkerNull) {
    for (int combination = 0; combination < 81; ++combination) {
        std::map<std::string, std::string> targets;
        for (int i = 0, rest = combination; i < 4; ++i, rest /= 3) {
            put(targets, kTargets[i], kTargetValues[rest % 3]);
        }
        for (const char* marker : kMarkerValues) {
            auto headers = targets;
            put(headers, "generatePKCS7Signatures", marker);
            const bool isNull = marker != nullptr && std::string(marker) == "null";
            EXPECT_EQ(isRefused(headers), isNull) << combination;
        }
    }
}

TEST_F(Validity, AnyTargetWithAValueIsEnough) {
    for (const char* target : kTargets) {
        for (const char* value : {"Production", "Null", "null ", "NULL", " ", "0"}) {
            EXPECT_FALSE(isRefused({{target, value}, {"generatePKCS7Signatures", "null"}}))
                << target << ' ' << value;
        }
    }
}

// By design: an absent or empty marker lets a request pass that has no target at all.
TEST_F(Validity, OnlyTheLiteralNullIsRefused) {
    EXPECT_TRUE(isRefused({{"generatePKCS7Signatures", "null"}}));
    EXPECT_TRUE(isRefused({{"Env-Name", "null"}, {"generatePKCS7Signatures", "null"}}));
    EXPECT_FALSE(isRefused({{"Env-Name", "null"}}));
    EXPECT_FALSE(isRefused({}));
    for (const char* value : {"", "Null", "NULL", "null ", " null", "true", "false"}) {
        EXPECT_FALSE(isRefused({{"generatePKCS7Signatures", value}})) << value;
    }
}

TEST_F(Validity, RefusalIsNotLogged) {
    MvServerRequest request(&session);
    request.setHeader("generatePKCS7Signatures", "null");
    request.setBody("x");
    EXPECT_EQ(failureOf([&] { request.send(); }), failure<MSPProtocolException>(0, kMessage));
    EXPECT_EQ(lines(), Lines{});
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Validity, RequestWithoutABodyIsRefused) {
    {
        MvServerRequest request(&session);
        EXPECT_EQ(failureOf([&] { request.send(); }),
                  failure<MSPProtocolException>(0, "Unsupported request type found."));
        EXPECT_EQ(lines(), (Lines{" [ERROR] : Either the requestStream or the requestBody must be "
                                  "set on a MvServerRequest."}));
    }
    EXPECT_EQ(proxy.calls(), (Calls{complete()}));
}

TEST_F(Validity, MissingTargetIsFoundBeforeAMissingBody) {
    MvServerRequest request(&session);
    request.setHeader("generatePKCS7Signatures", "null");
    EXPECT_EQ(failureOf([&] { request.send(); }), failure<MSPProtocolException>(0, kMessage));
}

TEST(ValidityWithTheLogOff, RequestWithoutABodyIsRefusedAllTheSame) {
    const PrivateTemp temp;
    setLogLevel("OFF");
    Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger::getInstance();
    FakeProxy proxy;
    MSPSession session;
    MvServerRequest request(&session);
    EXPECT_EQ(failureOf([&] { request.send(); }),
              failure<MSPProtocolException>(0, "Unsupported request type found."));
    EXPECT_FALSE(fileExists(logPath()));
}
