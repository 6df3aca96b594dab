// Files that only their owner may read, written whole or not at all.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

// The whole content. Throws std::runtime_error that names the file and the reason.
std::string readWholeFile(const std::string& path);

// Replaces the file in one step, mode 0600; a link at `path` is replaced, not followed. Throws
// std::runtime_error that names the file and the reason, and leaves nothing half-written.
void writePrivateFile(const std::string& path, const std::string& content);

}  // namespace Morvenn::Net::MvServerProxy::Hub
