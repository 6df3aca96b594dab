// Stands in front of ICU in the test program: chooses the local code page, which ICU fixes when it
// is built, and makes its functions fail.
#ifndef MV_TESTS_UNIT_ICUINTERPOSER_H
#define MV_TESTS_UNIT_ICUINTERPOSER_H

#include <unicode/ucnv.h>

#include <string>

namespace IcuInterposer {

struct Settings {
    const char* localCodePage = nullptr;  ///< the converter opened for "no name"; null: ICU's own
    int failOpen = 0;                     ///< the n-th ucnv_open from now on fails with openStatus
    UErrorCode openStatus = U_FILE_ACCESS_ERROR;
    UErrorCode toUnicodeStatus = U_ZERO_ERROR;    ///< when not zero: given instead of converting
    UErrorCode fromUnicodeStatus = U_ZERO_ERROR;  ///< the same
    bool hasNames = true;                         ///< whether a converter tells its name
    bool hasAliases = true;  ///< whether an alias is given, of those that are counted
};

extern Settings settings;

struct Counts {
    int opened = 0;
    int closed = 0;
};

extern Counts counts;

/// The converter's name with its aliases, in the order in which ICU lists them: "N (A, B)".
std::string describe(const char* converterName);

/// What ICU makes of the text in one call, from one named code page to another.
std::string convertInOneCall(const char* to, const char* from, const std::string& text);

}  // namespace IcuInterposer

#endif
