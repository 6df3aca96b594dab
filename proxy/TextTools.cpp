#include "TextTools.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

char lowerChar(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isAlphaNumeric(char c) {
    return (c >= '0' && c <= '9') || (lowerChar(c) >= 'a' && lowerChar(c) <= 'z');
}

void appendHex(std::string& out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += kHexDigits[byte >> 4U];
    out += kHexDigits[byte & 0x0FU];
}

}  // namespace

std::string lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), lowerChar);
    return out;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(),
                      [](char a, char b) { return lowerChar(a) == lowerChar(b); });
}

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isToken(std::string_view text) {
    constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        return isAlphaNumeric(c) || kMarks.find(c) != std::string_view::npos;
    });
}

std::vector<std::string_view> pieces(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> out;
    for (;;) {
        const auto begin = text.find_first_not_of(separators);
        if (begin == std::string_view::npos) {
            return out;
        }
        text.remove_prefix(begin);
        const auto end = std::min(text.find_first_of(separators), text.size());
        out.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::string percentEncoded(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (isAlphaNumeric(c) || std::string_view("-._~").find(c) != std::string_view::npos) {
            out += c;
        } else {
            appendHex(out, c);
        }
    }
    return out;
}

std::string escaped(std::string_view text, std::string_view which) {
    std::string out;
    for (char c : text) {
        if (which.find(c) == std::string_view::npos) {
            out += c;
        } else {
            appendHex(out, c);
        }
    }
    return out;
}

std::string unescaped(std::string_view text, std::string_view which) {
    std::string out;
    while (!text.empty()) {
        const auto match = std::find_if(which.begin(), which.end(), [&](char c) {
            std::string code;
            appendHex(code, c);
            return startsWithIgnoringCase(text, code);
        });
        const bool found = match != which.end();
        out += found ? *match : text.front();
        text.remove_prefix(found ? 3 : 1);
    }
    return out;
}

std::string oneLine(std::string_view text) {
    std::string out(text);
    std::replace_if(
        out.begin(), out.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7F'; }, ' ');
    return out;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
