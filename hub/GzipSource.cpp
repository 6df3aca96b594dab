#include "GzipSource.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <new>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kInputBlock = 32768;
constexpr int kGzipWindow = 15 + 16;  // the largest window, with a gzip header instead of zlib's
constexpr int kMemoryLevel = 8;

}  // namespace

GzipSource::GzipSource(SourcePtr plain)
    : m_plain(std::move(plain)), m_stream(std::make_unique<z_stream_s>()), m_input(kInputBlock) {
    // Fast rather than small: the hub talks over loopback, the time is what is felt.
    if (deflateInit2(m_stream.get(), Z_BEST_SPEED, Z_DEFLATED, kGzipWindow, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
}

GzipSource::~GzipSource() {
    deflateEnd(m_stream.get());
}

std::ptrdiff_t GzipSource::read(char* to, std::size_t room) {
    const auto wanted = static_cast<uInt>(std::min<std::size_t>(room, INT_MAX));
    m_stream->next_out = reinterpret_cast<Bytef*>(to);
    m_stream->avail_out = wanted;
    while (!m_finished && m_stream->avail_out == wanted) {
        if (m_stream->avail_in == 0 && !m_inputEnded && !refill()) {
            return kBroken;
        }
        m_finished = deflate(m_stream.get(), m_inputEnded ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_END;
    }
    return static_cast<std::ptrdiff_t>(wanted - m_stream->avail_out);
}

bool GzipSource::refill() {
    const std::ptrdiff_t count = m_plain->read(m_input.data(), m_input.size());
    if (count == kBroken) {
        return false;
    }
    m_stream->next_in = reinterpret_cast<Bytef*>(m_input.data());
    m_stream->avail_in = static_cast<uInt>(count);
    m_inputEnded = count == kEnd;
    return true;
}

std::optional<std::uint64_t> GzipSource::size() const {
    return std::nullopt;
}

std::string gzipped(std::string text) {
    GzipSource source(std::make_unique<TextSource>(std::move(text)));
    std::array<char, 4096> block{};
    std::string all;
    for (auto count = source.read(block.data(), block.size()); count > 0;
         count = source.read(block.data(), block.size())) {
        all.append(block.data(), static_cast<std::size_t>(count));
    }
    return all;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
