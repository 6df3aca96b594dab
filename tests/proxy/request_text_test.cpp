// The text that begins an exchange: what is taken, what is refused, and what becomes of it.
#include "RequestText.h"

#include <gtest/gtest.h>

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

constexpr std::size_t kLimit = 65536;

// The text of the refusal; "" when the text is taken.
std::string refusal(const std::string& text, Form form, std::size_t limit = kLimit) {
    try {
        readRequestText(text, form, limit);
        return "";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, MV_STATUS_PROTOCOL);
        return failure.text;
    }
}

const std::string kRefused = "the request was refused before anything was sent: ";

TEST(RequestText, EachFormGivesItsKind) {
    const auto kindOf = [](const char* text, Form form) {
        return std::string(nameOf(readRequestText(text, form, kLimit).kind));
    };
    EXPECT_EQ(kindOf("A=1\r\n\r\n", Form::Unacknowledged), "stream");
    EXPECT_EQ(kindOf("\r\n", Form::Unacknowledged), "stream");
    EXPECT_EQ(kindOf("A=1\r\n\r\nbody", Form::Acknowledged), "text");
    EXPECT_EQ(kindOf("getEnv:All\r\n\r\n", Form::Unacknowledged), "directory");
    EXPECT_EQ(kindOf("getEnv:All\r\n\r\n", Form::Acknowledged), "directory");
    EXPECT_EQ(kindOf("ShutdownServer\r\n\r\n", Form::Unacknowledged), "shutdown");
    EXPECT_EQ(kindOf("ShutdownServer\r\nSessionID=1\r\n\r\n", Form::Acknowledged), "shutdown");
}

TEST(RequestText, AValueIsEverythingAfterTheFirstEqualsSign) {
    const auto request = readRequestText("A=b=c=\r\nB= x \r\n\r\n", Form::Unacknowledged, kLimit);
    EXPECT_EQ(request.value("A"), "b=c=");
    EXPECT_EQ(request.value("b"), "x");
    EXPECT_EQ(request.value("C"), "");
}

TEST(RequestText, TheBodyMayHoldAnything) {
    const auto request = readRequestText("\r\nA=1\r\n\r\nx\n", Form::Acknowledged, kLimit);
    EXPECT_EQ(request.body, "A=1\r\n\r\nx\n");
}

TEST(RequestText, RefusalsNameTheCauseAndNeverAValue) {
    struct Row {
        std::string text;
        std::string why;
    };
    const std::vector<Row> rows{
        {"A=1\r\ncanary\r\n\r\n", "header line 2 has no \"=\""},
        {"A=1\r\nA=canary\r\n\r\n", "header \"A\" appears more than once"},
        {"A=1\r\na=canary\r\n\r\n", "header \"a\" appears more than once"},
        {"B=1\r\nA=canary\r\n\r\n",
         "header \"A\" is out of order, as if a value before it held a line break"},
        {"=canary\r\n\r\n",
         "header line 1 has a name that HTTP does not allow; use letters, digits and \"-\""},
        {"A B=canary\r\n\r\n",
         "header line 1 has a name that HTTP does not allow; use letters, digits and \"-\""},
        {"A=canary\nB=2\r\n\r\n",
         "the value of header \"A\" holds a line break or another control character; remove it "
         "before setting it"},
        {"A=canary\x01\r\n\r\n",
         "the value of header \"A\" holds a line break or another control character; remove it "
         "before setting it"},
        {"A=canary\x7F\r\n\r\n",
         "the value of header \"A\" holds a line break or another control character; remove it "
         "before setting it"},
        {"A=1\r\n", "its header text does not end with an empty line"},
        {"", "its header text does not end with an empty line"},
        {"A=1\r\n\r\ncanary", "text follows the empty line that ends its header"},
        {"ShutdownServer\r\n\r\ncanary", "text follows the empty line that ends its header"},
        {"getEnv:a\r\nb\r\n\r\n", "the selector of the directory request holds a line break"},
        {"getEnv:a\nb\r\n\r\n", "the selector of the directory request holds a control character"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(refusal(row.text, Form::Unacknowledged), kRefused + row.why);
    }
    EXPECT_EQ(refusal("B=1\r\nA=1\r\n\r\n", Form::Acknowledged), "");
}

TEST(RequestText, HeadersOfTheConnectionAreRefused) {
    for (const char* name :
         {"Host", "Content-Length", "Transfer-Encoding", "Connection", "Expect", "Upgrade", "TE",
          "Trailer", "Keep-Alive", "Proxy-Authorization", "proxy-connection", "HOST"}) {
        EXPECT_EQ(refusal(std::string(name) + "=canary\r\n\r\n", Form::Unacknowledged),
                  kRefused + "header \"" + name +
                      "\" belongs to the connection and cannot be set by a request");
    }
    EXPECT_EQ(refusal("Authorization=x\r\nCookie=y\r\n\r\n", Form::Unacknowledged), "");
}

TEST(RequestText, LengthAndNumberOfHeadersAreLimited) {
    const std::string fits = "A=" + std::string(1000, 'x') + "\r\n\r\n";
    EXPECT_EQ(refusal(fits, Form::Unacknowledged, 1004), "");
    EXPECT_EQ(refusal(fits, Form::Unacknowledged, 1001),
              kRefused +
                  "its header text is longer than 1001 bytes; shorten it or raise "
                  "MV_SERVERPROXY_HEADER_LIMIT");
    // The body of a text request does not count.
    EXPECT_EQ(refusal(fits + std::string(100000, 'y'), Form::Acknowledged, 1004), "");
    std::string many;
    for (int i = 100; i < 357; ++i) {
        many += "H" + std::to_string(i) + "=1\r\n";
    }
    EXPECT_EQ(refusal(many + "\r\n", Form::Unacknowledged),
              kRefused + "it has more than 256 headers");
    EXPECT_EQ(refusal(many.substr(8) + "\r\n", Form::Unacknowledged), "");
}

TEST(RequestText, TheUrlIsTheFirstOfThreeThatIsGiven) {
    struct Row {
        const char* headers;
        const char* url;
    };
    for (const Row& row : std::initializer_list<Row>{
             {"Base-Full-Url=f\r\nBase-Server-Url=b\r\nServer-Url=s\r\n", "f"},
             {"Base-Full-Url=\r\nBase-Server-Url=b\r\nServer-Url=s\r\n", "s"},
             {"Base-Full-Url=null\r\nBase-Server-Url=b\r\nServer-Url=null\r\n", "b"},
             {"Base-Server-Url=null\r\n", "hub/request"},
             {"", "hub/request"}}) {
        const auto request =
            readRequestText(std::string(row.headers) + "\r\n", Form::Unacknowledged, kLimit);
        EXPECT_EQ(requestUrl(request, "hub"), row.url) << row.headers;
    }
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
