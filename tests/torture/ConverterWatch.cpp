#include "tests/torture/ConverterWatch.h"

#include <dlfcn.h>
#include <unicode/ucnv.h>

// ICU's header renames its functions with the version; these macros give the name that is linked.
#define MV_TEXT_OF(name) #name
#define MV_LINKED_NAME(name) MV_TEXT_OF(name)

namespace Torture {
namespace {

std::size_t s_failures = 0;

}  // namespace

void resetConverterFailures() {
    s_failures = 0;
}

std::size_t converterFailures() {
    return s_failures;
}

}  // namespace Torture

extern "C" UConverter* ucnv_open(const char* name, UErrorCode* status) {
    using Open = UConverter* (*)(const char*, UErrorCode*);
    static const auto real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, MV_LINKED_NAME(ucnv_open)));
    UConverter* converter = real(name, status);
    Torture::s_failures += U_FAILURE(*status) ? 1 : 0;
    return converter;
}
