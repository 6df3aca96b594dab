#include "Terminal.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

bool useColour() {
    const char* off = std::getenv("NO_COLOR");
    return isTerminal(STDERR_FILENO) && (off == nullptr || *off == '\0');
}

std::string styled(const char* style, const std::string& text) {
    return useColour() ? std::string("\033[") + style + "m" + text + "\033[0m" : text;
}

std::string visible(unsigned char c) {
    switch (c) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    char text[8];
    static_cast<void>(std::snprintf(text, sizeof text, "\\x%02x", c));
    return text;
}

// U+0080 to U+009F, which terminals may obey, are C2 80 to C2 9F in UTF-8.
bool isControlPair(unsigned char first, unsigned char second) {
    return first == 0xC2 && second >= 0x80 && second <= 0x9F;
}

}  // namespace

bool isTerminal(int descriptor) {
    return ::isatty(descriptor) == 1;
}

std::string escaped(const std::string& text, bool keepLines) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool isKept = keepLines && (c == '\n' || c == '\t');
        if (isControlPair(c, next)) {
            result += visible(c) + visible(next);
            ++i;
        } else if (!isKept && (c < 0x20 || c == 0x7F)) {
            result += visible(c);
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string inRed(const std::string& text) {
    return styled("1;31", text);
}

std::string dimmed(const std::string& text) {
    return styled("2", text);
}

void note(const std::string& line) {
    std::cerr << line + "\n" << std::flush;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
