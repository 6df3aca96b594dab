#include "ZlibInterposer.h"

#include <zlib.h>

#include "NextFunction.h"

namespace ZlibInterposer {

Settings settings;
Record record;

}  // namespace ZlibInterposer

using Morvenn::Net::MvServerProxy::Tests::nextFunction;
using ZlibInterposer::record;
using ZlibInterposer::settings;

extern "C" {

int inflateInit2_(z_streamp stream, int windowBits, const char* version, int size) {
    static const auto real = nextFunction(&inflateInit2_, "inflateInit2_");
    ++record.inits;
    record.version = version;
    record.windowBits = windowBits;
    record.ownAllocator =
        stream->zalloc != nullptr || stream->zfree != nullptr || stream->opaque != nullptr;
    record.availableIn = stream->avail_in;
    return settings.initStatus != 0 ? settings.initStatus : real(stream, windowBits, version, size);
}

int inflate(z_streamp stream, int flush) {
    static const auto real = nextFunction(&inflate, "inflate");
    ++record.inflates;
    if (settings.failAt > 0 && --settings.failAt == 0) {
        return settings.inflateStatus;
    }
    return real(stream, flush);
}

int inflateEnd(z_streamp stream) {
    static const auto real = nextFunction(&inflateEnd, "inflateEnd");
    ++record.ends;
    const int status = real(stream);
    return settings.endStatus != 0 ? settings.endStatus : status;
}

}  // extern "C"
