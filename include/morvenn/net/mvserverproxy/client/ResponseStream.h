/**
 * @file
 * Reading a response: blocks of the proxy (ResponseStream), a stream buffer over them that inflates
 * when asked (MSPBufferBase), and the std::istream that applications get (MSPStream).
 *
 * One request yields one MSPStream, which owns one MSPBufferBase, which owns one ResponseStream.
 * Destroying the MSPStream ends the exchange, whether or not the response was read to its end.
 *
 * Thread rule: nothing here is locked; one stream is used by one thread at a time.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_RESPONSESTREAM_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_RESPONSESTREAM_H

#include <istream>
#include <memory>
#include <streambuf>

#include "morvenn/net/mvserverproxy/Export.h"

struct z_stream_s;

namespace Morvenn::Net::MvServerProxy::Client {

namespace Internal {
class HeaderReader;
inline constexpr int kCacheLine = 64;
}  // namespace Internal

/**
 * A buffered reader over the blocks that the proxy delivers. It keeps one block of 16384 bytes.
 *
 * Results of the proxy pass through: 0 means that nothing is ready yet, -1 the end of the response,
 * below -1 a failure. After the end or a failure every later read asks the proxy again.
 *
 * By design: destroying or closing it calls MvServerProxy_Complete, which ends whatever exchange is
 * running. (ResponseStream.CloseAndDestructionCompleteTheExchange)
 *
 * A result above 16384 that would be read out of the stream's own block raises MSPRuntimeException,
 * type -1, "Unexpected state.  count = ..."; read into a buffer of the caller's it is returned.
 */
class MVCPP_API ResponseStream {
public:
    /** Size in bytes of the block, and of every buffer that the proxy writes to. */
    static constexpr int kBlockSize = 16384;

    /** Starts with an empty block. */
    ResponseStream();
    /** Copies the block and the place in it; both copies then read from the same exchange. @{ */
    ResponseStream(const ResponseStream& other);
    ResponseStream& operator=(const ResponseStream& other);
    /** @} */
    ~ResponseStream();

    /**
     * Reads up to @p length bytes to @p buffer + @p offset. With the block used up, offset 0 and a
     * length of at least 16384 the proxy writes straight into @p buffer.
     * @return the number of bytes copied; the proxy's result (0 or negative) when it had none to
     *         give; 0 for a length of 0, without asking the proxy.
     * @throws MSPRuntimeException type -1 when offset or length are negative, or for a result that
     *         does not fit the block.
     */
    int read(char* buffer, int offset, int length);

    /** read(buffer, 0, 16384); @p buffer must hold 16384 bytes. */
    int read(char* buffer);

    /**
     * Reads one byte.
     * @return the byte, 0 to 255, or the proxy's result (0 or negative) when none could be had.
     * By design: a returned 0 is a zero byte or the absence of data; they cannot be told apart.
     * (ResponseStream.SingleByteReadGivesZeroForAZeroByteAndForNoData)
     */
    int read();

    /** Calls MvServerProxy_Complete. */
    void close();

private:
    friend class Internal::HeaderReader;

    bool isUsedUp() const { return m_pos >= m_count; }
    MVCPP_LOCAL void fill();
    [[noreturn]] MVCPP_LOCAL void throwUnexpectedState();

    int m_count;
    int m_pos;
    char m_block[kBlockSize];
};

/**
 * A stream buffer over a ResponseStream that it owns. It passes the bytes through or inflates them
 * (gzip, RFC 1952). Get area, compressed input and the proxy's blocks are 16384 bytes each; nothing
 * is allocated per block. It only reads: seeking, putting back beyond the get area and writing
 * fail.
 *
 * Instantiated in the library for `char`.
 */
template <class CharT>
class MVCPP_API MSPBufferBase : public std::basic_streambuf<CharT> {
public:
    /** A byte or the end of file, as in every stream buffer. */
    using int_type = typename std::basic_streambuf<CharT>::int_type;

    /**
     * Takes @p responseStream, which must not be null. With @p compressed the bytes are inflated.
     * @throws MSPRuntimeException type -1 when zlib cannot be initialised.
     */
    MSPBufferBase(std::unique_ptr<ResponseStream> responseStream, bool compressed);

    /**
     * Copies every field as it is, pointers included: after a copy only one of the two may be used
     * and destroyed, and the other has to be abandoned without being destroyed.
     * @{
     */
    MSPBufferBase(const MSPBufferBase& other);
    MSPBufferBase& operator=(const MSPBufferBase& other);
    /** @} */

    /**
     * Ends the exchange with MvServerProxy_Complete.
     * By design: a failure of zlib to clean up is logged and goes no further.
     * (GzipStream.CleanUpFailureIsLoggedAndSwallowed)
     */
    ~MSPBufferBase() override;

protected:
    /**
     * Refills the get area.
     * @return the first byte, or end of file at the end of the response.
     * @throws the class of the proxy's status; MSPRuntimeException type -1 for a failed inflation
     *         and for a result that does not fit the block.
     *
     * By design: a proxy that says that nothing is ready yet is asked again at once, without limit.
     * (StreamBuffer.AsksAgainForAsLongAsNothingIsReady)
     *
     * By design: an inflation that fails without output is reported after the rest of the response
     * has been read. (GzipStream.OtherWrappersAreReportedAfterTheRestWasRead)
     *
     * By design: what follows the end of the gzip data is read and dropped, and a gzip response
     * that is cut short ends without a failure. (GzipStream.BytesAfterTheGzipDataAreReadAndDropped,
     * GzipStream.ResponseCutShortEndsWithoutFailure)
     */
    int_type underflow() override;

    /** Does nothing. @return 0. */
    int sync() override;

private:
    MVCPP_LOCAL int receive(CharT* buffer);
    MVCPP_LOCAL int_type inflateMore();
    MVCPP_LOCAL int_type present(int count);
    MVCPP_LOCAL CharT* getArea();

    ResponseStream* m_responseStream;
    bool m_compressed;
    int m_inflateStatus;
    CharT* m_inBuffer;
    z_stream_s* m_zstream;
    // The get area, and room to begin it on a cache line: blocks are copied faster to and from
    // there.
    CharT m_getBuffer[ResponseStream::kBlockSize + Internal::kCacheLine];
};

extern template class MSPBufferBase<char>;

/** The input stream that send() returns. Owns its buffer. */
class MVCPP_API MSPStream : public std::istream {
public:
    /** Takes @p buffer, made with new. */
    explicit MSPStream(MSPBufferBase<char>* buffer);
    MSPStream(const MSPStream&) = delete;
    MSPStream& operator=(const MSPStream&) = delete;
    /** Deletes the buffer, which ends the exchange. */
    ~MSPStream() override;

private:
    MSPBufferBase<char>* m_buffer;
};

}  // namespace Morvenn::Net::MvServerProxy::Client

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_RESPONSESTREAM_H
