// Response body bytes between libcurl and the caller, first in, first out: a block of the caller,
// then memory, then the spool.
#ifndef MORVENN_PROXY_RESPONSEBUFFER_H
#define MORVENN_PROXY_RESPONSEBUFFER_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Spool.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

class ResponseBuffer {
public:
    static constexpr std::size_t kCapacity = 64 * 1024;

    Spool& spool() { return m_spool; }
    void clear();

    // True when memory holds its fill: the sender has to be made to wait, or the spool be used.
    bool full() const { return buffered() >= kCapacity || !m_spool.empty(); }

    // Takes the bytes, whatever their number. Beyond the capacity they go to the spool when
    // `maySpool`, else into memory that grows.
    void put(std::string_view bytes, bool maySpool);

    // Hands out up to `size` bytes from the front; 0 when there are none.
    std::size_t take(char* out, std::size_t size);

    // As long as a block of the caller is open and nothing else is waiting, bytes are put there
    // without a stop in between. close() says how many.
    void openBlock(char* block, std::size_t size);
    std::size_t closeBlock();
    std::size_t inBlock() const { return m_blockUsed; }
    bool blockFull() const { return m_block != nullptr && m_blockUsed == m_blockSize; }

    // What memory holds, to look at. Bytes of the spool come into sight as memory is used up.
    std::string_view front() const { return {m_memory.data() + m_head, buffered()}; }
    std::size_t buffered() const { return m_memory.size() - m_head; }
    bool empty() const { return buffered() == 0 && m_spool.empty(); }

private:
    std::vector<char> m_memory;
    std::size_t m_head = 0;
    char* m_block = nullptr;
    std::size_t m_blockSize = 0;
    std::size_t m_blockUsed = 0;
    Spool m_spool;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
