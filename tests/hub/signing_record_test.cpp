// The records of a signature request, and base64.

#include "Base64.h"
#include "Refusal.h"
#include "SigningRecord.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string all;
    for (const int value : values) {
        all += static_cast<char>(value);
    }
    return all;
}

std::string refusalOf(const std::string& record) {
    try {
        decodeSigningRequest(base64Encode(record));
        return "";
    } catch (const Refusal& refusal) {
        EXPECT_EQ(400u, refusal.status());
        return refusal.what();
    }
}

}  // namespace

TEST(SigningRecord, TwoItemsAreRead) {
    EXPECT_EQ((std::vector<std::string>{"ab", "xyz"}),
              decodeSigningRequest("AAAAAgAAAAJhYgAAAAN4eXo="));
}

TEST(SigningRecord, ItemsMayHoldAnyByte) {
    const std::string item = bytes({0, 255, 10, 0});
    EXPECT_EQ(std::vector<std::string>{item},
              decodeSigningRequest(base64Encode(bytes({0, 0, 0, 1, 0, 0, 0, 4}) + item)));
}

TEST(SigningRecord, AnswerHasAFlagALengthAndTheBytesOfEachSignature) {
    EXPECT_EQ(base64Encode(bytes({0, 0, 0, 2, 1, 0, 0, 0, 3, 'A', 'B', 'C', 1, 0, 0, 1, 0}) +
                           std::string(256, 'x')),
              encodeSigningAnswer({"ABC", std::string(256, 'x')}));
}

TEST(SigningRecord, RefusalsSayWhatIsWrongAndWhere) {
    const std::string begin = "not a signature request: ";
    const struct {
        std::string record;
        const char* refusal;
    } rows[] = {
        {"", "the record ends within the number of items, at byte 0"},
        {bytes({0, 0, 0}), "the record ends within the number of items, at byte 3"},
        {bytes({0, 0, 0, 0}), "1 to 4096 items can be signed, not 0"},
        {bytes({0, 0, 16, 1}), "1 to 4096 items can be signed, not 4097"},
        {bytes({255, 255, 255, 255}), "1 to 4096 items can be signed, not 4294967295"},
        {bytes({0, 0, 0, 1, 0, 0}), "the record ends within the length of item 1, at byte 6"},
        {bytes({0, 0, 0, 1, 0, 0, 0, 0}), "item 1 has no bytes"},
        {bytes({0, 0, 0, 1, 0, 0, 0, 2, 'a'}), "the record ends within item 1, at byte 9"},
        {bytes({0, 0, 0, 1, 255, 255, 255, 255, 'a'}), "the record ends within item 1, at byte 9"},
        {bytes({0, 0, 0, 2, 0, 0, 0, 1, 'a'}),
         "the record ends within the length of item 2, at byte 9"},
        {bytes({0, 0, 0, 1, 0, 0, 0, 1, 'a', 'b', 'c'}), "2 bytes follow the last item"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.refusal);
        EXPECT_EQ(begin + row.refusal, refusalOf(row.record));
    }
}

TEST(SigningRecord, BodyThatIsNoBase64IsRefused) {
    EXPECT_THROW(decodeSigningRequest("AAAA*gAA"), Refusal);
}

TEST(Base64, KnownTextsBothWays) {
    const struct {
        const char* plain;
        const char* encoded;
    } rows[] = {{"", ""},
                {"f", "Zg=="},
                {"fo", "Zm8="},
                {"foo", "Zm9v"},
                {"foob", "Zm9vYg=="},
                {"fooba", "Zm9vYmE="},
                {"foobar", "Zm9vYmFy"},
                {"\xfb\xff", "+/8="}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.encoded);
        EXPECT_EQ(row.encoded, base64Encode(row.plain));
        EXPECT_EQ(row.plain, base64Decode(row.encoded));
        EXPECT_EQ(row.plain, base64Decode(" \r\n" + std::string(row.encoded) + "\r\n"));
    }
}

TEST(Base64, AnythingElseIsNoBase64) {
    for (const char* text :
         {"Z", "Zg", "Zg=", "Zg===", "====", "Z===", "Zg==Zg==", "Zm 9", "Zm9_", "Zm\n9v"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(std::nullopt, base64Decode(text));
    }
}
