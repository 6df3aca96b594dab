#include "Clocks.h"

#include <algorithm>

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::int64_t kLongestWaitMs = 1000;

std::int64_t millisecondsSince(std::chrono::steady_clock::time_point from,
                               std::chrono::steady_clock::time_point now) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now - from).count();
}

}  // namespace

void Clocks::beginExchange(const Config& config) {
    m_begin = Clock::now();
    m_idleMs = config.idleTimeoutMs;
    m_totalMs = config.totalTimeoutMs;
}

int Clocks::waitMs(const std::string& subject) {
    const auto now = Clock::now();
    if (m_moved) {
        m_lastMove = now;
        m_moved = false;
    }
    const std::int64_t idleLeft = m_idleMs - millisecondsSince(m_lastMove, now);
    if (idleLeft <= 0) {
        throw Failure{MV_STATUS_CANNOT_CONNECT,
                      subject + ": nothing moved for " + std::to_string(m_idleMs) +
                          " ms; check the server, or raise MV_SERVERPROXY_IDLE_TIMEOUT_MS"};
    }
    const std::int64_t totalLeft =
        m_totalMs == 0 ? kLongestWaitMs : m_totalMs - millisecondsSince(m_begin, now);
    if (totalLeft <= 0) {
        throw Failure{MV_STATUS_CANNOT_CONNECT, subject + ": the exchange took longer than " +
                                                    std::to_string(m_totalMs) +
                                                    " ms; raise MV_SERVERPROXY_TOTAL_TIMEOUT_MS"};
    }
    return static_cast<int>(std::min({kLongestWaitMs, idleLeft, totalLeft}));
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
