// Writing JSON: one object, whatever bytes the texts hold.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Adds `text` under `name` when it is UTF-8, else its base64 form under `name` + "Base64".
void addText(nlohmann::json& members, const std::string& name, const std::string& text);

// One line. Bytes that are not UTF-8 become U+FFFD.
std::string jsonLine(const nlohmann::json& object);

}  // namespace Morvenn::Net::MvServerProxy::Tools
