#include "testing/Bytes.h"

#include <cstdint>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

void appendHex(std::string& out, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    out += kDigits[value >> 4];
    out += kDigits[value & 15];
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

void appendEscaped(std::string& out, char byte) {
    switch (byte) {
        case '\r':
            out += "\\r";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\t':
            out += "\\t";
            return;
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        default:
            break;
    }
    if (byte >= ' ' && byte <= '~') {
        out += byte;
        return;
    }
    out += "\\x";
    appendHex(out, byte);
}

}  // namespace

std::string escaped(std::string_view text, std::size_t limit) {
    std::string out = "\"";
    const std::string_view shown = text.substr(0, limit);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        // In C++ a digit right after \xNN would belong to the escape, so the literal is split
        // there.
        const bool afterHex = i > 0 && isHexDigit(shown[i]) && out.size() > 3 &&
                              out.compare(out.size() - 4, 2, "\\x") == 0;
        if (afterHex) {
            out += "\" \"";
        }
        appendEscaped(out, shown[i]);
    }
    out += '"';
    if (shown.size() < text.size()) {
        out += "... (" + std::to_string(text.size()) + " bytes)";
    }
    return out;
}

std::string hex(std::string_view bytes) {
    std::string out;
    for (const char byte : bytes) {
        appendHex(out, byte);
    }
    return out;
}

std::string unhex(std::string_view digits) {
    std::string packed;
    for (const char c : digits) {
        if (c == ' ') {
            continue;
        }
        if (!isHexDigit(c)) {
            throw std::invalid_argument("unhex: not a hexadecimal digit: " + escaped({&c, 1}));
        }
        packed += c;
    }
    if (packed.size() % 2 != 0) {
        throw std::invalid_argument("unhex: odd number of digits");
    }
    std::string out;
    for (std::size_t i = 0; i < packed.size(); i += 2) {
        out += static_cast<char>(std::stoi(packed.substr(i, 2), nullptr, 16));
    }
    return out;
}

std::string sampleBytes(std::size_t size) {
    std::string out(size, '\0');
    std::uint32_t state = 2463534242U;
    for (char& byte : out) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        byte = static_cast<char>(1 + state % 255);
    }
    return out;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
