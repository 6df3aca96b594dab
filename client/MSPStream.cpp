// The stream buffer over the proxy's blocks, its inflation, and the stream that owns it.
#include <zlib.h>

#include <cstring>

#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"

namespace Morvenn::Net::MvServerProxy::Client {

namespace {

constexpr int kBlockSize = ResponseStream::kBlockSize;
constexpr int kGzipOnly = 15 + 16;  // largest window; a gzip wrapper and no other
// The version that zlib compares with its own; only the first digit matters to it.
constexpr char kZlibVersion[] = "1.2.11";

struct ZlibFailure {
    int status;
    const char* message;
};

// By design: callers and log readers compare these texts byte for byte, blanks, line ends and
// spelling included. (GzipFailure.StatusWithoutOutputIsRaisedAfterTheRestWasRead)
constexpr ZlibFailure kZlibFailures[] = {
    {Z_ERRNO, " Invalid I/p or O/p Stream set for Zlib decompression"},
    {Z_STREAM_ERROR,
     "Invalid compression level set in Zlib for decompressing compressed response \n"},
    {Z_DATA_ERROR, " Invalid or incomplete compressed response receieved for Zlib decompression\n"},
    {Z_MEM_ERROR, "Out of memory\n. Decompression buffer for Zlib is smaller than required \n"},
    {Z_BUF_ERROR, "Buffer is either invalid or is not large enough"},
    {Z_VERSION_ERROR, "Zlib version mismatch!\n"},
};

[[noreturn]] void throwZlibException(int status) {
    for (const ZlibFailure& row : kZlibFailures) {
        if (row.status == status) {
            Internal::throwLocal(Internal::kLocalFailure, row.message);
        }
    }
    Internal::throwLocal(Internal::kLocalFailure, "");
}

std::unique_ptr<z_stream> openInflation(char* input) {
    auto zstream = std::make_unique<z_stream>();
    zstream->next_in = reinterpret_cast<Bytef*>(input);
    const int status = inflateInit2_(zstream.get(), kGzipOnly, kZlibVersion, sizeof(z_stream));
    if (status != Z_OK) {
        throwZlibException(status);
    }
    return zstream;
}

}  // namespace

template <class CharT>
MSPBufferBase<CharT>::MSPBufferBase(std::unique_ptr<ResponseStream> responseStream, bool compressed)
    : m_responseStream(nullptr),
      m_compressed(compressed),
      m_inflateStatus(Z_OK),
      m_inBuffer(nullptr),
      m_zstream(nullptr) {
    present(0);
    if (m_compressed) {
        std::unique_ptr<CharT[]> input(new CharT[kBlockSize]);
        m_zstream = openInflation(input.get()).release();
        m_inBuffer = input.release();
    }
    m_responseStream = responseStream.release();
}

// NOLINTNEXTLINE(*-member-init): assigned below
template <class CharT>
MSPBufferBase<CharT>::MSPBufferBase(const MSPBufferBase& other)
    : std::basic_streambuf<CharT>(other) {
    *this = other;
}

template <class CharT>
MSPBufferBase<CharT>& MSPBufferBase<CharT>::operator=(const MSPBufferBase& other) {
    if (this == &other) {
        return *this;
    }
    std::basic_streambuf<CharT>::operator=(other);
    m_responseStream = other.m_responseStream;
    m_compressed = other.m_compressed;
    m_inflateStatus = other.m_inflateStatus;
    m_inBuffer = other.m_inBuffer;
    m_zstream = other.m_zstream;
    CharT* const area = getArea();
    std::memcpy(area, other.eback(), kBlockSize);
    const auto place = other.gptr() - other.eback();
    const auto end = other.egptr() - other.eback();
    this->setg(area, area + place, area + end);
    return *this;
}

template <class CharT>
MSPBufferBase<CharT>::~MSPBufferBase() {
    delete[] m_inBuffer;
    delete m_responseStream;
    if (!m_compressed) {
        return;
    }
    const std::unique_ptr<z_stream> zstream(m_zstream);
    try {
        const int status = inflateEnd(zstream.get());
        if (status != Z_OK) {
            throwZlibException(status);
        }
    } catch (...) {  // NOLINT(bugprone-empty-catch): logged where it was raised; it goes no further
    }
}

template <class CharT>
typename MSPBufferBase<CharT>::int_type MSPBufferBase<CharT>::underflow() {
    return m_compressed ? inflateMore() : present(receive(getArea()));
}

template <class CharT>
int MSPBufferBase<CharT>::sync() {
    return 0;
}

// The next block: its size, or -1 at the end of the response.
template <class CharT>
int MSPBufferBase<CharT>::receive(CharT* buffer) {
    int count = 0;
    while (count == 0) {
        count = m_responseStream->read(buffer, 0, kBlockSize);
    }
    if (count < -1) {
        Internal::throwForStatus(count);
    }
    if (count > kBlockSize) {
        Internal::throwUnexpectedState(count, 0);
    }
    return count;
}

template <class CharT>
typename MSPBufferBase<CharT>::int_type MSPBufferBase<CharT>::inflateMore() {
    z_stream& z = *m_zstream;
    z.next_out = reinterpret_cast<Bytef*>(getArea());
    z.avail_out = kBlockSize;
    bool isEnd = false;
    while (!isEnd && z.avail_out == kBlockSize) {
        if (z.avail_in == 0) {
            const int count = receive(m_inBuffer);
            isEnd = count < 0;
            z.next_in = reinterpret_cast<Bytef*>(m_inBuffer);
            z.avail_in = isEnd ? 0 : static_cast<uInt>(count);
        }
        if (z.avail_in != 0 && m_inflateStatus == Z_OK) {
            m_inflateStatus = inflate(&z, Z_NO_FLUSH);
        } else {
            z.avail_in = 0;  // what follows the gzip data, or a failure in them, is dropped
        }
    }
    if (m_inflateStatus != Z_OK && m_inflateStatus != Z_STREAM_END) {
        throwZlibException(m_inflateStatus);
    }
    return present(isEnd ? -1 : kBlockSize - static_cast<int>(z.avail_out));
}

// Makes the first count bytes the get area; none for a negative count, which is the end.
template <class CharT>
typename MSPBufferBase<CharT>::int_type MSPBufferBase<CharT>::present(int count) {
    using Traits = std::char_traits<CharT>;
    CharT* const area = getArea();
    this->setg(area, area, area + (count > 0 ? count : 0));
    return count > 0 ? Traits::to_int_type(*area) : Traits::eof();
}

template <class CharT>
CharT* MSPBufferBase<CharT>::getArea() {
    void* area = m_getBuffer;
    std::size_t room = sizeof m_getBuffer;
    return static_cast<CharT*>(std::align(Internal::kCacheLine, kBlockSize, area, room));
}

template class MSPBufferBase<char>;

MSPStream::MSPStream(MSPBufferBase<char>* buffer) : std::istream(buffer), m_buffer(buffer) {}

// The base's pointer is left alone: resetting it could throw when the stream throws on bad().
MSPStream::~MSPStream() {
    delete m_buffer;
}

}  // namespace Morvenn::Net::MvServerProxy::Client
