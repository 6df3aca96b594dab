#include "Request.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string withoutBlanks(std::string_view text) {
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
                 [](char c) { return c != ' ' && c != '\t'; });
    return kept;
}

// One member of an Accept-Encoding list, blanks removed: "gzip", "gzip;q=0.5", "*;q=0".
bool memberAcceptsGzip(std::string_view member) {
    const auto semicolon = member.find(';');
    const auto coding = member.substr(0, semicolon);
    if (!equalIgnoringCase(coding, "gzip") && !equalIgnoringCase(coding, "x-gzip")) {
        return false;
    }
    if (semicolon == std::string_view::npos) {
        return true;
    }
    const auto weight = member.substr(semicolon + 1);
    return weight.find_first_of("123456789") != std::string_view::npos;
}

}  // namespace

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

const std::string* Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (equalIgnoringCase(key, name)) {
            return &value;
        }
    }
    return nullptr;
}

std::string Request::headerText(std::string_view name) const {
    const std::string* value = header(name);
    return value != nullptr ? *value : std::string();
}

bool acceptsGzip(const Request& request) {
    if (equalIgnoringCase(request.headerText("Use-Compression"), "true")) {
        return true;
    }
    const std::string list = withoutBlanks(request.headerText("Accept-Encoding"));
    std::string_view rest = list;
    while (!rest.empty()) {
        const auto comma = rest.find(',');
        if (memberAcceptsGzip(rest.substr(0, comma))) {
            return true;
        }
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    return false;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
