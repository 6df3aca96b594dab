// Makes one gzip member out of a response body that may have several.
//
// The reader of the response inflates one member and leaves out what follows. Whether a second one
// follows is known only at the end of the first, long after the header block has announced gzip, so
// the body is looked through as it passes, in bounded memory and at any length:
//
//   one member        passes byte for byte
//   more members      the deflate data of all of them, with the mark "last block" taken off every
//                     last block but the final one, joined at byte boundaries by empty blocks, and
//                     one trailer with the combined check sum and length
//   anything else     damaged data passes as it is, for the reader to find; bytes after the last
//                     member that do not begin another are left out once members were joined
//
// Only the last block of a member waits until its end is known. A last block that is longer than
// the waiting room passes with its mark taken off, and an empty last block comes after it instead.
#ifndef MORVENN_PROXY_GZIPJOINER_H
#define MORVENN_PROXY_GZIPJOINER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct z_stream_s;

namespace Morvenn::Net::MvServerProxy::Proxy {

class GzipJoiner {
public:
    static constexpr std::size_t kWaitingRoom = 64 * 1024;

    GzipJoiner();
    ~GzipJoiner();
    GzipJoiner(const GzipJoiner&) = delete;
    GzipJoiner& operator=(const GzipJoiner&) = delete;

    // Takes the next bytes of the body; returns what can be handed on, valid until the next call.
    std::string_view pass(std::string_view bytes);
    // The body is complete; returns the rest.
    std::string_view finish();

private:
    enum class Stage {
        Inside,   // of a member
        Between,  // a member is complete; what follows decides
        Through,  // nothing is looked at any more
        Over,     // the joined member is complete; what follows is left out
    };

    void look();
    void lookInside();
    void lookBetween();
    void stopped();
    bool atBlockBegin();
    void unmarkLastBlock();
    void endMember();
    void beginNextMember();
    void damaged();
    void alignData();
    void close();
    std::size_t releasable() const;

    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

    std::unique_ptr<z_stream_s> m_zstream;
    std::unique_ptr<unsigned char[]> m_scratch;
    std::string m_waiting;   // bytes taken and not handed on
    std::string m_handedOn;  // what the last call returned
    Stage m_stage = Stage::Inside;
    bool m_joined = false;    // the output differs from the input
    unsigned long m_sum = 0;  // CRC-32 of all complete members together, by their trailers
    std::uint32_t m_length = 0;

    // Positions in m_waiting, all within the present member.
    std::size_t m_next = 0;             // the first byte that has not been inflated
    std::size_t m_headerAt = kNowhere;  // a header that is not handed on begins here
    std::size_t m_markAt = 0;           // the byte with the mark of the last block
    unsigned char m_mark = 0;           // its bit there; 0: not seen yet, or taken off
    std::size_t m_dataEnd = 0;          // the first byte after the deflate data
    unsigned m_unusedBits = 0;          // of the byte before the block that begins or has ended
    bool m_blockDue = false;            // a block begins, its first byte may not be there yet
    bool m_dataOver = false;            // m_dataEnd is known
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
