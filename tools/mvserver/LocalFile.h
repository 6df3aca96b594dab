// Reading a file whole.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// All bytes of the file. A Failure (LocalFile) when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace Morvenn::Net::MvServerProxy::Tools
