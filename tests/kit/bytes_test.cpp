#include "testing/Bytes.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "testing/Gzip.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;

TEST(Bytes, EscapedWritesControlsAsEscapes) {
    EXPECT_EQ(escaped(std::string("A=1\r\n\t\"\\\0\xff", 10)), R"("A=1\r\n\t\"\\\x00\xff")");
}

TEST(Bytes, EscapedSplitsTheLiteralBeforeADigitThatWouldJoinAnEscape) {
    EXPECT_EQ(escaped("\x01z\x01"
                      "1"),
              R"("\x01z\x01" "1")");
}

TEST(Bytes, EscapedCutsLongTextsAndSaysTheirSize) {
    EXPECT_EQ(escaped("abcdef", 3), "\"abc\"... (6 bytes)");
    EXPECT_EQ(escaped("abc", 3), "\"abc\"");
}

TEST(Bytes, HexAndBack) {
    EXPECT_EQ(hex("\xC3\xA9z"), "c3a97a");
    EXPECT_EQ(unhex("C3 a9 7a"), "\xC3\xA9z");
    EXPECT_EQ(unhex(""), "");
}

TEST(Bytes, UnhexRefusesWhatIsNotHexadecimal) {
    EXPECT_THROW(unhex("0"), std::invalid_argument);
    EXPECT_THROW(unhex("0g"), std::invalid_argument);
}

TEST(Bytes, SampleBytesAreTheSameEachTimeAndHoldNoZero) {
    const std::string sample = sampleBytes(70000);
    EXPECT_EQ(sample.size(), 70000U);
    EXPECT_EQ(sample, sampleBytes(70000));
    EXPECT_EQ(sample.find('\0'), std::string::npos);
}

TEST(Gzip, BeginsWithTheMarkOfItsWrapper) {
    EXPECT_EQ(hex(gzip("x").substr(0, 3)), "1f8b08");
    EXPECT_EQ(hex(compressed("x", Wrapper::Zlib).substr(0, 2)), "78da");
    EXPECT_EQ(hex(compressed("x", Wrapper::Raw)), "ab0000");
}
