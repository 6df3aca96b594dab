#include "ResponseBuffer.h"

#include <algorithm>

#include "CopyBytes.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

void ResponseBuffer::clear() {
    m_memory.clear();
    m_head = 0;
    m_block = nullptr;
    m_blockSize = 0;
    m_blockUsed = 0;
    m_spool.close();
}

void ResponseBuffer::put(std::string_view bytes, bool maySpool) {
    if (m_block != nullptr && empty()) {
        const std::size_t count = std::min(bytes.size(), m_blockSize - m_blockUsed);
        copyBytes(m_block + m_blockUsed, bytes.data(), count);
        m_blockUsed += count;
        bytes.remove_prefix(count);
    }
    if (bytes.empty()) {
        return;
    }
    if (!m_spool.empty() || (maySpool && buffered() >= kCapacity)) {
        m_spool.write(bytes.data(), bytes.size());
        return;
    }
    if (m_head >= kCapacity) {
        m_memory.erase(m_memory.begin(), m_memory.begin() + static_cast<std::ptrdiff_t>(m_head));
        m_head = 0;
    }
    m_memory.insert(m_memory.end(), bytes.begin(), bytes.end());
}

std::size_t ResponseBuffer::take(char* out, std::size_t size) {
    const std::size_t count = std::min(size, buffered());
    if (count == 0) {
        return m_spool.read(out, size);
    }
    copyBytes(out, m_memory.data() + m_head, count);
    m_head += count;
    if (m_head == m_memory.size()) {
        m_memory.clear();
        m_head = 0;
    }
    return count;
}

void ResponseBuffer::openBlock(char* block, std::size_t size) {
    m_block = block;
    m_blockSize = size;
    m_blockUsed = 0;
}

std::size_t ResponseBuffer::closeBlock() {
    const std::size_t used = m_blockUsed;
    openBlock(nullptr, 0);
    return used;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
