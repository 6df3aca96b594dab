// The text of a request, on its way to HTTP: nothing that gets through can break a header line.
#include <algorithm>

#include "Failure.h"
#include "RequestText.h"
#include "TargetUrl.h"
#include "fuzz/Fuzz.h"

using namespace Morvenn::Net::MvServerProxy::Proxy;

namespace {

bool holdsControl(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == '\r' || byte == '\n' || byte == '\0';
    });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const Form form = input.byte() % 2 == 0 ? Form::Acknowledged : Form::Unacknowledged;
    const std::string text = input.rest();
    try {
        const RequestText request = readRequestText(text, form, 65536);
        Fuzz::require(request.headers.size() <= kMaxRequestHeaders, "headers are limited");
        for (const std::string& line : httpHeaders(request)) {
            Fuzz::require(!holdsControl(line), "a header is one line");
        }
        Fuzz::require(request.body.size() <= text.size(), "the body is a part of the text");
        targetUrl(requestUrl(request, "http://127.0.0.1:16064"));
    } catch (const Failure&) {
    }
    return 0;
}
