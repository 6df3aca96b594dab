// What the logger needs of the operating system. Texts are bytes, taken and given as they are.
#ifndef MORVENN_UTIL_PLATFORM_H
#define MORVENN_UTIL_PLATFORM_H

#include <cstdio>
#include <string>

namespace Morvenn::Net::MvServerProxy::Util::Internal {

/// The current process id as signed decimal text.
std::string processId();

/// The variable's value, valid until the environment changes; null when it is not set, and always
/// null in a process that runs with raised privileges.
const char* environmentValue(const char* name);

/// Creates or truncates a file that only its owner may read, unbuffered and closed on exec.
/// Null when that fails, and for anything but a regular file of one link that this user owns:
/// links, pipes and devices are refused without being followed, opened for writing or truncated.
std::FILE* createPrivateFile(const std::string& path);

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal

#endif  // MORVENN_UTIL_PLATFORM_H
