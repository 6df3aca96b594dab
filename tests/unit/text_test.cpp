// The small text helpers.
#include "util/Text.h"

#include <gtest/gtest.h>

#include <climits>

#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Util::Internal;
using Morvenn::Net::MvServerProxy::TestKit::escaped;

TEST(Text, TrimTakesWhiteSpaceFromBothEnds) {
    const struct {
        std::string_view text;
        std::string_view expected;
    } rows[] = {
        {"", ""},
        {" \t\n\v\f\r", ""},
        {" a b ", "a b"},
        {"a\r", "a"},
        {"\r\na", "a"},
        {"a", "a"},
        {"\xa0"
         "a",
         "\xa0"
         "a"},                       // not white space in the C locale
        {{"\0 a", 3}, {"\0 a", 3}},  // a zero byte is a character like others
    };
    for (const auto& row : rows) {
        EXPECT_EQ(trim(row.text), row.expected) << escaped(row.text);
    }
}

TEST(Text, FirstTwoPiecesDropsWhatFollowsThem) {
    const struct {
        std::string_view text;
        std::string_view first;
        std::string_view second;
        bool hasSeparator;
    } rows[] = {
        {"", "", "", false},     {"a", "a", "", false},     {"=", "", "", true},
        {"a=", "a", "", true},   {"=b", "", "b", true},     {"a=b", "a", "b", true},
        {"a==b", "a", "", true}, {"a=b=c", "a", "b", true}, {"a=b=", "a", "b", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(escaped(row.text));
        const TwoPieces pieces = firstTwoPieces(row.text, '=');
        EXPECT_EQ(pieces.first, row.first);
        EXPECT_EQ(pieces.second, row.second);
        EXPECT_EQ(pieces.hasSeparator, row.hasSeparator);
    }
}

TEST(Text, ToIntGivesZeroForWhatIsNoNumber) {
    const struct {
        std::string_view text;
        int expected;
    } rows[] = {
        {"", 0},
        {"0", 0},
        {"42", 42},
        {"-7", -7},
        {"+7", 7},
        {" \t42", 42},
        {"42abc", 42},
        {"abc", 0},
        {"4 2", 4},
        {"0x10", 0},
        {"007", 7},
        {"- 7", 0},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(toInt(row.text), row.expected) << escaped(row.text);
    }
}

TEST(Text, ToTextIsDecimal) {
    EXPECT_EQ(toText(0), "0");
    EXPECT_EQ(toText(-1001), "-1001");
    EXPECT_EQ(toText(INT_MAX), "2147483647");
    EXPECT_EQ(toText(INT_MIN), "-2147483648");
}
