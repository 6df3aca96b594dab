#include "TransferCallbacks.h"

#include <cstdio>
#include <exception>

#include "ResponseText.h"
#include "Transfer.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

// Runs `work` and gives its result, or `refusal` after keeping what it threw.
template <typename Work>
auto kept(std::optional<Failure>& thrown, decltype(std::declval<Work>()()) refusal,
          const Work& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        thrown = failure;
    } catch (const std::exception& error) {
        thrown =
            Failure{MV_STATUS_RUNTIME, std::string("the response cannot be kept: ") + error.what()};
    }
    return refusal;
}

}  // namespace

std::size_t TransferCallbacks::readBody(char* out, std::size_t size, std::size_t count,
                                        void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    self.m_asked = true;
    if (self.m_uploadStopped) {
        return 0;
    }
    const std::size_t taken = self.m_data.body.read(out, size * count);
    if (taken > 0) {
        self.m_clocks.moved();
        return taken;
    }
    if (self.m_data.body.ended()) {
        return 0;
    }
    self.m_readPaused = true;
    return CURL_READFUNC_PAUSE;
}

int TransferCallbacks::seekBody(void* transfer, curl_off_t offset, int origin) {
    auto& self = *static_cast<Transfer*>(transfer);
    const bool toBegin = offset == 0 && origin == SEEK_SET;
    return toBegin && self.m_data.body.rewind() ? CURL_SEEKFUNC_OK : CURL_SEEKFUNC_FAIL;
}

std::size_t TransferCallbacks::takeHeader(char* line, std::size_t size, std::size_t count,
                                          void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    const std::size_t bytes = size * count;
    self.m_clocks.moved();
    return kept(self.m_thrown, bytes + 1, [&]() -> std::size_t {
        self.m_data.head.line({line, bytes}, self.ofConnect());
        return bytes;
    });
}

std::size_t TransferCallbacks::takeBody(char* bytes, std::size_t size, std::size_t count,
                                        void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    const std::size_t total = size * count;
    const bool first = !self.m_bodyBegan;
    self.m_bodyBegan = true;
    if (self.ofProxyDemand()) {
        return total;  // the page of the forward proxy is not for the application
    }
    const bool maySpool = self.m_plan.upload == Upload::Streamed && !self.m_data.body.ended();
    if (self.m_data.response.full() && !maySpool) {
        self.m_writePaused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    self.m_clocks.moved();
    return kept(self.m_thrown, total + 1, [&]() -> std::size_t {
        if (first && isGzip(self.m_data.head)) {
            self.m_data.joiner = std::make_unique<GzipJoiner>();
        }
        const std::string_view body(bytes, total);
        GzipJoiner* joiner = self.m_data.joiner.get();
        self.m_data.response.put(joiner == nullptr ? body : joiner->pass(body), maySpool);
        if (self.m_data.response.blockFull() && !maySpool) {
            self.pauseDownload();
        }
        return total;
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
