// The version that a loaded library states in a note of its ELF file, as the default proxy library
// does.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Of the file that `address` was loaded from; empty when it has no such note.
std::string notedVersion(const void* address);

}  // namespace Morvenn::Net::MvServerProxy::Tools
