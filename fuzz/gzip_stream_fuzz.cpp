// A compressed response in blocks of any size: the stream gives what zlib gives, fails where it
// fails, and asks the proxy as often as the plain algorithm does.
#include <zlib.h>

#include <istream>
#include <memory>

#include "fuzz/BlockProxy.h"
#include "fuzz/Fuzz.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "tests/reference/Inflation.h"

using namespace Morvenn::Net::MvServerProxy;

namespace {

struct Outcome {
    std::string bytes;
    std::string failure;
    bool failed = false;
};

Outcome streamed() {
    Outcome outcome;
    auto buffer = std::make_unique<Client::MSPBufferBase<char>>(
        std::make_unique<Client::ResponseStream>(), true);
    Client::MSPStream stream(buffer.get());
    static_cast<void>(buffer.release());
    stream.exceptions(std::ios::badbit);
    try {
        while (stream.peek() != EOF) {
            std::string portion(static_cast<std::size_t>(stream.rdbuf()->in_avail()), '\0');
            stream.read(portion.data(), static_cast<std::streamsize>(portion.size()));
            outcome.bytes += portion;
        }
    } catch (const Client::MSPRuntimeException& e) {
        outcome.failed = true;
        outcome.failure = e.getMessage();
    }
    return outcome;
}

Outcome expected(const std::vector<std::string>& blocks, std::size_t& receives, bool& ended) {
    Outcome outcome;
    Reference::Inflation inflation([&] {
        const std::size_t number = receives++;
        return number < blocks.size() ? blocks[number] : std::string();
    });
    for (std::string portion = inflation.next(); !portion.empty(); portion = inflation.next()) {
        outcome.bytes += portion;
    }
    ended = inflation.status() == Z_STREAM_END;
    outcome.failed = inflation.status() != Z_OK && !ended;
    outcome.failure = outcome.failed ? Reference::zlibMessage(inflation.status()) : "";
    return outcome;
}

// The whole in one call, which knows nothing of blocks.
std::string inOneCall(std::string bytes, std::size_t room) {
    z_stream stream{};
    std::string out(room + 1, '\0');
    Fuzz::require(inflateInit2(&stream, 31) == Z_OK, "zlib starts");
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    inflate(&stream, Z_FINISH);
    out.resize(out.size() - stream.avail_out);
    inflateEnd(&stream);
    return out;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const std::size_t blockSize = 1 + input.byte() * 64;
    const std::string bytes = input.rest();
    const std::vector<std::string> blocks = Fuzz::blocksOf(bytes, blockSize);

    std::size_t receives = 0;
    bool ended = false;
    const Outcome wanted = expected(blocks, receives, ended);
    Fuzz::BlockProxy::start(blocks);
    const Outcome came = streamed();
    Fuzz::require(came.bytes == wanted.bytes, "the bytes are those of the plain algorithm");
    Fuzz::require(came.failed == wanted.failed && came.failure == wanted.failure,
                  "the failure is that of the plain algorithm");
    Fuzz::require(Fuzz::BlockProxy::receives() == receives, "the proxy is asked as often");
    Fuzz::require(Fuzz::BlockProxy::completes() == 1, "the exchange is completed once");
    if (ended) {
        Fuzz::require(inOneCall(bytes, came.bytes.size()) == came.bytes, "one call gives the same");
    }
    return 0;
}
