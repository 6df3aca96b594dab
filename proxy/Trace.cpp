#include "Trace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::array<std::string_view, 7> kShownHeaders{
    "Content-Type", "Env-Name",     "Locale",         "Operation-Name",
    "Service-Name", "Use-Callback", "Use-Compression"};
constexpr std::size_t kMostShown = 256;

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte >= 0x7F) {
            std::array<char, 7> code{};
            static_cast<void>(
                std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(byte)));
            out += code.data();
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string timestamp(std::int64_t microseconds) {
    const auto seconds = static_cast<std::time_t>(microseconds / 1000000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 40> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    static_cast<void>(std::snprintf(text.data() + length, text.size() - length, ".%06dZ",
                                    static_cast<int>(microseconds % 1000000)));
    return text.data();
}

// {"shown":{...},"others":n} for the lines up to the empty one.
std::string headerSummary(std::string_view text) {
    std::string shown;
    std::size_t others = 0;
    const std::string_view head = text.substr(0, text.find("\r\n\r\n"));
    for (const std::string_view line : pieces(head, "\r\n")) {
        const auto name = line.substr(0, line.find('='));
        const bool listed =
            std::find(kShownHeaders.begin(), kShownHeaders.end(), name) != kShownHeaders.end() &&
            name.size() < line.size();
        if (!listed) {
            ++others;
            continue;
        }
        shown += (shown.empty() ? "" : ",") + quoted(name) + ":" +
                 quoted(line.substr(name.size() + 1, kMostShown));
    }
    return "{\"shown\":{" + shown + "},\"others\":" + std::to_string(others) + "}";
}

}  // namespace

std::string traceLine(const TraceEntry& entry, std::int64_t when, int thread) {
    std::string line =
        "{\"at\":" + quoted(timestamp(when)) + ",\"thread\":" + std::to_string(thread) +
        ",\"call\":" + quoted(entry.call) + ",\"from\":" + quoted(entry.stateBefore) +
        ",\"to\":" + quoted(entry.stateAfter) + ",\"result\":" + std::to_string(entry.result) +
        ",\"us\":" + std::to_string(entry.microseconds);
    if (!entry.text.empty()) {
        line += ",\"bytes\":" + std::to_string(entry.text.size());
    }
    if (entry.isHeader) {
        line += ",\"header\":" + headerSummary(entry.text);
    }
    if (!entry.url.empty()) {
        line += ",\"url\":" + quoted(entry.url);
    }
    if (entry.status != 0) {
        line += ",\"status\":" + std::to_string(entry.status);
    }
    if (!entry.failure.empty()) {
        line += ",\"failure\":" + quoted(entry.failure);
    }
    return line + "}\n";
}

Trace::Trace(const std::string& file)
    : m_file(::open(file.c_str(),
                    O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                    S_IRUSR | S_IWUSR)) {
    if (m_file < 0) {
        throw Failure{MV_STATUS_RUNTIME, "MV_SERVERPROXY_TRACE names the file " + file +
                                             ", which cannot be opened: " + std::strerror(errno)};
    }
}

Trace::~Trace() {
    ::close(m_file);
}

void Trace::add(const TraceEntry& entry) const try {
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    const std::string line = traceLine(entry, now, static_cast<int>(::syscall(SYS_gettid)));
    // One write per line: lines of several threads and processes stay whole.
    static_cast<void>(!::write(m_file, line.data(), line.size()));
} catch (const std::bad_alloc&) {  // without memory for its line the call goes on all the same
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
