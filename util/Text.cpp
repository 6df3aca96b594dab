#include "util/Text.h"

#include <cctype>
#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Util::Internal {

namespace {

// Most texts begin and end with a printing character of ASCII, white space in no locale.
bool isPlain(char c) {
    return c > ' ' && c <= '~';
}

bool isSpace(char c) {
    return !isPlain(c) && std::isspace(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

TwoPieces firstTwoPieces(std::string_view text, char separator) {
    const std::size_t end = text.find(separator);
    if (end == std::string_view::npos) {
        return {text, {}, false};
    }
    const std::string_view rest = text.substr(end + 1);
    return {text.substr(0, end), rest.substr(0, rest.find(separator)), true};
}

int toInt(std::string_view text) {
    return std::atoi(std::string(text).c_str());  // NOLINT(cert-err34-c): its rules are wanted
}

std::string toText(int number) {
    return std::to_string(number);
}

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal
