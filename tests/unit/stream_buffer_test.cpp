// The response's body as a standard stream, uncompressed.
#include <iterator>
#include <memory>
#include <new>

#include "LoggedTest.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;

namespace {

std::unique_ptr<MSPStream> openBody() {
    auto source = std::make_unique<ResponseStream>();
    return std::make_unique<MSPStream>(new MSPBufferBase<char>(std::move(source), false));
}

std::string readAll(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), {}};
}

class StreamBuffer : public LoggedTest {
protected:
    // The body, read in an instance of its own that is destroyed before this returns.
    std::string body() { return readAll(*openBody()); }
};

}  // namespace

TEST_F(StreamBuffer, BlocksFollowEachOther) {
    proxy.answers({block("ab"), block("c"), block(std::string("\0\xff", 2)), end()});
    EXPECT_EQ(body(), std::string("abc\0\xff", 5));
    EXPECT_EQ(proxy.calls(), (Calls{receive(4), complete()}));
}

TEST_F(StreamBuffer, BlocksOfEverySizeArrive) {
    for (const std::size_t size : {1U, 2U, 4095U, 4096U, 4097U, 16383U, 16384U}) {
        const std::string bytes = sampleBytes(40000);
        proxy.answers({inBlocksOf(size, bytes), end()});
        EXPECT_EQ(body(), bytes) << size;
    }
}

TEST_F(StreamBuffer, EmptyResponseIsAtItsEndAtOnce) {
    proxy.answers(end());
    const auto stream = openBody();
    EXPECT_EQ(stream->get(), std::char_traits<char>::eof());
    EXPECT_TRUE(stream->eof());
    EXPECT_FALSE(stream->bad());
    EXPECT_EQ(proxy.calls(), (Calls{receive()}));
}

TEST_F(StreamBuffer, NothingIsAskedBeforeTheFirstRead) {
    { const auto stream = openBody(); }
    EXPECT_EQ(proxy.calls(), (Calls{complete()}));
}

TEST_F(StreamBuffer, AsksAgainForAsLongAsNothingIsReady) {
    for (const std::size_t times : {1U, 1000U, 1000000U}) {
        proxy.answers({nothing(times), block("a"), nothing(times), end()});
        EXPECT_EQ(body(), "a");
        EXPECT_EQ(proxy.takeCalls(), (Calls{receive(2 * times + 2), complete()}));
    }
}

TEST_F(StreamBuffer, BlockGoesStraightIntoTheGetArea) {
    proxy.answers({block("abcd"), end()});
    const auto stream = openBody();
    EXPECT_EQ(stream->peek(), 'a');
    EXPECT_EQ(stream->rdbuf()->in_avail(), 4) << "one block, not more";
    EXPECT_EQ(readAll(*stream), "abcd");
}

TEST_F(StreamBuffer, HighBytesAreNotMistakenForTheEnd) {
    proxy.answers({block("\xff\xff"), end()});
    const auto stream = openBody();
    EXPECT_EQ(stream->get(), 255);
    EXPECT_EQ(stream->get(), 255);
    EXPECT_EQ(stream->get(), std::char_traits<char>::eof());
}

TEST_F(StreamBuffer, ReadsAfterTheEndAskAgain) {
    proxy.answers({block("a"), end(), end(), block("b"), end()});
    const auto stream = openBody();
    EXPECT_EQ(readAll(*stream), "a");
    stream->clear();
    EXPECT_EQ(readAll(*stream), "");
    stream->clear();
    EXPECT_EQ(readAll(*stream), "b");
    EXPECT_EQ(proxy.calls(), (Calls{receive(5)}));
}

TEST_F(StreamBuffer, ResponseThatIsNotReadCompletesAllTheSame) {
    proxy.answers(block("unread"));
    {
        const auto stream = openBody();
        EXPECT_EQ(stream->get(), 'u');
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(), complete()}));
}

// --- failures -----------------------------------------------------------------------------------

TEST_F(StreamBuffer, StatusBelowTheEndIsRaisedByItsClass) {
    const struct {
        int status;
        Failure expected;
    } rows[] = {
        {-2, failure<MSPUnrecognisedException>(0, "M")},
        {-246, failure<MSPUnrecognisedException>(0, "M")},
        {-1001, failure<MSPConnectionException>(0, "M")},
        {-1002, failure<MSPProtocolException>(0, "M")},
        {-1003, failure<MSPRuntimeException>(0, "M")},
        {-5005, failure<MSPConnectionException>(0, "M")},
    };
    proxy.setLastError("M");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        proxy.answers({block("ab"), status(row.status)});
        EXPECT_EQ(failureOf([] {
                      const auto stream = openBody();
                      stream->exceptions(std::ios::badbit);
                      readAll(*stream);
                      stream->get();
                  }),
                  row.expected);
        EXPECT_EQ(proxy.takeCalls(), (Calls{receive(2), getLastError(), complete()}));
    }
}

TEST_F(StreamBuffer, FailureShowsAsBadWithoutExceptions) {
    proxy.answers({block("ab"), status(-1001)});
    const auto stream = openBody();
    char bytes[16];
    stream->read(bytes, sizeof bytes);
    EXPECT_TRUE(stream->bad());
    EXPECT_FALSE(stream->eof());
    EXPECT_EQ(proxy.calls(), (Calls{receive(2), getLastError()}));
}

TEST_F(StreamBuffer, StreamIsLeftAsItWasByAFailure) {
    proxy.answers({status(-1001), block("after"), end()});
    const auto stream = openBody();
    stream->get();
    EXPECT_TRUE(stream->bad());
    stream->clear();
    EXPECT_EQ(readAll(*stream), "after");
}

TEST_F(StreamBuffer, ResultAboveABlockIsNotReadFromTheGetArea) {
    for (const int result : {16385, 20000}) {
        proxy.answers(instruction(result));
        EXPECT_EQ(failureOf([] {
                      const auto stream = openBody();
                      stream->exceptions(std::ios::badbit);
                      stream->get();
                  }),
                  failure<MSPRuntimeException>(
                      -1, "Unexpected state.  count = " + std::to_string(result) + " pos = 0"));
    }
}

// --- what the buffer does not do ----------------------------------------------------------------

TEST_F(StreamBuffer, OnlyReads) {
    proxy.answers(block("abc"));
    const auto stream = openBody();
    EXPECT_EQ(stream->get(), 'a');
    EXPECT_EQ(stream->rdbuf()->sputc('x'), std::char_traits<char>::eof());
    EXPECT_EQ(stream->rdbuf()->pubseekoff(0, std::ios::beg), std::streampos(-1));
    EXPECT_EQ(stream->rdbuf()->pubsync(), 0);
    EXPECT_EQ(stream->rdbuf()->sungetc(), 'a') << "within the get area";
    EXPECT_EQ(stream->rdbuf()->sungetc(), std::char_traits<char>::eof());
}

TEST_F(StreamBuffer, AssignedToItselfReadsOnWhereItWas) {
    proxy.answers({block("abc"), end()});
    MSPBufferBase<char> buffer(std::make_unique<ResponseStream>(), false);
    EXPECT_EQ(buffer.sbumpc(), 'a');
    MSPBufferBase<char>& same = buffer;
    buffer = same;
    EXPECT_EQ(buffer.sbumpc(), 'b');
    EXPECT_EQ(buffer.sbumpc(), 'c');
    EXPECT_EQ(buffer.sbumpc(), std::char_traits<char>::eof());
    EXPECT_EQ(proxy.calls(), (Calls{receive(2)}));
}

TEST_F(StreamBuffer, CopySharesTheExchange) {
    proxy.answers(block("abc"));
    {
        MSPBufferBase<char> first(std::make_unique<ResponseStream>(), false);
        EXPECT_EQ(first.sbumpc(), 'a');
        // Only one of the two may be destroyed, so the copy lies where nothing destroys it.
        alignas(MSPBufferBase<char>) unsigned char place[sizeof(MSPBufferBase<char>)];
        auto* const copy = new (place) MSPBufferBase<char>(first);
        EXPECT_EQ(copy->sbumpc(), 'b');
        EXPECT_EQ(first.sbumpc(), 'b');
        EXPECT_EQ(proxy.calls(), (Calls{receive()}));
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(), complete()}));
}
