// What an exchange hands out once the response has begun: header block, body, end.
#include <algorithm>
#include <cstring>

#include "DirectoryBlock.h"
#include "Exchange.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

int Exchange::giveResponse(char* block) {
    const std::size_t count =
        std::min<std::size_t>(m_block.size() - m_blockPos, MV_PROXY_BLOCK_SIZE);
    if (count == 0) {
        return m_kind == Kind::Directory ? giveDirectory(block) : giveBody(block);
    }
    std::memcpy(block, m_block.data() + m_blockPos, count);
    m_blockPos += count;
    return static_cast<int>(count);
}

int Exchange::giveBody(char* block) {
    ResponseBuffer& response = m_data.response;
    std::size_t count = response.take(block, MV_PROXY_BLOCK_SIZE);
    if (count == 0) {
        response.openBlock(block, MV_PROXY_BLOCK_SIZE);
        m_transfer.resumeDownload();
        m_transfer.run([&] { return response.inBlock() > 0; });
        count = response.closeBlock();
    }
    return count > 0 ? static_cast<int>(count) : endOfResponse();
}

int Exchange::giveDirectory(char* block) {
    ResponseBuffer& response = m_data.response;
    if (response.buffered() < MV_PROXY_BLOCK_SIZE) {
        m_transfer.resumeDownload();
        m_transfer.run([&] { return response.buffered() >= MV_PROXY_BLOCK_SIZE; });
    }
    const std::size_t count =
        directoryBlock(response.front(), MV_PROXY_BLOCK_SIZE, m_transfer.finished());
    return count > 0 ? static_cast<int>(response.take(block, count)) : endOfResponse();
}

int Exchange::endOfResponse() const {
    if (const auto failure = m_transfer.bodyFailure()) {
        throw Failure(*failure);
    }
    return MV_STATUS_END_OF_RESPONSE;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
