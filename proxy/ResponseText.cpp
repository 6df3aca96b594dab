#include "ResponseText.h"

#include "TextTools.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

void append(std::string& block, std::string_view name, std::string_view value) {
    block.append(name).append("=").append(oneLine(value)).append("\n");
}

// A media type without its parameters: the reader cuts a value at its "=", so a charset would only
// arrive as a torn-off piece.
std::string_view mediaType(std::string_view contentType) {
    return trimmed(contentType.substr(0, contentType.find(';')));
}

void appendServerHeader(std::string& block, const Header& header, bool gzip) {
    const auto is = [&](std::string_view name) { return equalIgnoringCase(header.name, name); };
    if (!isToken(header.name) || startsWithIgnoringCase(header.name, "ResponseHeader") ||
        is("Content-Type") || (gzip && is("Content-Encoding"))) {
        return;
    }
    if (is("ResponseSessionID")) {
        append(block, "ResponseSessionID", escaped(header.value, "=%"));
        return;
    }
    append(block, header.name, header.value);
}

}  // namespace

bool isGzip(const ResponseHead& head) {
    const auto encoding = head.value("Content-Encoding");
    return equalIgnoringCase(encoding, "gzip") || equalIgnoringCase(encoding, "x-gzip");
}

std::string responseText(const ResponseHead& head) {
    const bool gzip = isGzip(head);
    std::string block;
    for (const Header& header : head.headers()) {
        appendServerHeader(block, header, gzip);
    }
    const auto contentType = head.value("Content-Type");
    if (!contentType.empty()) {
        append(block, "ResponseHeaderContentType", mediaType(contentType));
    }
    if (gzip) {
        append(block, "ResponseHeaderCompression", "true");
    }
    append(block, "ResponseHeaderResponseCode", std::to_string(head.status()));
    append(block, "ResponseHeaderResponseText", head.reason());
    block += '\n';
    return block;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
