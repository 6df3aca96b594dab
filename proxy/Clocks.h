// The time limits of an exchange that libcurl does not keep by itself.
//
// Idle time is counted only while the library waits, so the pauses of the application do not count.
// Total time runs from the beginning of the exchange, pauses included.
#ifndef MORVENN_PROXY_CLOCKS_H
#define MORVENN_PROXY_CLOCKS_H

#include <chrono>
#include <cstdint>

#include "Config.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

class Clocks {
    using Clock = std::chrono::steady_clock;

public:
    void beginExchange(const Config& config);
    void beginWaiting() { m_lastMove = Clock::now(); }
    void moved() { m_moved = true; }  // a byte went out or came in

    void worked() { m_lastWork = Clock::now(); }
    std::chrono::steady_clock::duration sinceLastWork() const { return Clock::now() - m_lastWork; }

    // How long to wait at most for the next byte, at most a second. Throws Failure (-1001), with
    // `subject` at the front of its text, when a limit has passed.
    int waitMs(const std::string& subject);

private:
    Clock::time_point m_begin;
    Clock::time_point m_lastMove;
    Clock::time_point m_lastWork;
    bool m_moved = false;
    std::int64_t m_idleMs = 0;
    std::int64_t m_totalMs = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
