// A request as the handlers of the hub see it: nothing of the HTTP library shows here.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {

using Header = std::pair<std::string, std::string>;

// ASCII letters compare without case, as HTTP compares header names and tokens.
bool equalIgnoringCase(std::string_view left, std::string_view right);

struct Request {
    std::string method;
    std::string path;
    std::vector<Header> headers;               // in the order of arrival
    std::map<std::string, std::string> query;  // decoded; the last of equal names stays

    // The first header of that name, or null. Valid while the request lives.
    const std::string* header(std::string_view name) const;

    // As header(), but an absent header and a header without value both give "".
    std::string headerText(std::string_view name) const;
};

// Whether the client takes a gzip-compressed answer: "Accept-Encoding" lists gzip with a weight
// other than 0, or "Use-Compression" is "true".
bool acceptsGzip(const Request& request);

}  // namespace Morvenn::Net::MvServerProxy::Hub
