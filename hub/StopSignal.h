// Tells every waiting thread that the hub stops.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Morvenn::Net::MvServerProxy::Hub {

class StopSignal {
public:
    void request() {
        const std::lock_guard lock(m_mutex);
        m_requested = true;
        m_changed.notify_all();
    }

    // Waits that long, or less when the hub stops: then false.
    bool pause(std::chrono::milliseconds duration) {
        std::unique_lock lock(m_mutex);
        return !m_changed.wait_for(lock, duration, [this] { return m_requested; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_requested = false;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
