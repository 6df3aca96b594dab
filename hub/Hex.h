// Bytes as lower-case hexadecimal digits.
#pragma once

#include <cstddef>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

inline std::string hex(const unsigned char* bytes, std::size_t count) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
