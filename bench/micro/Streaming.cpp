// Uncompressed responses: read in place, read into a buffer, small blocks, opened and destroyed.
#include <boost/iostreams/concepts.hpp>
#include <boost/iostreams/stream.hpp>
#include <cstring>
#include <memory>
#include <ostream>

#include "micro/Works.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "support/Rows.h"
#include "support/Samples.h"
#include "support/ScriptedProxy.h"

namespace Morvenn::Bench {

namespace {

namespace Client = Net::MvServerProxy::Client;
namespace io = boost::iostreams;

constexpr int kBlockSize = MV_PROXY_BLOCK_SIZE;
constexpr std::size_t kLargeSize = std::size_t{32} << 20U;
constexpr std::size_t kSmallBlockSize = 64;
constexpr std::size_t kSmallBlocks = 16384;
constexpr std::size_t kPieceSize = std::size_t{1} << 20U;

class ReceiveSource : public io::source {
public:
    // Boost's stream asks with its own buffer's size, which is set to the proxy's block size.
    std::streamsize read(char* buffer, std::streamsize) { return MvServerProxy_Receive(buffer); }
};

std::unique_ptr<std::istream> openLibrary() {
    return std::make_unique<Client::MSPStream>(
        new Client::MSPBufferBase<char>(std::make_unique<Client::ResponseStream>(), false));
}

std::unique_ptr<std::istream> openBoost() {
    return std::make_unique<io::stream<ReceiveSource>>(ReceiveSource(), kBlockSize);
}

// A stream of the standard library over nothing: what every std::istream costs.
void openNothing() {
    class Nothing : public std::streambuf {};
    Nothing nothing;
    const std::istream stream(&nothing);
    benchmark::DoNotOptimize(&stream);
}

using Open = std::unique_ptr<std::istream> (*)();

void receiveInPlace(Sink& sink) {
    alignas(kCacheLine) char block[kBlockSize];
    for (int count = MvServerProxy_Receive(block); count > 0;
         count = MvServerProxy_Receive(block)) {
        sink.sputn(block, count);
    }
    MvServerProxy_Complete();
}

void receiveAndCopy(Sink& sink) {
    alignas(kCacheLine) char block[kBlockSize];
    alignas(kCacheLine) char buffer[kBlockSize];
    for (int count = MvServerProxy_Receive(block); count > 0;
         count = MvServerProxy_Receive(block)) {
        const auto size = static_cast<std::size_t>(count);
        std::memcpy(buffer, block, size);
        sink.take({buffer, size});
    }
    MvServerProxy_Complete();
}

void streamInPlace(Open open, Sink& sink) {
    const auto stream = open();
    std::ostream out(&sink);
    out << stream->rdbuf();
    MvServerProxy_Complete();
}

void readBlocks(Open open, Sink& sink) {
    const auto stream = open();
    alignas(kCacheLine) char buffer[kBlockSize];
    do {
        stream->read(buffer, kBlockSize);
        sink.take({buffer, static_cast<std::size_t>(stream->gcount())});
    } while (*stream);
    MvServerProxy_Complete();
}

std::function<void(Sink&)> with(const Answer& answer, const std::function<void(Sink&)>& run) {
    return [answer, run](Sink& sink) {
        setAnswer(answer);
        run(sink);
    };
}

std::function<void(Sink&)> inPlace(Open open) {
    return [open](Sink& sink) { streamInPlace(open, sink); };
}

std::function<void(Sink&)> blocks(Open open) {
    return [open](Sink& sink) { readBlocks(open, sink); };
}

}  // namespace

void registerStreaming() {
    alignas(kCacheLine) static char piece[kPieceSize];
    xmlSample(kPieceSize).copy(piece, kPieceSize);
    const std::string_view data(piece, kPieceSize);
    Answer large = answerOf({}, data);
    large.bodySize = kLargeSize;
    registerRows("stream_in_place", kLargeSize,
                 {{"limit", with(large, receiveInPlace)},
                  {"library", with(large, inPlace(openLibrary))},
                  {"boost", with(large, inPlace(openBoost))}});
    registerRows("stream_read", kLargeSize,
                 {{"limit", with(large, receiveAndCopy)},
                  {"library", with(large, blocks(openLibrary))},
                  {"boost", with(large, blocks(openBoost))}});

    Answer small = answerOf({}, data);
    small.blockSize = kSmallBlockSize;
    small.bodySize = kSmallBlocks * kSmallBlockSize;
    registerRows("small_blocks", kSmallBlocks,
                 {{"limit", with(small, receiveInPlace)},
                  {"library", with(small, inPlace(openLibrary))},
                  {"boost", with(small, inPlace(openBoost))}});

    registerRows("open_and_destroy", 1,
                 {{"limit", with(answerOf({}, {}), [](Sink&) { openNothing(); })},
                  {"library", with(answerOf({}, {}), [](Sink&) { openLibrary(); })},
                  {"boost", with(answerOf({}, {}), [](Sink&) { openBoost(); })}});
}

}  // namespace Morvenn::Bench
