// /environments, its file, and /request routing, spoken to the running program.

#include "HubClient.h"
#include "HubProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

using namespace Morvenn::Net::MvServerProxy::Testing;
using HubTest::get;
using HubTest::post;
using HubTest::Reply;

namespace {

constexpr char kTest[] = "Test\n1\n3\ntype=orders\nurl=http://a/orders\nversion=1.0\n\n";
constexpr char kLive[] = "Live\n2\n2\ntype=orders\nurl=http://b/orders\n\n";

// A directory file in a folder of its own.
class Directory : public testing::Test {
protected:
    Directory() {
        m_folder = testing::TempDir() + "/mvhub-directory-XXXXXX";
        EXPECT_NE(nullptr, ::mkdtemp(m_folder.data()));
        m_file = m_folder + "/environments.txt";
    }
    ~Directory() override { std::filesystem::remove_all(m_folder); }

    void write(const std::string& text) const { std::ofstream(m_file) << text; }

    std::string m_folder;
    std::string m_file;
};

std::string select(const HubProcess& hub, const std::string& selector) {
    return get(hub.url() + "/environments?select=" + selector).body;
}

}  // namespace

TEST_F(Directory, SelectsAllAVersionOrTheEnvironmentsOfAUrl) {
    write(std::string("# two\n") + kTest + kLive);
    const HubProcess hub({"--environments", m_file});
    EXPECT_EQ(std::string(kTest) + kLive, select(hub, "All"));
    EXPECT_EQ(kTest, select(hub, "1.0"));
    EXPECT_EQ(kLive, select(hub, "mapURLtoEnv%3A%3Ahttp%3A%2F%2Fb%2Forders%2F7"));
    EXPECT_EQ("", select(hub, "9.9"));
}

TEST_F(Directory, SelectorIsRequired) {
    const HubProcess hub;
    const Reply reply = get(hub.url() + "/environments");
    EXPECT_EQ(400, reply.status);
    EXPECT_EQ("say which environments: ?select=All, a version, or mapURLtoEnv:: and a URL\n",
              reply.body);
}

TEST_F(Directory, WithoutAFileTheHubDescribesItself) {
    const HubProcess hub;
    EXPECT_EQ(0u,
              select(hub, "All").rfind("mvhub\n1\n3\ntype=echo\nurl=" + hub.url() + "/echo\n", 0));
}

TEST_F(Directory, SighupReadsTheFileAgain) {
    write(kTest);
    const HubProcess hub({"--environments", m_file});
    write(kLive);
    EXPECT_EQ(kTest, select(hub, "All"));
    hub.signal(SIGHUP);
    ASSERT_TRUE(hub.waitForLog("mvhub: directory read again: 1 environments\n"));
    EXPECT_EQ(kLive, select(hub, "All"));
}

TEST_F(Directory, BadFileIsReportedWithItsLineAndThePreviousDirectoryStays) {
    write(kTest);
    const HubProcess hub({"--environments", m_file});
    write("Test\n1\nthree\n");
    hub.signal(SIGHUP);
    ASSERT_TRUE(hub.waitForLog("mvhub: " + m_file +
                               ":3: a number of properties expected, found \"three\"; the previous "
                               "directory stays\n"));
    EXPECT_EQ(kTest, select(hub, "All"));
}

TEST_F(Directory, BadOrMissingFileKeepsTheHubFromStarting) {
    write("Test\n");
    std::string output;
    EXPECT_EQ(1, runHub({"--port", "0", "--environments", m_file}, output));
    EXPECT_EQ("mvhub: " + m_file + ":2: the text ends before the index of \"Test\"\n", output);
    EXPECT_EQ(1, runHub({"--port", "0", "--environments", m_folder + "/none"}, output));
    EXPECT_EQ("mvhub: cannot read " + m_folder + "/none: No such file or directory\n", output);
}

TEST_F(Directory, ExampleFileIsGood) {
    const HubProcess hub({"--environments", MVHUB_EXAMPLE});
    EXPECT_EQ(0u, select(hub, "All").rfind("Development\n1\n", 0));
}

TEST_F(Directory, EnvironmentOfARequestHasToBeInTheFile) {
    write(kTest);
    const HubProcess hub({"--environments", m_file});
    const std::string url = hub.url() + "/request";
    const std::string digest = "Service-Name: Digest";
    EXPECT_EQ(200, post(url, "", {digest, "Env-Name: Test"}).status);
    EXPECT_EQ(200, post(url, "", {digest, "Env-Name: null"}).status);
    EXPECT_EQ(200, post(url, "", {digest, "Env-Name;"}).status);
    const Reply reply = post(url, "", {digest, "Env-Name: test"});
    EXPECT_EQ(404, reply.status);
    EXPECT_EQ("no environment \"test\" in the directory\n", reply.body);
}

TEST(Services, XmlIsSummarizedAndReversed) {
    const HubProcess hub;
    const std::string url = hub.url() + "/request";
    const Reply summary = post(url, "<a><b/></a>", {"Service-Name: XmlSummary"});
    EXPECT_EQ("application/xml", summary.header("Content-Type"));
    EXPECT_NE(std::string::npos, summary.body.find("<summary root=\"a\" elements=\"2\""));
    const Reply reversed = post(url, "<a><b/><c/></a>", {"Service-Name: XmlReverse"});
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a><c/><b/></a>", reversed.body);
    EXPECT_EQ(400, post(url, "no xml", {"Service-Name: XmlReverse"}).status);
}

TEST(Services, DigestGivesSizeAndSha256) {
    const HubProcess hub;
    EXPECT_EQ("3 ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad\n",
              post(hub.url() + "/request", "abc", {"Service-Name: Digest"}).body);
}

TEST(Services, PatternGivesAsManyBytesAsAsked) {
    const HubProcess hub;
    const std::string url = hub.url() + "/request";
    EXPECT_EQ(5000000u, post(url, "5000000", {"Service-Name: Pattern"}).body.size());
    EXPECT_EQ(400, post(url, "many", {"Service-Name: Pattern"}).status);
}

TEST(Services, HeadersGivesWhatArrived) {
    const HubProcess hub;
    const std::string text =
        post(hub.url() + "/request", "", {"Service-Name: Headers", "Locale: de", "Empty;"}).body;
    EXPECT_EQ(0u, text.rfind("POST /request\n", 0));
    EXPECT_NE(std::string::npos, text.find("\nLocale: de\n"));
    EXPECT_NE(std::string::npos, text.find("\nEmpty: \n"));
}

TEST(Services, UnknownServiceIs404AndNoServiceIs400WithTheKnownNames) {
    const HubProcess hub;
    const std::string known = "XmlSummary, XmlReverse, Digest, Pattern, Headers\n";
    const Reply unknown = post(hub.url() + "/request", "", {"Service-Name: Orders"});
    EXPECT_EQ(404, unknown.status);
    EXPECT_EQ("no service \"Orders\"; the hub knows " + known, unknown.body);
    const Reply none = post(hub.url() + "/request", "");
    EXPECT_EQ(400, none.status);
    EXPECT_EQ("the request names no service; set Service-Name to one of " + known, none.body);
}
