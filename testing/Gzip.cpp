#include "testing/Gzip.h"

#include <zlib.h>

#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

// zlib's way to name the wrapper: 15 bits of window, plus 16 for gzip, negative for none.
int windowBits(Wrapper wrapper) {
    switch (wrapper) {
        case Wrapper::Zlib:
            return 15;
        case Wrapper::Raw:
            return -15;
        case Wrapper::Gzip:
            break;
    }
    return 31;
}

}  // namespace

std::string compressed(const std::string& bytes, Wrapper wrapper) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, windowBits(wrapper), 8,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("compressed: zlib does not start");
    }
    std::string input = bytes;
    std::string output(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    const int status = deflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    if (status != Z_STREAM_END) {
        throw std::runtime_error("compressed: zlib status " + std::to_string(status));
    }
    return output;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
