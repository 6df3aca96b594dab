// Body bytes on their way out and in: window, spool and response buffer.
#include <gtest/gtest.h>

#include <array>

#include "BodyWindow.h"
#include "Client.h"
#include "CopyBytes.h"
#include "Failure.h"
#include "ResponseBuffer.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

TEST(CopyBytes, CopiesEverySizeAndNothingBeyond) {
    const std::string text = pattern(5000);
    for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U, 4096U, 5000U}) {
        std::string out(5001, '.');
        copyBytes(out.data(), text.data(), size);
        EXPECT_TRUE(out == text.substr(0, size) + std::string(out.size() - size, '.')) << size;
    }
}

std::string read(BodyWindow& window, std::size_t size) {
    std::string out(size, '\0');
    out.resize(window.read(out.data(), size));
    return out;
}

TEST(BodyWindow, GivesWhatWasPutInAndCanStartAgain) {
    BodyWindow window;
    window.append("abc");
    window.append("def");
    EXPECT_EQ(read(window, 4), "abcd");
    EXPECT_EQ(window.unread(), 2U);
    EXPECT_TRUE(window.rewind());
    EXPECT_EQ(read(window, 100), "abcdef");
    EXPECT_EQ(read(window, 100), "");
    EXPECT_EQ(window.whole(), "abcdef");
}

TEST(BodyWindow, DropsWhatWasReadOnlyWhenTheRoomIsNeeded) {
    BodyWindow window;
    window.append(std::string(BodyWindow::kCapacity, 'a'));
    EXPECT_FALSE(window.fits(1));
    read(window, 100);
    EXPECT_TRUE(window.fits(100));
    EXPECT_TRUE(window.rewindable());
    window.append(std::string(100, 'b'));
    EXPECT_FALSE(window.rewindable());
    EXPECT_FALSE(window.rewind());
    EXPECT_EQ(window.unread(), BodyWindow::kCapacity);
}

TEST(BodyWindow, NeverLosesAChunkEvenBeyondItsCapacity) {
    BodyWindow window;
    const std::string chunk = pattern(4096);
    window.append(pattern(BodyWindow::kCapacity));
    window.append(chunk);
    EXPECT_TRUE(window.rewindable());
    EXPECT_FALSE(window.fits(0));
    EXPECT_EQ(read(window, 100000), pattern(BodyWindow::kCapacity) + chunk);
}

TEST(BodyWindow, AWholeBodyIsLentAndNotCopied) {
    const std::string text = pattern(1000000);
    BodyWindow window;
    window.lend(text);
    EXPECT_TRUE(window.ended());
    EXPECT_TRUE(window.rewind());
    EXPECT_EQ(window.whole().data(), text.data());
    EXPECT_EQ(window.whole().size(), text.size());
    window.clear();
    EXPECT_EQ(window.whole(), "");
}

TEST(BodyWindow, ClearForgetsEverything) {
    BodyWindow window;
    window.append("abc");
    window.end();
    window.clear();
    EXPECT_FALSE(window.ended());
    EXPECT_EQ(window.unread(), 0U);
    EXPECT_TRUE(window.rewindable());
}

std::string take(ResponseBuffer& buffer, std::size_t size) {
    std::string out(size, '\0');
    out.resize(buffer.take(out.data(), size));
    return out;
}

TEST(ResponseBuffer, KeepsTheOrderAcrossBlockMemoryAndSpool) {
    ResponseBuffer buffer;
    buffer.spool().configure("/tmp", 10000000);
    std::array<char, 1000> block{};
    const std::string text = pattern(500000);
    buffer.openBlock(block.data(), block.size());
    for (std::size_t i = 0; i < text.size(); i += 7000) {
        buffer.put(text.substr(i, 7000), true);
    }
    std::string out(block.data(), buffer.closeBlock());
    EXPECT_EQ(out.size(), 1000U);
    EXPECT_TRUE(buffer.full());
    EXPECT_LT(buffer.buffered(), ResponseBuffer::kCapacity + 7000);
    EXPECT_FALSE(buffer.spool().empty());
    for (std::string piece = take(buffer, 16384); !piece.empty(); piece = take(buffer, 16384)) {
        out += piece;
    }
    EXPECT_TRUE(out == text);
    EXPECT_TRUE(buffer.empty());
    EXPECT_FALSE(buffer.full());
}

TEST(ResponseBuffer, ABlockIsLeftAloneWhileOlderBytesWait) {
    ResponseBuffer buffer;
    buffer.put("old", false);
    std::array<char, 10> block{};
    buffer.openBlock(block.data(), block.size());
    buffer.put("new", false);
    EXPECT_EQ(buffer.closeBlock(), 0U);
    EXPECT_EQ(take(buffer, 100), "oldnew");
}

TEST(ResponseBuffer, ABlockIsFullWhenItsLastByteIsThere) {
    ResponseBuffer buffer;
    EXPECT_FALSE(buffer.blockFull());
    std::array<char, 10> block{};
    buffer.openBlock(block.data(), block.size());
    buffer.put("123456789", false);
    EXPECT_FALSE(buffer.blockFull());
    buffer.put("0a", false);
    EXPECT_TRUE(buffer.blockFull());
    EXPECT_EQ(buffer.closeBlock(), 10U);
    EXPECT_FALSE(buffer.blockFull());
    EXPECT_EQ(take(buffer, 100), "a");
}

TEST(Spool, RefusesMoreThanItsLimitAndAFolderThatIsNone) {
    Spool spool;
    spool.configure("/tmp", 5);
    spool.write("12345", 5);
    EXPECT_THROW(spool.write("6", 1), Failure);
    spool.configure("/nonexistent", 5);
    try {
        spool.write("1", 1);
        ADD_FAILURE() << "a file was made";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, MV_STATUS_RUNTIME);
        EXPECT_NE(failure.text.find("/nonexistent"), std::string::npos);
        EXPECT_NE(failure.text.find("TMPDIR"), std::string::npos);
    }
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
