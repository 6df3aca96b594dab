// The progress meter: one line on standard error that is written over again and again.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

class Progress {
public:
    explicit Progress(bool shown) : m_shown(shown) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Removes the line.
    ~Progress() { clear(); }

    // Starts counting from nothing. `toSend` is 0 when the size is not known.
    void start(std::uint64_t toSend);
    void sent(std::size_t bytes);
    void received(std::size_t bytes);
    void clear();

    std::uint64_t bytesSent() const { return m_sent; }
    std::uint64_t bytesReceived() const { return m_received; }
    double seconds() const;

private:
    void show();

    using Clock = std::chrono::steady_clock;

    bool m_shown;
    bool m_onScreen = false;
    std::uint64_t m_toSend = 0;
    std::uint64_t m_sent = 0;
    std::uint64_t m_received = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_lastShown{};
};

// "312 B", "4.0 KiB", "1.5 MiB".
std::string humanSize(double bytes);

// The meter's line: bytes, rate, and the time left when `toSend` is known and not yet reached.
std::string progressLine(std::uint64_t sent, std::uint64_t toSend, std::uint64_t received,
                         double seconds);

}  // namespace Morvenn::Net::MvServerProxy::Tools
