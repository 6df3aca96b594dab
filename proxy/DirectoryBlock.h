// Where a block of a directory answer may end.
//
// The reader decodes each block from UTF-8 on its own, so a block never ends within a character.
#ifndef MORVENN_PROXY_DIRECTORYBLOCK_H
#define MORVENN_PROXY_DIRECTORYBLOCK_H

#include <cstddef>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Proxy {

// The length of the next block: all of `bytes` when they are at most `most` and `last` says that no
// more will come; else up to and with the last LF that fits; without one, up to the end of the last
// whole character. 0 when more bytes are needed to tell. Bytes that are not UTF-8 are cut anywhere.
std::size_t directoryBlock(std::string_view bytes, std::size_t most, bool last);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
