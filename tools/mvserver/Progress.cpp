#include "Progress.h"

#include <cmath>
#include <cstdio>
#include <iostream>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr std::chrono::milliseconds kInterval(100);

std::string withDecimals(int decimals, double value) {
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%.*f", decimals, value));
    return text;
}

std::string clockTime(double seconds) {
    const long whole = std::lround(seconds);
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60));
    return text;
}

}  // namespace

void Progress::start(std::uint64_t toSend) {
    m_toSend = toSend;
    m_sent = 0;
    m_received = 0;
    m_start = Clock::now();
}

void Progress::sent(std::size_t bytes) {
    m_sent += bytes;
    show();
}

void Progress::received(std::size_t bytes) {
    m_received += bytes;
    show();
}

void Progress::clear() {
    if (m_onScreen) {
        std::cerr << "\r\033[K" << std::flush;
        m_onScreen = false;
    }
}

double Progress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - m_start).count();
}

void Progress::show() {
    if (!m_shown || Clock::now() - m_lastShown < kInterval) {
        return;
    }
    m_lastShown = Clock::now();
    m_onScreen = true;
    std::cerr << "\r" + progressLine(m_sent, m_toSend, m_received, seconds()) + "\033[K"
              << std::flush;
}

std::string humanSize(double bytes) {
    static constexpr const char* kUnits[] = {" KiB", " MiB", " GiB", " TiB"};
    if (bytes < 1024) {
        return withDecimals(0, bytes) + " B";
    }
    std::size_t unit = 0;
    for (bytes /= 1024; bytes >= 1024 && unit < 3; ++unit) {
        bytes /= 1024;
    }
    return withDecimals(1, bytes) + kUnits[unit];
}

std::string progressLine(std::uint64_t sent, std::uint64_t toSend, std::uint64_t received,
                         double seconds) {
    const auto up = static_cast<double>(sent);
    const auto down = static_cast<double>(received);
    const double rate = seconds > 0 ? (received > 0 ? down : up) / seconds : 0;
    std::string line = "sent " + humanSize(up);
    if (toSend > 0) {
        line += " of " + humanSize(static_cast<double>(toSend));
    }
    line += ", received " + humanSize(down) + ", " + humanSize(rate) + "/s";
    if (toSend > sent && received == 0 && rate > 0) {
        line += ", " + clockTime(static_cast<double>(toSend - sent) / rate) + " left";
    }
    return line;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
