// The plainest stream buffer over the proxy: what peers that want an istream read from.
#ifndef MORVENN_BENCH_SUPPORT_RECEIVEBUFFER_H
#define MORVENN_BENCH_SUPPORT_RECEIVEBUFFER_H

#include <streambuf>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Bench {

class ReceiveBuffer : public std::streambuf {
public:
    ReceiveBuffer() = default;
    ReceiveBuffer(const ReceiveBuffer&) = delete;
    ReceiveBuffer& operator=(const ReceiveBuffer&) = delete;
    ~ReceiveBuffer() override { MvServerProxy_Complete(); }

protected:
    int_type underflow() override {
        const int count = MvServerProxy_Receive(m_block);
        if (count <= 0) {
            return traits_type::eof();
        }
        setg(m_block, m_block, m_block + count);
        return traits_type::to_int_type(*m_block);
    }

private:
    char m_block[MV_PROXY_BLOCK_SIZE];
};

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_RECEIVEBUFFER_H
