#include "util/Platform.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Util::Internal {

namespace {

bool isPrivateRegularFile(int descriptor) {
    struct stat file {};
    return ::fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode) && file.st_nlink == 1 &&
           file.st_uid == ::geteuid();
}

}  // namespace

std::string processId() {
    return toText(static_cast<int>(::getpid()));
}

const char* environmentValue(const char* name) {
    return ::secure_getenv(name);
}

std::FILE* createPrivateFile(const std::string& path) {
    // Truncated only after the check, so that a refused file keeps its content. Not blocking, so
    // that a pipe without a reader is an error instead of a wait.
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
               S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = nullptr;
    if (isPrivateRegularFile(descriptor) && ::ftruncate(descriptor, 0) == 0) {
        file = ::fdopen(descriptor, "w");
    }
    if (file == nullptr) {
        ::close(descriptor);
        return nullptr;
    }
    // One write of the stream is then one write of the system: lines stay whole across fork().
    static_cast<void>(std::setvbuf(file, nullptr, _IONBF, 0));
    return file;
}

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal
