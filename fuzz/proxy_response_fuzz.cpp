// The head of an HTTP response, on its way to the client: every line is a line, and the synthesised
// names are the proxy's alone.
#include "Failure.h"
#include "ResponseHead.h"
#include "ResponseText.h"
#include "fuzz/Fuzz.h"

using namespace Morvenn::Net::MvServerProxy::Proxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    ResponseHead head;
    try {
        while (!input.empty()) {
            const bool ofConnect = input.byte() % 2 == 1;
            head.line(input.take(input.byte()), ofConnect);
        }
    } catch (const Failure&) {
        return 0;
    }
    const std::string text = responseText(head);
    Fuzz::require(text.size() >= 2 && text.compare(text.size() - 2, 2, "\n\n") == 0,
                  "the block ends in an empty line");
    Fuzz::require(text.find("\n\n") == text.size() - 2, "and holds no other");
    Fuzz::require(text.find('\r') == std::string::npos && text.find('\0') == std::string::npos,
                  "no carriage return and no zero byte");
    std::size_t codes = 0;
    for (std::size_t at = text.find("ResponseHeaderResponseCode="); at != std::string::npos;
         at = text.find("ResponseHeaderResponseCode=", at + 1)) {
        codes += at == 0 || text[at - 1] == '\n' ? 1 : 0;
    }
    Fuzz::require(codes <= 1, "there is one response code");
    return 0;
}
