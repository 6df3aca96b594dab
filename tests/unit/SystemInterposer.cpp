#include "SystemInterposer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "NextFunction.h"

namespace SystemInterposer {

Settings settings;

}  // namespace SystemInterposer

using Morvenn::Net::MvServerProxy::Tests::nextFunction;
using SystemInterposer::settings;

extern "C" {

int fstat(int descriptor, struct stat* file) noexcept {
    static const auto real = nextFunction(&fstat, "fstat");
    if (settings.failExamine) {
        errno = EIO;
        return -1;
    }
    return real(descriptor, file);
}

int ftruncate(int descriptor, off_t length) noexcept {
    static const auto real = nextFunction(&ftruncate, "ftruncate");
    if (settings.failTruncate) {
        errno = EIO;
        return -1;
    }
    return real(descriptor, length);
}

uid_t geteuid() noexcept {
    static const auto real = nextFunction(&geteuid, "geteuid");
    constexpr uid_t kNobody = 65534;
    return settings.isAnotherUser ? kNobody : real();
}

}  // extern "C"
