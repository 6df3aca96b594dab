// Text files that servers write line by line.
#pragma once

#include <string>
#include <vector>

#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {

// The complete lines of a text.
std::vector<std::string> linesOf(const std::string& text);

// Those of a file; waits until there are `count` of them, for as long as waitUntil does.
std::vector<std::string> awaitLines(const TempFolder& folder, const std::string& file,
                                    std::size_t count);

}  // namespace Morvenn::Net::MvServerProxy::Integration
