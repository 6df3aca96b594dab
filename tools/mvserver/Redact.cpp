#include "Redact.h"

#include "Terminal.h"

#include <morvenn/net/mvserverproxy/client/HeaderKeys.h>

#include <algorithm>
#include <iterator>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

namespace Keys = Client::HeaderKeys;

constexpr const char* kHarmless[] = {
    Keys::kServiceName,   Keys::kEnvName,          Keys::kXmlRpc,
    Keys::kOperationName, Keys::kUseCompression,   Keys::kLocale,
    Keys::kContentType,   Keys::kLogCorrelationId, Keys::kUseCallback,
};
constexpr const char* kUrls[] = {
    Keys::kServerUrl,
    Keys::kBaseServerUrl,
    Keys::kBaseFullUrl,
    Keys::kSsoUrl,
};

template <std::size_t N>
bool isOneOf(const char* const (&names)[N], const std::string& name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

std::string shownValue(const std::string& name, const std::string& value) {
    if (isOneOf(kHarmless, name)) {
        return escaped(value);
    }
    if (isOneOf(kUrls, name)) {
        return shownUrl(value);
    }
    return "(" + std::to_string(value.size()) + " bytes not shown)";
}

}  // namespace

std::string shownHeader(const std::string& name, const std::string& value) {
    return escaped(name) + "=" + shownValue(name, value);
}

std::string shownUrl(const std::string& url) {
    const std::size_t scheme = url.find("://");
    const std::size_t host = scheme == std::string::npos ? 0 : scheme + 3;
    const std::size_t end = std::min(url.find_first_of("/?#", host), url.size());
    const std::size_t query = std::min(url.find_first_of("?#", host), url.size());
    const std::size_t at = url.rfind('@', end);
    const bool user = at != std::string::npos && at >= host && at < end;
    std::string shown = url.substr(0, host);
    shown += user ? "***" + url.substr(at, query - at) : url.substr(host, query - host);
    shown += query < url.size() ? "?***" : "";
    return escaped(shown);
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
