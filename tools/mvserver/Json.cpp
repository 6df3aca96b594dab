#include "Json.h"

#include <openssl/evp.h>

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

std::string base64(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
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
