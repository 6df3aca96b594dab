// Base64 without line breaks.
#pragma once

#include <optional>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

std::string base64Encode(const std::string& bytes);

// Nothing when the text is no base64: wrong length, a foreign character, "=" before the end. White
// space around the text is no harm.
std::optional<std::string> base64Decode(const std::string& text);

}  // namespace Morvenn::Net::MvServerProxy::Hub
