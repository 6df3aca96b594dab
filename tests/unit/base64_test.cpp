// Base64 in both directions, against values that are known and an encoder of its own.
#include "crypto/Base64.h"

#include <gtest/gtest.h>

#include <string>

#include "testing/Bytes.h"

using namespace std::string_literals;
using Morvenn::Net::MvServerProxy::Crypto::Internal::base64Decode;
using Morvenn::Net::MvServerProxy::Crypto::Internal::base64Encode;
using Morvenn::Net::MvServerProxy::TestKit::escaped;
using Morvenn::Net::MvServerProxy::TestKit::sampleBytes;
using Morvenn::Net::MvServerProxy::TestKit::unhex;

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Row {
    std::string bytes;
    std::string text;
};

const Row kKnown[] = {
    // RFC 4648, section 10
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
    // every bit set, none set
    {"\0"s, "AA=="},
    {"\0\0\0"s, "AAAA"},
    {"\xFF", "/w=="},
    {"\xFF\xFF", "//8="},
    {"\xFF\xFF\xFF", "////"},
    {"\xFB\xEF\xBE", "++++"},
    // the record of two items, "ab" and "xyz"
    {unhex("00000002 00000002 6162 00000003 78797a"), "AAAAAgAAAAJhYgAAAAN4eXo="},
};

// One bit at a time, straight from the definition.
std::string encodedByBits(const std::string& bytes) {
    std::string text;
    const std::size_t bits = bytes.size() * 8;
    for (std::size_t at = 0; at < bits; at += 6) {
        unsigned value = 0;
        for (std::size_t bit = at; bit < at + 6; ++bit) {
            const bool isSet =
                bit < bits && ((static_cast<unsigned char>(bytes[bit / 8]) >> (7 - bit % 8)) & 1U);
            value = value * 2 + (isSet ? 1 : 0);
        }
        text += kAlphabet[value];
    }
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

}  // namespace

TEST(Base64, KnownValuesInBothDirections) {
    for (const Row& row : kKnown) {
        SCOPED_TRACE(escaped(row.bytes));
        EXPECT_EQ(base64Encode(row.bytes), row.text);
        EXPECT_EQ(base64Decode(row.text), row.bytes);
    }
}

TEST(Base64, AlphabetStandsForItsPositions) {
    std::string bytes;
    for (unsigned i = 0; i < 64; i += 4) {
        const unsigned group = (i << 18U) | ((i + 1) << 12U) | ((i + 2) << 6U) | (i + 3);
        bytes += static_cast<char>(group >> 16U);
        bytes += static_cast<char>(group >> 8U);
        bytes += static_cast<char>(group);
    }
    EXPECT_EQ(base64Encode(bytes), kAlphabet);
    EXPECT_EQ(base64Decode(kAlphabet), bytes);
}

TEST(Base64, EveryByteSurvivesAtEveryPlaceOfAGroup) {
    for (int byte = 0; byte < 256; ++byte) {
        for (const char* around : {"", "a", "ab"}) {
            const std::string bytes = around + std::string(1, static_cast<char>(byte));
            EXPECT_EQ(base64Encode(bytes), encodedByBits(bytes));
            EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes);
        }
    }
}

TEST(Base64, RoundTripOfEveryLength) {
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string bytes = sampleBytes(length);
        const std::string text = base64Encode(bytes);
        ASSERT_EQ(text, encodedByBits(bytes)) << length;
        ASSERT_EQ(text.size(), (length + 2) / 3 * 4);
        ASSERT_EQ(base64Decode(text), bytes) << length;
    }
}

TEST(Base64, LongTextHasNoLineBreaks) {
    const std::string bytes = sampleBytes(100000);
    const std::string text = base64Encode(bytes);
    EXPECT_EQ(text, encodedByBits(bytes));
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
    EXPECT_EQ(base64Decode(text), bytes);
}

TEST(Base64, DecodingStopsWithoutFailureAtTheFirstForeignCharacter) {
    const Row rows[] = {
        // decoded, from
        {"foo", "Zm9v\nYmFy"},
        {"foo", "Zm9v\r\n"},
        {"foo", "Zm9v YmFy"},
        {"foo", "Zm9v-mFy"},  // of the URL alphabet
        {"foo", "Zm9v_mFy"},
        {"foo", "Zm9v\0YmFy"s},
        {"foo", "Zm9v\xC3\xA4"},
        {"foo", "Zm9v,"},
        {"", "\nZm9v"},
        {"", "!"},
        {"", "="},
        {"", "===="},
        {"foo", "Zm9v="},
        {"f", "Zg==Zm9v"},  // nothing is read behind the padding
        {"fo", "Zm8=Zm9v"},
        {"f", "Zg!"},
        {"fo", "Zm9!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(escaped(row.text));
        EXPECT_EQ(base64Decode(row.text), row.bytes);
    }
}

TEST(Base64, FinalGroupGivesWhatItsCharactersHold) {
    const Row rows[] = {
        {"", "Z"},  // six bits are not a byte
        {"f", "Zg"},
        {"fo", "Zm8"},
        {"foo", "Zm9v"},
        {"foo", "Zm9vY"},
        {"foob", "Zm9vYg"},
        {"foo", "Zm9vY==="},
        {"f", "Zh"},  // the bits beyond the byte do not
                      // count
        {"fo", "Zm9"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(escaped(row.text));
        EXPECT_EQ(base64Decode(row.text), row.bytes);
    }
}

TEST(Base64, EveryOtherByteIsForeignAtEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool isOfTheAlphabet =
            c != '\0' && std::string(kAlphabet).find(c) != std::string::npos;
        for (std::size_t place = 0; place < 4; ++place) {
            std::string text = "Zm9vZm9v";
            text[4 + place] = c;
            const std::size_t expected = isOfTheAlphabet ? 6 : (place < 2 ? 3 : 2 + place);
            EXPECT_EQ(base64Decode(text).size(), expected) << byte << " at " << place;
        }
    }
}
