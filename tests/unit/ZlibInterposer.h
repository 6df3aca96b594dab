// Stands in front of zlib's inflation in the test program: writes down how it is called and makes
// it fail.
#ifndef MV_TESTS_UNIT_ZLIBINTERPOSER_H
#define MV_TESTS_UNIT_ZLIBINTERPOSER_H

#include <string>

namespace ZlibInterposer {

struct Settings {
    int initStatus = 0;  ///< when not 0: given by inflateInit2_ instead of a start
    int failAt = 0;      ///< the n-th inflate from now on gives inflateStatus and does nothing
    int inflateStatus = 0;
    int endStatus = 0;  ///< given by inflateEnd, which still releases what zlib holds
};

extern Settings settings;

struct Record {
    int inits = 0;
    int inflates = 0;
    int ends = 0;
    std::string version;
    int windowBits = 0;
    bool ownAllocator = false;  ///< a memory function or its argument was set
    unsigned availableIn = 0;   ///< at the start
};

extern Record record;

}  // namespace ZlibInterposer

#endif
