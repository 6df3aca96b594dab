// The response's body as a standard stream, inflated.
#include <iterator>
#include <memory>

#include "LoggedTest.h"
#include "ZlibInterposer.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "testing/Bytes.h"
#include "testing/Gzip.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;

namespace {

using GzipStream = LoggedTest;

constexpr char kCorrupt[] =
    " Invalid or incomplete compressed response receieved for Zlib decompression\n";

std::unique_ptr<MSPStream> openBody() {
    auto stream = std::make_unique<MSPStream>(
        new MSPBufferBase<char>(std::make_unique<ResponseStream>(), true));
    stream->exceptions(std::ios::badbit);
    return stream;
}

std::string readAll(std::istream& stream) {
    std::string all;
    char piece[4096];
    while (stream.read(piece, sizeof piece) || stream.gcount() > 0) {
        all.append(piece, static_cast<std::size_t>(stream.gcount()));
    }
    return all;
}

std::string body() {
    return readAll(*openBody());
}

}  // namespace

TEST_F(GzipStream, InflatesWhatTheServerCompressed) {
    proxy.answers({block(gzip("The answer")), end()});
    EXPECT_EQ(body(), "The answer");
    EXPECT_EQ(proxy.calls(), (Calls{receive(2), complete()}));
    EXPECT_EQ(logLines(), Lines{});
}

TEST_F(GzipStream, StartsZlibForGzipOnlyWithItsOwnMemoryFunctions) {
    { const auto stream = openBody(); }
    EXPECT_EQ(ZlibInterposer::record.inits, 1);
    EXPECT_EQ(ZlibInterposer::record.windowBits, 31);
    EXPECT_EQ(ZlibInterposer::record.version, "1.2.11");
    EXPECT_FALSE(ZlibInterposer::record.ownAllocator);
    EXPECT_EQ(ZlibInterposer::record.availableIn, 0U);
    EXPECT_EQ(ZlibInterposer::record.ends, 1);
    EXPECT_EQ(proxy.calls(), (Calls{complete()})) << "nothing is asked before the first read";
}

TEST_F(GzipStream, UncompressedBodyLeavesZlibAlone) {
    proxy.answers({block("plain"), end()});
    {
        MSPStream stream(new MSPBufferBase<char>(std::make_unique<ResponseStream>(), false));
        EXPECT_EQ(readAll(stream), "plain");
    }
    EXPECT_EQ(ZlibInterposer::record.inits, 0);
    EXPECT_EQ(ZlibInterposer::record.inflates, 0);
    EXPECT_EQ(ZlibInterposer::record.ends, 0);
}

TEST_F(GzipStream, TextsOfEverySizeArriveWhole) {
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 16383U, 16384U, 16385U, 20479U,
                                   20480U, 20481U, 32768U, 40000U, 300000U}) {
        const std::string noise = sampleBytes(size);
        const std::string zeros(size, '\0');
        proxy.answers({inBlocksOf(16384, gzip(noise)), end()});
        EXPECT_EQ(body(), noise) << size;
        proxy.answers({inBlocksOf(16384, gzip(zeros)), end()});
        EXPECT_EQ(body(), zeros) << size;
    }
}

TEST_F(GzipStream, BlocksMayBeCutAnywhere) {
    const std::string text = sampleBytes(300);
    const std::string packed = gzip(text);
    for (std::size_t size = 1; size <= packed.size(); ++size) {
        proxy.answers({inBlocksOf(size, packed), end()});
        EXPECT_EQ(body(), text) << size;
    }
}

TEST_F(GzipStream, AsksAgainForAsLongAsNothingIsReady) {
    const std::string packed = gzip("The answer");
    proxy.answers({nothing(1000), block(packed.substr(0, 15)), nothing(1000000),
                   block(packed.substr(15)), nothing(3), end()});
    EXPECT_EQ(body(), "The answer");
    EXPECT_EQ(proxy.calls(), (Calls{receive(1000 + 1 + 1000000 + 1 + 3 + 1), complete()}));
}

TEST_F(GzipStream, EmptyBodyIsAtItsEndAtOnce) {
    proxy.answers(end());
    EXPECT_EQ(body(), "");
    EXPECT_EQ(ZlibInterposer::record.inflates, 0);
}

TEST_F(GzipStream, OneRefillGivesAtMostABlock) {
    const std::string packed = gzip(std::string(1 << 20, 'z'));
    ASSERT_LT(packed.size(), 16384U);
    proxy.answers(block(packed));
    const auto stream = openBody();
    EXPECT_EQ(stream->peek(), 'z');
    EXPECT_EQ(stream->rdbuf()->in_avail(), 16384);
    char bytes[16384];
    stream->read(bytes, sizeof bytes);
    EXPECT_EQ(stream->peek(), 'z');
    EXPECT_EQ(stream->rdbuf()->in_avail(), 16384);
    EXPECT_EQ(proxy.calls(), (Calls{receive()})) << "the input of the first block is still there";
}

// --- by design: the end of the gzip data is the end of the body ----------------------------------

TEST_F(GzipStream, BytesAfterTheGzipDataAreReadAndDropped) {
    proxy.answers({block(gzip("The answer") + "rubbish"), block("more"), nothing(2), end()});
    EXPECT_EQ(body(), "The answer");
    EXPECT_EQ(proxy.calls(), (Calls{receive(5), complete()}));
}

TEST_F(GzipStream, SecondMemberIsDropped) {
    proxy.answers({block(gzip("first") + gzip("second")), block(gzip("third")), end()});
    EXPECT_EQ(body(), "first");
    EXPECT_EQ(proxy.calls(), (Calls{receive(3), complete()}));
}

TEST_F(GzipStream, ManyBlocksAfterTheGzipDataAreAllRead) {
    proxy.answers({block(gzip("first")), block("x").times(100000), end()});
    EXPECT_EQ(body(), "first");
    EXPECT_EQ(proxy.calls(), (Calls{receive(100002), complete()}));
}

TEST_F(GzipStream, ResponseCutShortEndsWithoutFailure) {
    const std::string text = sampleBytes(600);
    const std::string packed = gzip(text);
    for (std::size_t cut = 0; cut < packed.size(); ++cut) {
        proxy.answers({inBlocksOf(16384, packed.substr(0, cut)), end()});
        const std::string came = body();
        EXPECT_EQ(came, text.substr(0, came.size())) << cut;
    }
    proxy.answers({block(packed.substr(0, packed.size() - 1)), end()});
    EXPECT_EQ(body(), text) << "only the checksum is cut";
    EXPECT_EQ(logLines(), Lines{});
}

TEST_F(GzipStream, ReadsAfterTheEndAskAgain) {
    proxy.answers({block(gzip("a")), end(), block("dropped"), end()});
    const auto stream = openBody();
    EXPECT_EQ(readAll(*stream), "a");
    stream->clear();
    EXPECT_EQ(readAll(*stream), "");
    EXPECT_EQ(proxy.calls(), (Calls{receive(4)}));
}

// --- data that cannot be inflated ----------------------------------------------------------------

TEST_F(GzipStream, OtherWrappersAreReportedAfterTheRestWasRead) {
    for (const std::string& bytes :
         {compressed("The answer", Wrapper::Zlib), compressed("The answer", Wrapper::Raw),
          std::string("The answer, as it is")}) {
        proxy.answers({block(bytes), block("more"), nothing(2), block("still more"), end()});
        EXPECT_EQ(failureOf([] { body(); }), failure<MSPRuntimeException>(-1, kCorrupt));
        EXPECT_EQ(proxy.takeCalls(), (Calls{receive(6), complete()}));
    }
    const std::string once = std::string(" [ERROR] : ") + kCorrupt + "\n [ERROR] : -1\n";
    EXPECT_EQ(fileText(logPath()), once + once + once);
}

TEST_F(GzipStream, FailureInACallThatProducedOutputIsRaisedAtOnce) {
    std::string packed = gzip("The answer");
    packed[packed.size() - 8] = static_cast<char>(~packed[packed.size() - 8]);
    proxy.answers(block(packed));
    EXPECT_EQ(failureOf([] { body(); }), failure<MSPRuntimeException>(-1, kCorrupt));
    EXPECT_EQ(proxy.calls(), (Calls{receive(), complete()})) << "the rest is not read";
}

TEST_F(GzipStream, FailureInALaterCallWithoutOutputIsRaisedAfterTheRestWasRead) {
    std::string packed = gzip("The answer");
    packed[packed.size() - 8] = static_cast<char>(~packed[packed.size() - 8]);
    proxy.answers({block(packed.substr(0, packed.size() - 8)),
                   block(packed.substr(packed.size() - 8)), block("more"), end()});
    const auto stream = openBody();
    char bytes[10];
    stream->read(bytes, sizeof bytes);
    EXPECT_EQ(std::string(bytes, 10), "The answer");
    EXPECT_EQ(failureOf([&] { stream->get(); }), failure<MSPRuntimeException>(-1, kCorrupt));
    EXPECT_EQ(proxy.calls(), (Calls{receive(4)}));
}

TEST_F(GzipStream, FailureStaysForLaterReads) {
    proxy.answers({block("no gzip"), end(), end()});
    const auto stream = openBody();
    EXPECT_EQ(failureOf([&] { stream->get(); }), failure<MSPRuntimeException>(-1, kCorrupt));
    stream->clear();
    EXPECT_EQ(failureOf([&] { stream->get(); }), failure<MSPRuntimeException>(-1, kCorrupt));
    EXPECT_EQ(proxy.calls(), (Calls{receive(3)}));
}

TEST_F(GzipStream, StatusOfTheProxyIsRaisedByItsClass) {
    proxy.setLastError("M");
    proxy.answers({block(gzip("The answer").substr(0, 12)), status(-1001)});
    EXPECT_EQ(failureOf([] { body(); }), failure<MSPConnectionException>(0, "M"));
    EXPECT_EQ(proxy.calls(), (Calls{receive(2), getLastError(), complete()}));
}

TEST_F(GzipStream, ResultAboveABlockIsNotInflated) {
    proxy.answers(instruction(16385));
    EXPECT_EQ(failureOf([] { body(); }),
              failure<MSPRuntimeException>(-1, "Unexpected state.  count = 16385 pos = 0"));
    EXPECT_EQ(ZlibInterposer::record.inflates, 0);
}
