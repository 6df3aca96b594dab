#include "ZlibInterposer.h"

#include <dlfcn.h>
#include <zlib.h>

#include <stdexcept>

namespace ZlibInterposer {

Settings settings;
Record record;

namespace {

template <typename F>
F next(F /*type of*/, const char* name) {
    void* address = dlsym(RTLD_NEXT, name);
    if (address == nullptr) {
        throw std::runtime_error(std::string("zlib has no ") + name);
    }
    return reinterpret_cast<F>(address);
}

}  // namespace

}  // namespace ZlibInterposer

using ZlibInterposer::next;
using ZlibInterposer::record;
using ZlibInterposer::settings;

extern "C" {

int inflateInit2_(z_streamp stream, int windowBits, const char* version, int size) {
    static const auto real = next(&inflateInit2_, "inflateInit2_");
    ++record.inits;
    record.version = version;
    record.windowBits = windowBits;
    record.ownAllocator =
        stream->zalloc != nullptr || stream->zfree != nullptr || stream->opaque != nullptr;
    record.availableIn = stream->avail_in;
    return settings.initStatus != 0 ? settings.initStatus : real(stream, windowBits, version, size);
}

int inflate(z_streamp stream, int flush) {
    static const auto real = next(&inflate, "inflate");
    ++record.inflates;
    if (settings.failAt > 0 && --settings.failAt == 0) {
        return settings.inflateStatus;
    }
    return real(stream, flush);
}

int inflateEnd(z_streamp stream) {
    static const auto real = next(&inflateEnd, "inflateEnd");
    ++record.ends;
    const int status = real(stream);
    return settings.endStatus != 0 ? settings.endStatus : status;
}

}  // extern "C"
