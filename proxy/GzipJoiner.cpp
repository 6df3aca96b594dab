#include "GzipJoiner.h"

#include <zlib.h>

#include <algorithm>
#include <initializer_list>
#include <new>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr int kGzipOnly = 31;
constexpr int kBlockEnd = 128;  // in data_type: inflate() has stopped before a block
constexpr int kLastBlock = 64;  // the block before that was the last
constexpr int kUnusedBits = 7;
// What was inflated is not kept. zlib copies the end of each piece, the less often the longer they
// are.
constexpr std::size_t kScratch = 128 * 1024;
constexpr std::string_view kMagic = "\x1f\x8b";
// An empty stored block without its three header bits, which are zero like the padding before it.
constexpr std::string_view kEmptyStored("\x00\x00\xFF\xFF", 4);
// An empty last block with fixed codes, at a byte boundary.
constexpr std::string_view kEmptyLast("\x03\x00", 2);

void appendNumber(std::string& out, std::uint32_t number) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        out += static_cast<char>(number >> shift & 0xFFU);
    }
}

std::uint32_t readNumber(std::string_view bytes) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i) {
        number |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << 8U * i;
    }
    return number;
}

}  // namespace

// Check sums are left to the reader: they take a third of the time of inflating.
GzipJoiner::GzipJoiner()
    : m_zstream(std::make_unique<z_stream_s>()), m_scratch(new unsigned char[kScratch]) {
    if (inflateInit2(m_zstream.get(), kGzipOnly) != Z_OK ||
        inflateValidate(m_zstream.get(), 0) != Z_OK) {
        throw std::bad_alloc();
    }
}

GzipJoiner::~GzipJoiner() {
    inflateEnd(m_zstream.get());
}

std::string_view GzipJoiner::pass(std::string_view bytes) {
    if (m_stage == Stage::Over) {
        return {};
    }
    m_waiting.append(bytes);
    look();
    const std::size_t count = releasable();
    m_handedOn.assign(m_waiting, 0, count);
    m_waiting.erase(0, count);
    for (std::size_t* position : {&m_next, &m_markAt, &m_dataEnd}) {
        *position -= std::min(*position, count);
    }
    m_headerAt -= m_headerAt == kNowhere ? 0 : count;
    return m_handedOn;
}

std::string_view GzipJoiner::finish() {
    if (m_stage == Stage::Between && m_joined) {
        close();
    } else if (m_headerAt != kNowhere) {
        m_waiting.erase(m_headerAt);
    }
    m_handedOn.swap(m_waiting);
    m_waiting.clear();
    m_stage = Stage::Over;
    return m_handedOn;
}

// How much of what waits can be handed on. The last byte of the data stays: it may hold a mark, or
// bits that a joint has to clear.
std::size_t GzipJoiner::releasable() const {
    if (m_stage == Stage::Through || m_stage == Stage::Over) {
        return m_waiting.size();
    }
    if (m_headerAt != kNowhere) {
        return m_headerAt;
    }
    if (m_mark != 0) {
        return m_markAt;
    }
    const std::size_t end = m_dataOver ? m_dataEnd : m_next;
    return end - std::min<std::size_t>(end, 1);
}

void GzipJoiner::look() {
    for (;;) {
        const Stage before = m_stage;
        if (m_stage == Stage::Inside) {
            lookInside();
        } else if (m_stage == Stage::Between) {
            lookBetween();
        }
        if (m_stage == before) {
            return;
        }
    }
}

void GzipJoiner::lookInside() {
    z_stream_s& z = *m_zstream;
    for (;;) {
        if (m_blockDue && !atBlockBegin()) {
            return;
        }
        z.next_in = reinterpret_cast<unsigned char*>(m_waiting.data() + m_next);
        z.avail_in = static_cast<uInt>(m_waiting.size() - m_next);
        z.next_out = m_scratch.get();
        z.avail_out = static_cast<uInt>(kScratch);
        const int status = inflate(&z, Z_BLOCK);
        m_next = m_waiting.size() - z.avail_in;
        if (status == Z_STREAM_END) {
            endMember();
            return;
        }
        if (status == Z_BUF_ERROR) {
            break;  // it wants more than there is
        }
        if (status != Z_OK) {
            damaged();
            return;
        }
        if ((z.data_type & kBlockEnd) != 0) {
            stopped();
        }
    }
    if (m_mark != 0 && m_waiting.size() - m_markAt > kWaitingRoom) {
        unmarkLastBlock();
    }
}

// inflate() has stopped before a block or after the last one.
void GzipJoiner::stopped() {
    const int type = m_zstream->data_type;
    m_unusedBits = static_cast<unsigned>(type & kUnusedBits);
    if ((type & kLastBlock) != 0) {
        m_dataOver = true;
        m_dataEnd = m_next;
        return;
    }
    m_blockDue = true;
    if (m_headerAt != kNowhere) {
        m_waiting.erase(m_headerAt, m_next - m_headerAt);
        m_next = m_headerAt;
        m_headerAt = kNowhere;
    }
}

// At the first bit of a block, which marks the last one. False when its byte is not there yet.
bool GzipJoiner::atBlockBegin() {
    const bool inByteBefore = m_unusedBits != 0;
    if (!inByteBefore && m_next == m_waiting.size()) {
        return false;
    }
    m_blockDue = false;
    const std::size_t at = inByteBefore ? m_next - 1 : m_next;
    const auto mark = static_cast<unsigned char>(inByteBefore ? 0x100U >> m_unusedBits : 1U);
    if ((static_cast<unsigned char>(m_waiting[at]) & mark) != 0) {
        m_markAt = at;
        m_mark = mark;
    }
    return true;
}

void GzipJoiner::unmarkLastBlock() {
    m_waiting[m_markAt] =
        static_cast<char>(static_cast<unsigned char>(m_waiting[m_markAt]) & ~m_mark);
    m_mark = 0;
    m_joined = true;
}

// The trailer is taken at its word. One that is wrong makes the joined one wrong as well.
void GzipJoiner::endMember() {
    const auto trailer = std::string_view(m_waiting).substr(m_dataEnd);
    m_sum = crc32_combine(m_sum, readNumber(trailer), static_cast<z_off_t>(m_zstream->total_out));
    m_length += readNumber(trailer.substr(sizeof(std::uint32_t)));
    m_stage = Stage::Between;
}

void GzipJoiner::lookBetween() {
    const auto after = std::string_view(m_waiting).substr(m_next);
    if (after.substr(0, kMagic.size()) == kMagic) {
        beginNextMember();
        return;
    }
    if (after == kMagic.substr(0, after.size())) {
        return;  // more is needed to tell
    }
    if (m_joined) {
        close();
        m_stage = Stage::Over;
        return;
    }
    m_stage = Stage::Through;
}

void GzipJoiner::beginNextMember() {
    const std::string next = m_waiting.substr(m_next);
    if (m_mark != 0) {
        unmarkLastBlock();
    }
    m_joined = true;
    alignData();
    m_headerAt = m_next = m_waiting.size();
    m_waiting += next;
    m_dataOver = false;
    inflateReset(m_zstream.get());
    m_stage = Stage::Inside;
}

// Ends the data at a byte boundary with an empty block, and drops the trailer.
void GzipJoiner::alignData() {
    constexpr unsigned kHeaderBits = 3;
    m_waiting.resize(m_dataEnd);
    m_waiting.back() =
        static_cast<char>(static_cast<unsigned char>(m_waiting.back()) & 0xFFU >> m_unusedBits);
    if (m_unusedBits < kHeaderBits) {
        m_waiting += '\0';
    }
    m_waiting += kEmptyStored;
}

// Ends the joined member. A last block that has kept its mark is the last one; otherwise an empty
// one is added.
void GzipJoiner::close() {
    if (m_mark != 0) {
        m_waiting.resize(m_dataEnd);
    } else {
        if (m_headerAt == kNowhere) {
            alignData();
        }
        m_waiting += kEmptyLast;
    }
    appendNumber(m_waiting, static_cast<std::uint32_t>(m_sum));
    appendNumber(m_waiting, m_length);
}

void GzipJoiner::damaged() {
    if (m_headerAt != kNowhere) {  // not a member, only bytes that begin like one
        m_waiting.resize(m_headerAt);
        close();
        m_headerAt = kNowhere;
        m_stage = Stage::Over;
        return;
    }
    m_stage = Stage::Through;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
