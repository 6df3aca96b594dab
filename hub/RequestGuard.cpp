#include "RequestGuard.h"

#include "Refusal.h"

#include <algorithm>
#include <array>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kRequestLineExtra = 12;  // two blanks, "HTTP/1.1", CR LF
constexpr std::size_t kHeaderExtra = 4;        // ": ", CR LF

constexpr std::array<std::string_view, 3> kLoopbackNames = {"localhost", "127.0.0.1", "[::1]"};

std::size_t headerBytes(const Request& request) {
    std::size_t bytes = request.method.size() + request.path.size() + kRequestLineExtra;
    for (const auto& [name, value] : request.query) {
        bytes += name.size() + value.size() + 2;
    }
    for (const auto& [name, value] : request.headers) {
        bytes += name.size() + value.size() + kHeaderExtra;
    }
    return bytes;
}

bool allDigits(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isLoopback(std::string_view host) {
    return std::any_of(kLoopbackNames.begin(), kLoopbackNames.end(), [host](std::string_view name) {
        if (!equalIgnoringCase(host.substr(0, name.size()), name)) {
            return false;
        }
        const auto port = host.substr(name.size());
        return port.empty() || (port.front() == ':' && allDigits(port.substr(1)));
    });
}

}  // namespace

void checkRequest(const Request& request, const Limits& limits, bool loopbackNamesOnly) {
    if (headerBytes(request) > limits.headerBytes) {
        throw Refusal(431, "request line and headers exceed " + std::to_string(limits.headerBytes) +
                               " bytes");
    }
    if (loopbackNamesOnly && !isLoopback(request.headerText("Host"))) {
        throw Refusal(421,
                      "the Host header names no loopback host; use localhost, 127.0.0.1 or [::1]");
    }
    if (request.header("Origin") != nullptr) {
        throw Refusal(403, "requests sent by web pages (with an Origin header) are not served");
    }
}

void checkBodySize(std::uint64_t bytes, const Limits& limits) {
    if (limits.bodyBytes != 0 && bytes > limits.bodyBytes) {
        throw Refusal(413, "the body exceeds " + std::to_string(limits.bodyBytes) +
                               " bytes; start mvhub with a larger --body-limit");
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
