// Reading the proxy's blocks: piece by piece, byte by byte, and straight through.
#include <climits>
#include <vector>

#include "LoggedTest.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;
using Morvenn::Net::MvServerProxy::Client::MSPRuntimeException;
using Reader = Morvenn::Net::MvServerProxy::Client::ResponseStream;

namespace {

class ResponseStream : public LoggedTest {
protected:
    static constexpr int kBlock = 16384;

    Reader stream;
    std::vector<char> buffer = std::vector<char>(2 * kBlock, '~');

    // The first bytes of the buffer, from an offset on.
    std::string bytes(std::size_t size, std::size_t from = 0) const {
        return {buffer.data() + from, size};
    }
};

Failure unexpectedState(int count, int pos) {
    return failure<MSPRuntimeException>(-1, "Unexpected state.  count = " + std::to_string(count) +
                                                " pos = " + std::to_string(pos));
}

}  // namespace

TEST_F(ResponseStream, StartsEmptyAndAsksNothing) {
    EXPECT_EQ(proxy.calls(), Calls{});
}

// --- straight through ---------------------------------------------------------------------------

TEST_F(ResponseStream, WholeBlockGoesStraightIntoTheCallersBuffer) {
    proxy.answers(block("abc"));
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock), 3);
    EXPECT_EQ(bytes(4), "abc~");
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}

TEST_F(ResponseStream, ReadWithABufferAloneIsTheSame) {
    proxy.answers({block("abc"), status(-1001)});
    EXPECT_EQ(stream.read(buffer.data()), 3);
    EXPECT_EQ(bytes(4), "abc~");
    EXPECT_EQ(stream.read(buffer.data()), -1001);
}

TEST_F(ResponseStream, ResultThatPassesThroughIsUnchanged) {
    for (const int result : {0, -1, -2, -246, -1001, 16384, 16385, 20000, INT_MAX, INT_MIN}) {
        proxy.answers(instruction(result));
        EXPECT_EQ(stream.read(buffer.data(), 0, kBlock), result);
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(10)}));
}

TEST_F(ResponseStream, LengthAboveABlockPassesThroughToo) {
    proxy.answers(block("abc"));
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock + 1), 3);
    EXPECT_EQ(bytes(3), "abc");
    proxy.answers(instruction(16385));
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock + 1), 16385);
}

TEST_F(ResponseStream, BytesThatAreLeftInTheBlockComeBeforeTheNextBlock) {
    proxy.answers({block("abc"), block("def")});
    EXPECT_EQ(stream.read(), 'a');
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock), 2);
    EXPECT_EQ(bytes(3), "bc~");
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock), 3);
    EXPECT_EQ(bytes(3), "def");
    EXPECT_EQ(proxy.calls(), (Calls{receive(2)}));
}

// --- through the block --------------------------------------------------------------------------

TEST_F(ResponseStream, SmallReadsTakeTheBlockPieceByPiece) {
    proxy.answers({block("abcde"), end()});
    EXPECT_EQ(stream.read(buffer.data(), 0, 2), 2);
    EXPECT_EQ(bytes(3), "ab~");
    EXPECT_EQ(stream.read(buffer.data(), 2, 2), 2);
    EXPECT_EQ(bytes(5), "abcd~");
    EXPECT_EQ(stream.read(buffer.data(), 0, 100), 1) << "no more than the block holds";
    EXPECT_EQ(bytes(2), "eb");
    EXPECT_EQ(stream.read(buffer.data(), 0, 100), -1);
    EXPECT_EQ(proxy.calls(), (Calls{receive(2)}));
}

TEST_F(ResponseStream, OffsetGoesThroughTheBlockWhateverTheLength) {
    const std::string block16384(kBlock, 'x');
    proxy.answers(block(block16384));
    EXPECT_EQ(stream.read(buffer.data(), 5, kBlock), kBlock);
    EXPECT_EQ(bytes(5), "~~~~~");
    EXPECT_EQ(bytes(kBlock + 1, 5), block16384 + "~");
}

TEST_F(ResponseStream, OffsetWithAShortBlockGivesWhatTheBlockHolds) {
    proxy.answers(block("abc"));
    EXPECT_EQ(stream.read(buffer.data(), 5, kBlock), 3);
    EXPECT_EQ(bytes(9), "~~~~~abc~");
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}

TEST_F(ResponseStream, ReadsBelowABlockFillTheBlock) {
    proxy.answers(block(std::string(kBlock, 'x')));
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock - 1), kBlock - 1);
    EXPECT_EQ(stream.read(buffer.data(), 0, kBlock), 1);
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}

TEST_F(ResponseStream, LengthZeroGivesZeroWithoutAsking) {
    EXPECT_EQ(stream.read(buffer.data(), 0, 0), 0);
    EXPECT_EQ(stream.read(buffer.data(), 7, 0), 0);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(ResponseStream, ProxysResultComesBackWhenItHasNoBytes) {
    for (const int result : {0, -1, -2, -246, -1001, INT_MIN}) {
        SCOPED_TRACE(result);
        proxy.answers({instruction(result), instruction(result)});
        EXPECT_EQ(stream.read(buffer.data(), 0, 10), result);
        EXPECT_EQ(stream.read(), result);
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(12)})) << "each read asks again, and none is raised";
}

TEST_F(ResponseStream, ReadsAfterTheEndAskAgain) {
    proxy.answers({end(), end(), block("a")});
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(stream.read(buffer.data(), 0, 1), -1);
    EXPECT_EQ(stream.read(), 'a');
}

// --- one byte -----------------------------------------------------------------------------------

TEST_F(ResponseStream, BytesComeAsValuesFromZeroTo255) {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        all += static_cast<char>(value);
    }
    proxy.answers(block(all));
    for (int value = 0; value < 256; ++value) {
        ASSERT_EQ(stream.read(), value);
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}

// By design: a zero byte and the absence of data look the same.
TEST_F(ResponseStream, SingleByteReadGivesZeroForAZeroByteAndForNoData) {
    proxy.answers({block(std::string(1, '\0')), nothing()});
    EXPECT_EQ(stream.read(), 0);
    EXPECT_EQ(stream.read(), 0);
    EXPECT_EQ(proxy.calls(), (Calls{receive(2)}));
}

// --- results that do not fit ---------------------------------------------------------------------

TEST_F(ResponseStream, ResultAboveABlockIsRaisedWhereTheBlockWouldBeRead) {
    for (const int result : {16385, 20000, INT_MAX}) {
        SCOPED_TRACE(result);
        proxy.answers({instruction(result), instruction(result), instruction(result)});
        EXPECT_EQ(failureOf([&] { Reader().read(); }), unexpectedState(result, 0));
        EXPECT_EQ(failureOf([&] { Reader().read(buffer.data(), 0, 10); }),
                  unexpectedState(result, 0));
        EXPECT_EQ(failureOf([&] { Reader().read(buffer.data(), 1, kBlock); }),
                  unexpectedState(result, 0));
    }
    EXPECT_EQ(errorLines()[0], "Unexpected state.  count = 16385 pos = 0");
    EXPECT_EQ(errorLines()[1], "-1");
}

TEST_F(ResponseStream, BlockThatIsFullToItsLastByteIsRead) {
    proxy.answers(block(std::string(kBlock, 'x')));
    for (int i = 0; i < kBlock; ++i) {
        ASSERT_EQ(stream.read(), 'x');
    }
}

TEST_F(ResponseStream, NegativeLengthOrOffsetIsALocalFailure) {
    const struct {
        int offset;
        int length;
    } rows[] = {{0, -1}, {-1, 1}, {-1, -1}, {0, INT_MIN}, {INT_MIN, kBlock}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.offset);
        EXPECT_EQ(failureOf([&] { stream.read(buffer.data(), row.offset, row.length); }),
                  failure<MSPRuntimeException>(
                      -1, "ResponseStream::read: offset and length must not be negative."));
    }
    EXPECT_EQ(proxy.calls(), Calls{});
    EXPECT_EQ(bytes(5), "~~~~~");
}

// --- the end of an exchange ----------------------------------------------------------------------

// By design: closing and destroying call Complete, whatever went before.
TEST_F(ResponseStream, CloseAndDestructionCompleteTheExchange) {
    {
        Reader other;
        other.close();
        other.close();
        EXPECT_EQ(proxy.calls(), (Calls{complete(2)}));
    }
    EXPECT_EQ(proxy.calls(), (Calls{complete(3)}));
}

TEST_F(ResponseStream, ResultOfCompleteIsIgnored) {
    proxy.answers({gives(Function::Complete, -1001), gives(Function::Complete, 7)});
    { Reader().close(); }
    EXPECT_EQ(proxy.calls(), (Calls{complete(2)}));
    EXPECT_EQ(logLines(), Lines{});
}

TEST_F(ResponseStream, CopiesReadTheSameBlockIndependently) {
    proxy.answers({block("abc"), block("d")});
    EXPECT_EQ(stream.read(), 'a');
    Reader copy(stream);
    EXPECT_EQ(stream.read(), 'b');
    EXPECT_EQ(copy.read(), 'b');
    Reader assigned;
    assigned = stream;
    EXPECT_EQ(assigned.read(), 'c');
    EXPECT_EQ(stream.read(), 'c');
    EXPECT_EQ(stream.read(), 'd');
    EXPECT_EQ(proxy.calls(), (Calls{receive(2)}));
}

TEST_F(ResponseStream, AssignedToItselfReadsOnWhereItWas) {
    proxy.answers(block("ab"));
    EXPECT_EQ(stream.read(), 'a');
    Reader& same = stream;
    stream = same;
    EXPECT_EQ(stream.read(), 'b');
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}
