// Where the bytes of answers come from.

#include "GzipSource.h"
#include "HubClient.h"
#include "Spool.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

std::string readAll(Source& source, std::size_t room) {
    std::string all;
    std::string block(room, '\0');
    for (auto count = source.read(block.data(), room); count > 0;
         count = source.read(block.data(), room)) {
        all.append(block, 0, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(Source::kEnd, source.read(block.data(), room));
    return all;
}

class BrokenSource : public Source {
public:
    std::ptrdiff_t read(char*, std::size_t) override { return kBroken; }
    std::optional<std::uint64_t> size() const override { return 5; }
};

}  // namespace

TEST(Source, PatternRepeatsTheAlphabetWithALineEndAtEvery64thByte) {
    PatternSource source(130);
    const std::string text = readAll(source, 7);
    EXPECT_EQ(130u, text.size());
    EXPECT_EQ("abcdefghijklmnopqrstuvwxyzab", text.substr(0, 28));
    EXPECT_EQ('\n', text[63]);
    EXPECT_EQ('\n', text[127]);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 64 != 63) {
            ASSERT_EQ(static_cast<char>('a' + i % 26), text[i]) << i;
        }
    }
}

TEST(Source, PatternIsTheSameInBlocksOfAnySize) {
    PatternSource byBytes(2000);
    PatternSource atOnce(2000);
    EXPECT_EQ(readAll(byBytes, 1), readAll(atOnce, 4096));
}

TEST(Source, GzipInflatesToTheTextInBlocksOfAnySize) {
    for (const std::size_t size : {0u, 1u, 100u, 32768u, 100000u}) {
        PatternSource plain(size);
        const std::string text = readAll(plain, 4096);
        for (const std::size_t room : {1u, 10u, 4096u, 1000000u}) {
            SCOPED_TRACE(std::to_string(size) + " by " + std::to_string(room));
            GzipSource source(std::make_unique<TextSource>(text));
            EXPECT_EQ(text, HubTest::gunzipped(readAll(source, room)));
        }
    }
}

TEST(Source, GzipOfABrokenSourceBreaks) {
    GzipSource source(std::make_unique<BrokenSource>());
    char byte = 0;
    EXPECT_EQ(Source::kBroken, source.read(&byte, 1));
}

TEST(Spool, GivesBackWhatWasWrittenAroundTheEndOfItsMemoryPart) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, Spool::kMemoryPart - 1, Spool::kMemoryPart,
          Spool::kMemoryPart + 1, std::size_t{700000}}) {
        SCOPED_TRACE(size);
        PatternSource pattern(size);
        const std::string text = readAll(pattern, 65536);
        Spool spool;
        for (std::size_t at = 0; at < text.size(); at += 10007) {
            spool.write(text.data() + at, std::min<std::size_t>(10007, text.size() - at));
        }
        EXPECT_EQ(size, spool.size());
        EXPECT_EQ(text, readAll(spool, 16384));
    }
}
