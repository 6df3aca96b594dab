// One gzip member out of many: what a reader that inflates one member and stops gets to see.
#include "GzipJoiner.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>

#include "Client.h"
#include "testing/Gzip.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

using TestKit::gzip;

// A gzip member of chosen level, strategy and name in its header.
std::string member(const std::string& text, int level, int strategy, bool named = false) {
    z_stream z{};
    deflateInit2(&z, level, Z_DEFLATED, 31, 9, strategy);
    gz_header header{};
    std::string name = "a-name";
    header.name = reinterpret_cast<Bytef*>(name.data());
    header.hcrc = 1;
    if (named) {
        deflateSetHeader(&z, &header);
    }
    std::string out(deflateBound(&z, static_cast<uLong>(text.size())) + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    z.avail_in = static_cast<uInt>(text.size());
    z.next_out = reinterpret_cast<Bytef*>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    deflate(&z, Z_FINISH);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

std::string joined(const std::string& input, std::size_t step) {
    GzipJoiner joiner;
    std::string out;
    for (std::size_t i = 0; i < input.size(); i += step) {
        out += joiner.pass(input.substr(i, step));
    }
    return out + std::string(joiner.finish());
}

struct Inflated {
    int status;  // Z_STREAM_END, or what inflate() said last
    std::string text;
    std::size_t left;  // bytes after the member
};

// As the reader of a response does it: one member.
Inflated inflated(const std::string& input) {
    z_stream z{};
    inflateInit2(&z, 31);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    z.avail_in = static_cast<uInt>(input.size());
    Inflated result{Z_OK, {}, 0};
    std::array<char, 65536> block{};
    while (result.status == Z_OK) {
        z.next_out = reinterpret_cast<Bytef*>(block.data());
        z.avail_out = static_cast<uInt>(block.size());
        result.status = inflate(&z, Z_NO_FLUSH);
        result.text.append(block.data(), block.size() - z.avail_out);
    }
    result.left = z.avail_in;
    inflateEnd(&z);
    return result;
}

const std::array<std::size_t, 6> kSteps{1, 2, 7, 1000, 16384, 10000000};

TEST(GzipJoiner, OneMemberPassesByteForByte) {
    for (const std::size_t size : {0U, 1U, 1000U, 300000U}) {
        const std::string input = gzip(pattern(size));
        for (const std::size_t step : kSteps) {
            SCOPED_TRACE(testing::Message() << size << " by " << step);
            EXPECT_TRUE(joined(input, step) == input);
        }
    }
}

TEST(GzipJoiner, EveryPairOfMembersBecomesOne) {
    std::vector<std::string> texts{"", "x", "hello hello hello", pattern(70000),
                                   std::string(500000, 'z')};
    for (const std::string& first : texts) {
        for (const std::string& second : texts) {
            for (const int level : {0, 1, 9}) {
                for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY}) {
                    const std::string input =
                        member(first, level, strategy) + member(second, 6, strategy, true);
                    for (const std::size_t step : {std::size_t{777}, input.size()}) {
                        const Inflated result = inflated(joined(input, step));
                        ASSERT_EQ(result.status, Z_STREAM_END);
                        ASSERT_TRUE(result.text == first + second);
                        ASSERT_EQ(result.left, 0U);
                    }
                }
            }
        }
    }
}

TEST(GzipJoiner, ManyShortMembersOfEveryBitAlignmentBecomeOne) {
    std::string input;
    std::string expected;
    for (std::size_t i = 0; i < 300; ++i) {
        const std::string text = pattern(i % 61);
        input += member(text, static_cast<int>(i % 10), Z_FIXED, i % 3 == 0);
        expected += text;
    }
    for (const std::size_t step : kSteps) {
        SCOPED_TRACE(step);
        const Inflated result = inflated(joined(input, step));
        EXPECT_EQ(result.status, Z_STREAM_END);
        EXPECT_TRUE(result.text == expected);
    }
}

TEST(GzipJoiner, ALastBlockLongerThanTheWaitingRoomIsHandedOnInBoundedMemory) {
    // Fixed codes without matches make one block of the whole text.
    const std::string text = pattern(3 * GzipJoiner::kWaitingRoom);
    const std::string first = member(text, 9, Z_FIXED);
    for (const std::string& input : {first, first + gzip("tail"), gzip("head") + first}) {
        GzipJoiner joiner;
        std::string out;
        std::size_t in = 0;
        for (; in < input.size(); in += 1000) {
            out += joiner.pass(input.substr(in, 1000));
            EXPECT_LT(in, out.size() + GzipJoiner::kWaitingRoom + 4000);
        }
        out += joiner.finish();
        const Inflated result = inflated(out);
        EXPECT_EQ(result.status, Z_STREAM_END);
        EXPECT_TRUE(result.text.find(text) != std::string::npos);
        EXPECT_EQ(result.left, 0U);
    }
}

TEST(GzipJoiner, DamageInAnyMemberStaysDamage) {
    const std::string text = pattern(5000);
    for (const std::string& before : {std::string(), gzip("first")}) {
        std::string wrongSum = gzip(text);
        wrongSum[wrongSum.size() - 6] = static_cast<char>(wrongSum[wrongSum.size() - 6] ^ 1);
        std::string wrongLength = gzip(text);
        wrongLength.back() = static_cast<char>(wrongLength.back() ^ 1);
        std::string wrongData = gzip(text);
        wrongData[10] = static_cast<char>(wrongData[10] | 6);  // no such kind of block
        for (const std::string& bad : {wrongSum, wrongLength, wrongData}) {
            EXPECT_EQ(inflated(joined(before + bad, 100)).status, Z_DATA_ERROR);
        }
        for (const std::string& bad : {wrongSum, wrongLength}) {
            EXPECT_EQ(inflated(joined(before + bad + gzip("last"), 100)).status, Z_DATA_ERROR);
        }
    }
}

TEST(GzipJoiner, AWrongSumAfterALongLastBlockStaysDamage) {
    std::string bad = member(pattern(3 * GzipJoiner::kWaitingRoom), 9, Z_FIXED);
    bad[bad.size() - 6] = static_cast<char>(bad[bad.size() - 6] ^ 1);
    EXPECT_EQ(inflated(joined(bad, 1000)).status, Z_DATA_ERROR);
}

TEST(GzipJoiner, WhatIsCutStaysCut) {
    const std::string input = gzip("first") + gzip(pattern(1000));
    for (std::size_t length = gzip("first").size() + 2; length < input.size(); ++length) {
        EXPECT_NE(inflated(joined(input.substr(0, length), 50)).status, Z_STREAM_END) << length;
    }
}

TEST(GzipJoiner, BytesAfterTheLastMemberDoNotHurt) {
    for (const char* rubbish : {"\n", "rubbish", "\x1f", "\x1f\x8b", "\x1f\x8bnot a member"}) {
        const Inflated one = inflated(joined(gzip("one") + rubbish, 3));
        EXPECT_EQ(one.text, "one") << rubbish;
        const Inflated two = inflated(joined(gzip("one") + gzip("two") + rubbish, 3));
        EXPECT_EQ(two.text, "onetwo") << rubbish;
    }
}

TEST(GzipJoiner, WhatIsNotGzipPassesAsItIs) {
    EXPECT_EQ(joined("plain text", 3), "plain text");
    EXPECT_EQ(joined("", 3), "");
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
