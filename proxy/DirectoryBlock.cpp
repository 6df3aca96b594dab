#include "DirectoryBlock.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::size_t kLongestCharacter = 4;

bool continues(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::size_t characterLength(char first) {
    const auto byte = static_cast<unsigned char>(first);
    if (byte >= 0xF0U) {
        return 4;
    }
    if (byte >= 0xE0U) {
        return 3;
    }
    return byte >= 0xC0U ? 2 : 1;
}

// Without the beginning of a character whose end is missing.
std::size_t wholeCharacters(std::string_view bytes) {
    for (std::size_t back = 1; back <= std::min(kLongestCharacter, bytes.size()); ++back) {
        const std::size_t begin = bytes.size() - back;
        if (!continues(bytes[begin])) {
            return characterLength(bytes[begin]) > back ? begin : bytes.size();
        }
    }
    return bytes.size();
}

}  // namespace

std::size_t directoryBlock(std::string_view bytes, std::size_t most, bool last) {
    if (last && bytes.size() <= most) {
        return bytes.size();
    }
    bytes = bytes.substr(0, most);
    const auto lineEnd = bytes.rfind('\n');
    return lineEnd != std::string_view::npos ? lineEnd + 1 : wholeCharacters(bytes);
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
