#include "Log.h"

#include "Hex.h"

#include <unistd.h>

#include <atomic>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

std::atomic<bool> s_quiet{false};

}  // namespace

void logLine(const std::string& text) {
    const std::string line = "mvhub: " + printable(text) + "\n";
    // A log that nobody can take (a closed stream, a full disk) is no reason to fail an exchange.
    [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, line.data(), line.size());
}

void logExchange(const std::string& text) {
    if (!s_quiet) {
        logLine(text);
    }
}

void setQuiet(bool quiet) {
    s_quiet = quiet;
}

std::string printable(const std::string& text) {
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f && c != '\\') {
            shown += c;
            continue;
        }
        shown += "\\x" + hex(&byte, 1);
    }
    return shown;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
