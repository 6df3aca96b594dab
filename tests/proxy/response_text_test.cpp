// What HTTP says before the body, and the header block made of it.
#include "ResponseText.h"

#include <gtest/gtest.h>

#include "DirectoryBlock.h"
#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

ResponseHead head(std::initializer_list<std::string> lines) {
    ResponseHead result;
    for (const std::string& line : lines) {
        result.line(line + "\r\n", false);
    }
    return result;
}

TEST(ResponseText, SynthesisedLinesComeLastAndCannotBeWrittenByTheServer) {
    EXPECT_EQ(responseText(head({"HTTP/1.1 404 Not Found", "ResponseHeaderResponseCode: 200",
                                 "responseheadercompression: true", "X-A: 1=2",
                                 "Content-Type: text/html; charset=utf-8", ""})),
              "X-A=1=2\n"
              "ResponseHeaderContentType=text/html\n"
              "ResponseHeaderResponseCode=404\n"
              "ResponseHeaderResponseText=Not Found\n\n");
}

TEST(ResponseText, ASessionIdKeepsItsEqualsSigns) {
    EXPECT_EQ(responseText(head({"HTTP/1.1 200 OK", "responsesessionid: a=b%c", ""})),
              "ResponseSessionID=a%3Db%25c\n"
              "ResponseHeaderResponseCode=200\n"
              "ResponseHeaderResponseText=OK\n\n");
}

TEST(ResponseText, GzipIsAnnouncedAndOtherEncodingsAreShown) {
    for (const char* encoding : {"gzip", "x-gzip", "GZIP"}) {
        const std::string text = responseText(
            head({"HTTP/1.1 200 OK", std::string("Content-Encoding: ") + encoding, ""}));
        EXPECT_NE(text.find("ResponseHeaderCompression=true\n"), std::string::npos);
        EXPECT_EQ(text.find("Content-Encoding"), std::string::npos);
    }
    EXPECT_EQ(responseText(head({"HTTP/1.1 200 OK", "Content-Encoding: br", ""}))
                  .find("Content-Encoding=br\n"),
              0U);
}

TEST(ResponseText, ValuesHoldNoLineBreakAndNoZeroByte) {
    const std::string text = responseText(
        head({"HTTP/1.1 200 a\rb", std::string("X: 1\0002\r3\n4", 10), "Y: 1", " folded", ""}));
    EXPECT_EQ(text,
              "X=1 2 3 4\n"
              "Y=1 folded\n"
              "ResponseHeaderResponseCode=200\n"
              "ResponseHeaderResponseText=a b\n\n");
}

TEST(ResponseText, ANameThatIsNoTokenIsLeftOut) {
    EXPECT_EQ(responseText(head({"HTTP/1.1 200", "A=B: x", "no colon", ""})),
              "ResponseHeaderResponseCode=200\n"
              "ResponseHeaderResponseText=\n\n");
}

TEST(ResponseHead, InterimAndTunnelBlocksAreNotTheAnswer) {
    ResponseHead result;
    result.line("HTTP/1.1 200 Connection established\r\n", true);
    result.line("\r\n", true);
    EXPECT_FALSE(result.complete());
    result.line("HTTP/1.1 100 Continue\r\n", false);
    result.line("\r\n", false);
    EXPECT_FALSE(result.complete());
    EXPECT_TRUE(result.continued());
    result.line("HTTP/1.1 201 Created\r\n", false);
    result.line("A: 1\r\n", false);
    EXPECT_FALSE(result.complete());
    result.line("\r\n", false);
    EXPECT_TRUE(result.complete());
    EXPECT_EQ(result.status(), 201);
    result.line("Trailer: late\r\n", false);
    EXPECT_EQ(result.value("Trailer"), "");
}

TEST(ResponseHead, AllBlocksTogetherAreLimited) {
    ResponseHead result;
    result.line("HTTP/1.1 200 OK\r\n", false);
    const std::string line = "X: " + std::string(9995, 'x') + "\r\n";
    int taken = 0;
    try {
        for (; taken < 1000; ++taken) {
            result.line(line, false);
        }
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, MV_STATUS_PROTOCOL);
    }
    EXPECT_EQ(taken, 30);
}

TEST(DirectoryBlock, EndsAtALineEndElseAtACharacter) {
    struct Row {
        std::string bytes;
        std::size_t most;
        bool last;
        std::size_t length;
    };
    const std::string u2 = "\xC3\xA4";
    const std::string u3 = "\xE2\x82\xAC";
    const std::string u4 = "\xF0\x9F\x98\x80";
    for (const Row& row : std::initializer_list<Row>{{"ab\ncd", 10, true, 5},
                                                     {"ab\ncd", 5, true, 5},
                                                     {"ab\ncd", 4, true, 3},
                                                     {"ab\ncd", 3, true, 3},
                                                     {"abcd", 3, true, 3},
                                                     {"ab\ncd", 10, false, 3},
                                                     {"abcd", 10, false, 4},
                                                     {"", 10, true, 0},
                                                     {"", 10, false, 0},
                                                     {"a" + u2, 2, true, 1},
                                                     {"a" + u2, 3, true, 3},
                                                     {"a" + u3, 3, false, 1},
                                                     {"a" + u4 + "b", 4, false, 1},
                                                     {"a" + u4 + "b", 5, false, 5},
                                                     {u4, 3, true, 0},
                                                     {"\x80\x80\x80\x80\x80\x80", 5, true, 5}}) {
        EXPECT_EQ(directoryBlock(row.bytes, row.most, row.last), row.length)
            << row.bytes << " " << row.most << " " << row.last;
    }
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
