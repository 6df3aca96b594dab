#include "Json.h"

#include <openssl/evp.h>

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

bool isUtf8(const std::string& text) {
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

// Piece by piece, since OpenSSL counts with int. A multiple of 3, so that only the end is padded.
constexpr std::size_t kPiece = 3 << 14;

std::string base64(const std::string& bytes) {
    std::string text;
    unsigned char encoded[kPiece / 3 * 4 + 1];
    for (std::size_t at = 0; at < bytes.size(); at += kPiece) {
        const auto* piece = reinterpret_cast<const unsigned char*>(bytes.data() + at);
        const std::size_t count = std::min(kPiece, bytes.size() - at);
        const int length = EVP_EncodeBlock(encoded, piece, static_cast<int>(count));
        text.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
    }
    return text;
}

}  // namespace

void addText(nlohmann::json& members, const std::string& name, const std::string& text) {
    if (isUtf8(text)) {
        members[name] = text;
    } else {
        members[name + "Base64"] = base64(text);
    }
}

std::string jsonLine(const nlohmann::json& object) {
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
