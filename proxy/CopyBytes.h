// Copies of blocks.
//
// memcpy() does a long copy with one instruction, which on some processors takes thirty times as
// long when the destination is 1 to 31 bytes further into its page than the source is into its own.
// Blocks that begin behind the header of an allocation or of a chunk often are. Short copies are
// done otherwise, and a block in short pieces takes no longer than in one.
#ifndef MORVENN_PROXY_COPYBYTES_H
#define MORVENN_PROXY_COPYBYTES_H

#include <algorithm>
#include <cstddef>

namespace Morvenn::Net::MvServerProxy::Proxy {

// The places must not overlap.
inline void copyBytes(char* out, const char* in, std::size_t size) {
    constexpr std::size_t kPiece = 1024;
    while (size > 0) {
        const std::size_t count = std::min(size, kPiece);
        std::copy_n(in, count, out);
        out += count;
        in += count;
        size -= count;
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
