#include "Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <climits>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kWhiteSpace[] = " \t\r\n";

std::string stripped(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    if (begin == std::string::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

}  // namespace

std::string base64Encode(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // EVP_EncodeBlock ends with a zero
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> base64Decode(const std::string& text) {
    const std::string digits = stripped(text);
    const std::size_t data = std::min(digits.find_first_not_of(kAlphabet), digits.size());
    const std::size_t padding = digits.size() - data;
    const bool padded = digits.find_first_not_of('=', data) == std::string::npos && padding <= 2;
    if (digits.size() % 4 != 0 || digits.size() > INT_MAX || !padded) {
        return std::nullopt;
    }
    std::string bytes(digits.size() / 4 * 3, '\0');
    EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                    reinterpret_cast<const unsigned char*>(digits.data()),
                    static_cast<int>(digits.size()));
    bytes.resize(bytes.size() - padding);
    return bytes;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
