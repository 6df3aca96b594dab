#include "NoProxy.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include "TextTools.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

using Address = std::vector<unsigned char>;  // 4 or 16 bytes, network order

std::optional<Address> address(std::string_view text) {
    const std::string copy(text);
    Address bytes(16);
    if (inet_pton(AF_INET6, copy.c_str(), bytes.data()) == 1) {
        return bytes;
    }
    bytes.resize(4);
    if (inet_pton(AF_INET, copy.c_str(), bytes.data()) == 1) {
        return bytes;
    }
    return std::nullopt;
}

bool sameNetwork(const Address& left, const Address& right, unsigned bits) {
    if (left.size() != right.size() || bits > left.size() * 8) {
        return false;
    }
    const std::size_t whole = bits / 8;
    if (!std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(whole),
                    right.begin())) {
        return false;
    }
    const unsigned rest = bits % 8;
    if (rest == 0) {
        return true;
    }
    const unsigned mask = (0xFF00U >> rest) & 0xFFU;
    return (left[whole] & mask) == (right[whole] & mask);
}

bool addressMatches(const Address& host, std::string_view entry) {
    const auto slash = entry.find('/');
    const auto network = address(entry.substr(0, slash));
    if (!network) {
        return false;
    }
    auto bits = static_cast<unsigned>(network->size() * 8);
    if (slash != std::string_view::npos) {
        const std::string_view digits = entry.substr(slash + 1);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), bits);
        if (error != std::errc() || end != digits.data() + digits.size()) {
            return false;
        }
    }
    return sameNetwork(host, *network, bits);
}

std::string_view withoutFinalDot(std::string_view name) {
    return !name.empty() && name.back() == '.' ? name.substr(0, name.size() - 1) : name;
}

bool nameMatches(std::string_view host, std::string_view entry) {
    if (entry.substr(0, 2) == "*.") {
        entry.remove_prefix(1);
    }
    if (!entry.empty() && entry.front() == '.') {
        entry.remove_prefix(1);
    }
    entry = withoutFinalDot(entry);
    if (entry.empty() || host.size() < entry.size()) {
        return false;
    }
    const std::size_t above = host.size() - entry.size();
    return equalIgnoringCase(host.substr(above), entry) && (above == 0 || host[above - 1] == '.');
}

struct Entry {
    std::string_view host;  // without brackets
    std::string_view port;  // empty: any
};

// Several colons outside of brackets are those of an IPv6 address, which has no port.
Entry readEntry(std::string_view text) {
    const bool bracketed = text.substr(0, 1) == "[" && text.find(']') != std::string_view::npos;
    const auto colon = text.find(':', bracketed ? text.find(']') : 0);
    const bool namesAPort = colon != std::string_view::npos && colon == text.rfind(':');
    const std::string_view host = namesAPort ? text.substr(0, colon) : text;
    return {bracketed ? host.substr(1, host.find(']') - 1) : host,
            namesAPort ? text.substr(colon + 1) : std::string_view()};
}

}  // namespace

bool bypassesProxy(std::string_view host, std::string_view port, std::string_view list) {
    host = withoutFinalDot(host);
    const auto hostAddress = address(host);
    const auto entries = pieces(list, ", \t");
    return std::any_of(entries.begin(), entries.end(), [&](std::string_view text) {
        const Entry entry = readEntry(text);
        if (!entry.port.empty() && entry.port != port) {
            return false;
        }
        return entry.host == "*" || (hostAddress ? addressMatches(*hostAddress, entry.host)
                                                 : nameMatches(host, entry.host));
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
