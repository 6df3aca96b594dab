// Signatures, TLS and generated keys, checked with the openssl command.

#include "Base64.h"
#include "HubClient.h"
#include "HubProcess.h"
#include "PrivateFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

using namespace Morvenn::Net::MvServerProxy::Testing;
using HubTest::post;
using HubTest::Reply;
using Morvenn::Net::MvServerProxy::Hub::base64Decode;
using Morvenn::Net::MvServerProxy::Hub::base64Encode;
using Morvenn::Net::MvServerProxy::Hub::readWholeFile;

namespace {

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string number(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xff);
    }
    return bytes;
}

std::string signingRequest(const std::vector<std::string>& items) {
    std::string record = number(items.size());
    for (const std::string& item : items) {
        record += number(item.size()) + item;
    }
    return base64Encode(record);
}

// The signatures in the answer's record; fails the test when it is not built as it should be.
std::vector<std::string> signaturesIn(const std::string& answer) {
    const std::string record = base64Decode(answer).value_or("");
    const auto numberAt = [&record](std::size_t at) {
        std::size_t value = 0;
        for (std::size_t i = at; i < at + 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(record.at(i));
        }
        return value;
    };
    std::vector<std::string> signatures;
    std::size_t at = 4;
    for (std::size_t left = numberAt(0); left > 0; --left) {
        EXPECT_EQ('\1', record.at(at));
        const std::size_t length = numberAt(at + 1);
        signatures.push_back(record.substr(at + 5, length));
        at += 5 + length;
    }
    EXPECT_EQ(record.size(), at);
    return signatures;
}

bool verifies(const std::string& folder, const std::string& caFile, const std::string& signature,
              const std::string& item) {
    writeFile(folder + "/signature.der", signature);
    writeFile(folder + "/item", item);
    const std::string command = "openssl cms -verify -binary -inform DER -in " + folder +
                                "/signature.der -content " + folder + "/item -CAfile " + caFile +
                                " -out /dev/null 2>" + folder + "/openssl.txt";
    return std::system(command.c_str()) == 0;
}

}  // namespace

TEST(Signing, EveryItemGetsASignatureThatOpensslVerifies) {
    const HubProcess hub;
    const std::vector<std::string> items = {"ab", "xyz", std::string("\0\r\n\xff", 4),
                                            std::string(100000, 'x')};
    const Reply reply =
        post(hub.url() + "/request", signingRequest(items), {"generatePKCS7Signatures;"});
    ASSERT_EQ(200, reply.status);
    const auto signatures = signaturesIn(reply.body);
    ASSERT_EQ(items.size(), signatures.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_TRUE(verifies(hub.folder(), hub.caFile(), signatures[i], items[i]));
        EXPECT_FALSE(verifies(hub.folder(), hub.caFile(), signatures[i], items[i] + "!"));
    }
}

TEST(Signing, AnswerBelongsToASessionAndIsCompressedWhenAsked) {
    const HubProcess hub;
    const Reply reply = post(hub.url() + "/request", signingRequest({"a"}),
                             {"generatePKCS7Signatures;", "Accept-Encoding: gzip"});
    EXPECT_EQ(32u, reply.header("ResponseSessionID").size());
    EXPECT_EQ("gzip", reply.header("Content-Encoding"));
    EXPECT_EQ(1u, signaturesIn(HubTest::gunzipped(reply.body)).size());
}

TEST(Signing, BadRecordIsRefusedWithTheReason) {
    const HubProcess hub;
    const Reply reply = post(hub.url() + "/request", "%%%%", {"generatePKCS7Signatures;"});
    EXPECT_EQ(400, reply.status);
    EXPECT_EQ("not a signature request: the body is not base64\n", reply.body);
}

TEST(Signing, GivenKeyAndCertificateAreUsed) {
    const HubProcess maker;
    post(maker.url() + "/request", signingRequest({"a"}), {"generatePKCS7Signatures;"});
    const std::string state = maker.folder() + "/state";
    const HubProcess hub({"--key", state + "/hub.key", "--cert", state + "/hub.pem"});
    const Reply reply =
        post(hub.url() + "/request", signingRequest({"item"}), {"generatePKCS7Signatures;"});
    ASSERT_EQ(200, reply.status);
    EXPECT_TRUE(verifies(hub.folder(), maker.caFile(), signaturesIn(reply.body).at(0), "item"));
    EXPECT_NE(0, ::access(hub.caFile().c_str(), F_OK));
}

TEST(Keys, AreMadeAtFirstUseForTheirOwnerOnlyAndKept) {
    const HubProcess hub;
    EXPECT_NE(0, ::access(hub.caFile().c_str(), F_OK));
    post(hub.url() + "/request", signingRequest({"a"}), {"generatePKCS7Signatures;"});
    const std::string state = hub.folder() + "/state";
    struct stat status = {};
    ASSERT_EQ(0, ::stat((state + "/hub.key").c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 0777u);
    ASSERT_EQ(0, ::stat(state.c_str(), &status));
    EXPECT_EQ(0700u, status.st_mode & 0777u);
    const std::string ca = readWholeFile(hub.caFile());
    std::string output;
    EXPECT_EQ(0, runHub({"--state-dir", state, "--print-ca"}, output));
    EXPECT_EQ(state + "/ca.pem\n", output);
    EXPECT_EQ(ca, readWholeFile(hub.caFile()));
}

TEST(Keys, FolderThatOthersCanWriteIsRefused) {
    const HubProcess hub;
    const std::string folder = hub.folder() + "/open";
    ASSERT_EQ(0, ::mkdir(folder.c_str(), 0700));
    ASSERT_EQ(0, ::chmod(folder.c_str(), 0777));
    std::string output;
    EXPECT_EQ(1, runHub({"--state-dir", folder, "--print-ca"}, output));
    EXPECT_EQ("mvhub: cannot keep keys in " + folder +
                  ": others can write to it; choose another with --state-dir\n",
              output);
}

TEST(Tls, ClientThatTrustsTheGeneratedCaIsServedAndAnotherIsNot) {
    const HubProcess hub({"--tls"});
    EXPECT_EQ(0u, hub.url().rfind("https://127.0.0.1:", 0));
    HubTest::Call call;
    call.url = hub.url() + "/echo";
    call.body = std::string(100000, 'x');
    call.caFile = hub.caFile();
    const Reply trusted = exchange(call);
    EXPECT_EQ(0, trusted.curlResult);
    EXPECT_EQ(call.body, trusted.body);
    constexpr int kPeerFailedVerification = 60;
    call.caFile.clear();
    EXPECT_EQ(kPeerFailedVerification, exchange(call).curlResult);
}
