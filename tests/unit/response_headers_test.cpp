// The header block of a response: lines, keys, values, and what is read until it ends.
#include <memory>

#include "RequestTest.h"
#include "client/HeaderText.h"
#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

struct Enough {};

class ResponseHeaders : public RequestTest {
protected:
    MvServerRequest request{&session};

    // Sends a request whose response is scripted; its body is empty unless the script says
    // otherwise.
    void receiveResponse(const Script& response) {
        proxy.answers(response);
        request.setBody("x");
        const std::unique_ptr<std::istream> stream(request.send());
        std::getline(*stream, body, '\0');
    }

    std::string body;
};

const std::string kCode = "ResponseHeaderResponseCode";

}  // namespace

TEST(ResponseHeaderLine, IsCutAtItsFirstTwoEqualsSignsAndTrimmed) {
    const struct {
        std::string_view line;
        std::string_view key;
        std::string_view value;
    } rows[] = {
        {"Key=value", "Key", "value"},
        {" ResponseHeaderResponseCode = 200 \r", "ResponseHeaderResponseCode", "200"},
        {"\t\v\f Key \r=\n value", "Key", "value"},
        {"Key=", "Key", ""},
        {"=value", "", "value"},
        {"=", "", ""},
        {"", "", ""},
        {" \r", "", ""},
        {"Key = two words ", "Key", "two words"},
        // By design: any line has a key, and what follows a second "=" is dropped.
        {"X", "X", ""},
        {"X=a=b", "X", "a"},
        {"X=a=", "X", "a"},
        {"a==b", "a", ""},
        {"X= a =b", "X", "a"},
        {{"X=\0a", 4}, "X", {"\0a", 2}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(escaped(row.line));
        const Internal::HeaderLine line = Internal::parseHeaderLine(row.line);
        EXPECT_EQ(line.key, row.key);
        EXPECT_EQ(line.value, row.value);
    }
}

TEST_F(ResponseHeaders, GettersReadTheirKeys) {
    receiveResponse(
        {block("ResponseHeaderResponseCode=200\r\nResponseHeaderResponseText=Very OK\r\n"
               "ResponseHeaderContentType=text/xml\r\n\n"),
         end()});
    EXPECT_EQ(request.getResponseCode(), "200");
    EXPECT_EQ(request.getResponseText(), "Very OK");
    EXPECT_EQ(request.getContentType(), "text/xml");
}

TEST_F(ResponseHeaders, GettersAreEmptyBeforeTheResponseAndForMissingKeys) {
    EXPECT_EQ(request.getResponseCode(), "");
    receiveResponse({block("\n"), end()});
    EXPECT_EQ(request.getResponseCode(), "");
    EXPECT_EQ(request.getResponseText(), "");
    EXPECT_EQ(request.getContentType(), "");
}

TEST_F(ResponseHeaders, KeysAreCaseSensitive) {
    receiveResponse({block("RESPONSEHEADERRESPONSECODE=200\n\n"), end()});
    EXPECT_EQ(request.getResponseCode(), "");
}

TEST_F(ResponseHeaders, LaterLineOfAKeyReplacesTheEarlier) {
    receiveResponse({block(kCode + "=200\n" + kCode + "=404\n\n"), end()});
    EXPECT_EQ(request.getResponseCode(), "404");
}

TEST_F(ResponseHeaders, KeyReadBeforeTheResponseIsStillFilledByIt) {
    EXPECT_EQ(request.getResponseCode(), "");
    receiveResponse({block(kCode + "=200\n\n"), end()});
    EXPECT_EQ(request.getResponseCode(), "200");
}

// By design: text after a second "=" is dropped.
TEST_F(ResponseHeaders, TextAfterASecondEqualsSignIsDropped) {
    receiveResponse({block("ResponseHeaderContentType=text/xml; charset=utf-8\n\n"), end()});
    EXPECT_EQ(request.getContentType(), "text/xml; charset");
}

TEST_F(ResponseHeaders, BodyBeginsRightAfterTheEmptyLine) {
    receiveResponse({block(kCode + "=200\n\n\nbody\n"), end()});
    EXPECT_EQ(body, "\nbody\n");
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\nx"), sendEof(), receive(2), complete()}));
}

TEST_F(ResponseHeaders, LineThatHoldsACarriageReturnIsNotEmpty) {
    receiveResponse({block("\r\n" + kCode + "=200\n\n"), end()});
    EXPECT_EQ(request.getResponseCode(), "200");
}

TEST_F(ResponseHeaders, BlocksMayBeCutAnywhere) {
    const std::string text = kCode + "=200\r\nResponseHeaderResponseText=OK\r\n\nbody";
    for (std::size_t size = 1; size <= text.size(); ++size) {
        SCOPED_TRACE(size);
        MvServerRequest fresh(&session);
        fresh.setBody("x");
        proxy.answers({inBlocksOf(size, text), end()});
        EXPECT_EQ(fresh.execute(), "body");
        EXPECT_EQ(fresh.getResponseCode(), "200");
        EXPECT_EQ(fresh.getResponseText(), "OK");
        const std::size_t blocks = (text.size() + size - 1) / size;
        EXPECT_EQ(proxy.takeCalls(),
                  (Calls{send("\r\nx"), sendEof(), receive(blocks + 1), complete()}));
    }
}

TEST_F(ResponseHeaders, LongLinesAndManyLinesAreReadWhole) {
    std::string text = kCode + "=" + std::string(50000, 'v') + "\n";
    for (int i = 0; i < 5000; ++i) {
        text += "Key" + std::to_string(i) + "=value\n";
    }
    receiveResponse({inBlocksOf(16384, text + "\n"), end()});
    EXPECT_EQ(request.getResponseCode(), std::string(50000, 'v'));
}

// --- by design: only a line feed is looked for ---------------------------------------------------

TEST_F(ResponseHeaders, HeaderBlockWithoutEndKeepsAsking) {
    proxy.answers(
        {block(kCode + "=a"), end().times(1000000), throwing(Function::Receive, Enough{})});
    request.setBody("x");
    EXPECT_THROW(request.send(), Enough);
    EXPECT_EQ(proxy.calls(), (Calls{send("\r\nx"), sendEof(), receive(1000002)}));
}

TEST_F(ResponseHeaders, ResultsWithoutDataAreAppendedAsBytes) {
    const struct {
        int result;
        const char* byte;
    } rows[] = {
        {0, "00"},     {-1, "ff"},    {-2, "fe"},   {-1001, "17"},
        {-1002, "16"}, {-5005, "73"}, {-246, "0a"},  // the low byte of a line feed ends no line
    };
    for (const auto& row : rows) {
        for (const std::size_t times : {1U, 2U, 1000U}) {
            SCOPED_TRACE(std::to_string(row.result) + " x " + std::to_string(times));
            MvServerRequest fresh(&session);
            fresh.setBody("x");
            proxy.answers(
                {block(kCode + "=a"), instruction(row.result).times(times), block("b\n\n"), end()});
            EXPECT_EQ(fresh.execute(), "");
            std::string value = "a";
            for (std::size_t i = 0; i < times; ++i) {
                value += unhex(row.byte);
            }
            EXPECT_EQ(hex(fresh.getResponseCode()), hex(value + "b"));
            EXPECT_EQ(proxy.takeCalls(),
                      (Calls{send("\r\nx"), sendEof(), receive(times + 3), complete()}));
        }
    }
}

TEST_F(ResponseHeaders, ResultBetweenTheLinesBeginsALine) {
    receiveResponse({block(kCode + "=200\n"), nothing(), block("\n\nbody"), end()});
    EXPECT_EQ(request.getResponseCode(), "200");
    EXPECT_EQ(body, "body");
}

// --- results that do not fit ---------------------------------------------------------------------

TEST_F(ResponseHeaders, ResultAboveABlockIsALocalFailure) {
    proxy.answers({block(kCode + "=a"), instruction(16385)});
    request.setBody("x");
    EXPECT_EQ(failureOf([this] { request.send(); }),
              failure<MSPRuntimeException>(-1, "Unexpected state.  count = 16385 pos = 0"));
}
