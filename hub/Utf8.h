// Whether bytes are UTF-8.
#pragma once

#include <string_view>

namespace Morvenn::Net::MvServerProxy::Hub {

// Shortest forms only, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

}  // namespace Morvenn::Net::MvServerProxy::Hub
