// Conversion between the local code page and UTF-8: sizes, seams, substitution, zero bytes. The
// local code page is UTF-8 unless a test sets another.
#include <thread>

#include "TextConversionTest.h"
#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Util;
using Morvenn::Net::MvServerProxy::TextConversion;
using Morvenn::Net::MvServerProxy::TestKit::hex;
using Morvenn::Net::MvServerProxy::TestKit::unhex;

namespace {

std::string toUtf8(const std::string& text) {
    return Internal::toUtf8(text.data(), static_cast<int>(text.size()));
}

std::string fromUtf8(const std::string& bytes) {
    return Internal::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
}

std::string repeated(const std::string& piece, std::size_t bytes) {
    std::string out;
    while (out.size() < bytes) {
        out += piece;
    }
    return out;
}

const std::size_t kSizes[] = {1,     2,     3,     4095,  10239, 10240, 20478, 20479, 20480,
                              20481, 20482, 30719, 30720, 30721, 40959, 40960, 40961, 61441};

}  // namespace

TEST_F(TextConversion, LengthZeroGivesAnEmptyText) {
    EXPECT_EQ(Internal::toUtf8("unread", 0), "");
    EXPECT_EQ(Internal::fromUtf8("unread", 0), "");
    EXPECT_EQ(Internal::toUtf8("", 0), "");
}

TEST_F(TextConversion, TakesTheGivenLengthAndNeedsNoZeroByte) {
    EXPECT_EQ(Internal::toUtf8("abcdef", 3), "abc");
    EXPECT_EQ(Internal::fromUtf8("abcdef", 3), "abc");
}

TEST_F(TextConversion, TextsOfEverySizeComeBackWhole) {
    // One, two, three and four bytes a character; four are a pair of UTF-16 units.
    for (const std::string piece : {"x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        for (const std::size_t size : kSizes) {
            // A leading byte moves the characters across the seams at 20480 units.
            for (const std::string lead : {"", "a", "ab", "abc"}) {
                const std::string text = lead + repeated(piece, size);
                ASSERT_EQ(toUtf8(text), text) << hex(piece) << ' ' << lead << ' ' << size;
                ASSERT_EQ(fromUtf8(text), text) << hex(piece) << ' ' << lead << ' ' << size;
            }
        }
    }
}

TEST_F(TextConversion, PairOfUnitsAcrossTheSeamStaysWhole) {
    const std::string text = std::string(20479, 'x') + "\xF0\x9F\x98\x80" + "tail";
    EXPECT_EQ(toUtf8(text), text);
    EXPECT_EQ(fromUtf8(text), text);
}

TEST_F(TextConversion, InvalidBytesAreSubstituted) {
    const struct {
        const char* bytes;
        const char* expected;
    } rows[] = {
        {"ff", "efbfbd"},     {"61ff62", "61efbfbd62"}, {"c3", "efbfbd"},  // cut short by the end
        {"c361", "efbfbd61"},  // cut short by another character
        {"80", "efbfbd"},      // a continuation without a lead
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hex(fromUtf8(unhex(row.bytes))), row.expected) << row.bytes;
        EXPECT_EQ(hex(toUtf8(unhex(row.bytes))), row.expected) << row.bytes;
    }
}

// By design: the source converter learns of the end only from a call in which no more than 20480
// bytes are left. A text of more bytes that fits the first buffer in characters has no such call.
TEST_F(TextConversion, SequenceCutShortAtTheEndOfALongTextIsDropped) {
    const std::string cut = "\xE2\x82";
    EXPECT_EQ(toUtf8(repeated("x", 20477) + cut), repeated("x", 20477) + "\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(repeated("x", 20479) + cut), repeated("x", 20479));
    EXPECT_EQ(fromUtf8(repeated("x", 20479) + cut), repeated("x", 20479));
}

TEST_F(TextConversion, ThreadsConvertAtTheSameTime) {
    const std::string text = repeated("\xC3\xA9\xE2\x82\xAC", 50000);
    std::string other;
    std::thread thread([&] { other = toUtf8(text); });
    EXPECT_EQ(fromUtf8(text), text);
    thread.join();
    EXPECT_EQ(other, text);
}

// --- by design: output is taken chunk by chunk, up to a zero byte --------------------------------

TEST_F(TextConversion, NulCutsItsChunkOnly) {
    const std::string zero(1, '\0');
    EXPECT_EQ(toUtf8("a" + zero + "b"), "a");
    EXPECT_EQ(fromUtf8("a" + zero + "b"), "a");
    EXPECT_EQ(toUtf8(zero), "");
    // The first chunk holds 20480 units.
    const std::string first = "a" + zero + std::string(20478, 'x');
    EXPECT_EQ(toUtf8(first + "tail"), "atail");
    EXPECT_EQ(fromUtf8(first + "tail"), "atail");
}

TEST_F(TextConversion, ChunkOfOutputEndsWhereItsBufferIsFull) {
    icu.localCodePage = "ISO-8859-1";
    // Five bytes have room for seven: three characters of two bytes and the zero byte fill it.
    EXPECT_EQ(toUtf8(std::string("\xe9\xe9\xe9\0b", 5)),
              "\xC3\xA9\xC3\xA9\xC3\xA9"
              "b");
}

// --- other code pages ----------------------------------------------------------------------------

TEST_F(TextConversion, OneByteThatNeedsTwoTakesTwoPasses) {
    icu.localCodePage = "ISO-8859-1";
    EXPECT_EQ(toUtf8("\xe9"), "\xC3\xA9");
    EXPECT_EQ(fromUtf8("\xC3\xA9"), "\xe9");
}

TEST_F(TextConversion, SingleByteCodePageOfEverySize) {
    icu.localCodePage = "ISO-8859-1";
    for (const std::size_t size : kSizes) {
        const std::string local(size, '\xe9');
        const std::string utf8 = repeated("\xC3\xA9", 2 * size);
        ASSERT_EQ(toUtf8(local), utf8) << size;
        ASSERT_EQ(fromUtf8(utf8), local) << size;
    }
}

// By design: substitution is not reported.
TEST_F(TextConversion, WhatCannotBeRepresentedIsSubstituted) {
    icu.localCodePage = "ISO-8859-1";
    EXPECT_EQ(fromUtf8("a\xE2\x82\xAC"
                       "b"),
              "a\x1a"
              "b");
    icu.localCodePage = "US-ASCII";
    EXPECT_EQ(toUtf8("a\xe9"
                     "b"),
              "a\xEF\xBF\xBD"
              "b");
}

TEST_F(TextConversion, CodePageWithShiftsKeepsItsStateAcrossTheSeams) {
    icu.localCodePage = "ISO-2022-JP";
    const std::string utf8 = repeated("\xE6\x97\xA5\xE6\x9C\xAC", 90000);
    const std::string local = IcuInterposer::convertInOneCall("ISO-2022-JP", "UTF-8", utf8);
    EXPECT_EQ(fromUtf8(utf8), local);
    EXPECT_EQ(toUtf8(local), utf8);
}

TEST_F(TextConversion, DoubleByteCodePageSplitAtTheSeamConvertsWhole) {
    icu.localCodePage = "Shift_JIS";
    for (const std::string lead : {"", "a"}) {
        const std::string utf8 = lead + repeated("\xE6\x97\xA5", 90000);
        const std::string local = IcuInterposer::convertInOneCall("Shift_JIS", "UTF-8", utf8);
        EXPECT_EQ(fromUtf8(utf8), local);
        EXPECT_EQ(toUtf8(local), utf8);
    }
}
