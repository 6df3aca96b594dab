// Compressed responses: a long one of XML and of JSON, and one of 1 KiB with its set-up.
#include <Poco/InflatingStream.h>
#include <zlib.h>

#include <boost/iostreams/filter/gzip.hpp>
#include <boost/iostreams/filtering_stream.hpp>
#include <memory>

#include "micro/Works.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "support/ReceiveBuffer.h"
#include "support/Rows.h"
#include "support/Samples.h"
#include "support/ScriptedProxy.h"

namespace Morvenn::Bench {

namespace {

namespace Client = Net::MvServerProxy::Client;
namespace io = boost::iostreams;

constexpr int kBlockSize = MV_PROXY_BLOCK_SIZE;
constexpr std::size_t kLargeSize = std::size_t{8} << 20U;
constexpr std::size_t kSmallSize = 1024;

// zlib alone, with the same two buffers, straight into the reader's own.
void rawZlib(Sink& sink) {
    alignas(kCacheLine) char in[kBlockSize];
    alignas(kCacheLine) char out[kBlockSize];
    z_stream z{};
    int status = inflateInit2(&z, 15 + 16);
    while (status == Z_OK) {
        if (z.avail_in == 0) {
            const int count = MvServerProxy_Receive(in);
            if (count <= 0) {
                break;
            }
            z.next_in = reinterpret_cast<Bytef*>(in);
            z.avail_in = static_cast<uInt>(count);
        }
        z.next_out = reinterpret_cast<Bytef*>(out);
        z.avail_out = kBlockSize;
        status = inflate(&z, Z_NO_FLUSH);
        sink.take({out, kBlockSize - z.avail_out});
    }
    inflateEnd(&z);
    MvServerProxy_Complete();
}

void readBlocks(std::istream& stream, Sink& sink) {
    alignas(kCacheLine) char buffer[kBlockSize];
    do {
        stream.read(buffer, kBlockSize);
        sink.take({buffer, static_cast<std::size_t>(stream.gcount())});
    } while (stream);
}

void library(Sink& sink) {
    Client::MSPStream stream(
        new Client::MSPBufferBase<char>(std::make_unique<Client::ResponseStream>(), true));
    readBlocks(stream, sink);
}

void poco(Sink& sink) {
    ReceiveBuffer buffer;
    std::istream source(&buffer);
    Poco::InflatingInputStream stream(source, Poco::InflatingStreamBuf::STREAM_GZIP);
    readBlocks(stream, sink);
}

void boostDefaults(Sink& sink) {
    ReceiveBuffer buffer;
    io::filtering_istream stream;
    stream.push(io::gzip_decompressor());
    stream.push(buffer);
    readBlocks(stream, sink);
}

std::function<void(Sink&)> with(const std::string& data, void (*run)(Sink&)) {
    return [data, run](Sink& sink) {
        setAnswer(answerOf({}, data));
        run(sink);
    };
}

void registerOne(const std::string& work, const std::string& text) {
    const std::string data = gzip(text);
    registerRows(work, static_cast<double>(text.size()),
                 {{"limit", with(data, rawZlib)},
                  {"library", with(data, library)},
                  {"poco", with(data, poco)},
                  {"boost", with(data, boostDefaults)}});
}

}  // namespace

void registerInflation() {
    registerOne("gzip_xml", xmlSample(kLargeSize));
    registerOne("gzip_json", jsonSample(kLargeSize));
    registerOne("gzip_1_kib", xmlSample(kSmallSize));
}

}  // namespace Morvenn::Bench
