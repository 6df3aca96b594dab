#include "IcuInterposer.h"

#include <stdexcept>

#include "NextFunction.h"

// ICU's header renames its functions with the version; these macros give the name that is linked.
#define MV_TEXT_OF(name) #name
#define MV_LINKED_NAME(name) MV_TEXT_OF(name)

namespace IcuInterposer {

Settings settings;
Counts counts;

namespace {

void check(UErrorCode status) {
    if (U_FAILURE(status)) {
        throw std::runtime_error(u_errorName(status));
    }
}

}  // namespace

std::string describe(const char* converterName) {
    std::string aliases;
    UErrorCode status = U_ZERO_ERROR;
    const std::uint16_t count = ucnv_countAliases(converterName, &status);
    for (std::uint16_t i = 0; i < count; ++i) {
        aliases += (i == 0 ? "" : ", ") + std::string(ucnv_getAlias(converterName, i, &status));
    }
    check(status);
    return std::string(converterName) + " (" + aliases + ")";
}

std::string convertInOneCall(const char* to, const char* from, const std::string& text) {
    std::string out(text.size() * 8 + 64, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t size = ucnv_convert(to, from, out.data(), static_cast<int32_t>(out.size()),
                                      text.data(), static_cast<int32_t>(text.size()), &status);
    check(status);
    out.resize(static_cast<std::size_t>(size));
    return out;
}

}  // namespace IcuInterposer

using IcuInterposer::counts;
using IcuInterposer::settings;
using Morvenn::Net::MvServerProxy::Tests::nextFunction;

extern "C" {

UConverter* ucnv_open(const char* name, UErrorCode* status) {
    static const auto real = nextFunction(&ucnv_open, MV_LINKED_NAME(ucnv_open));
    if (settings.failOpen > 0 && --settings.failOpen == 0) {
        *status = settings.openStatus;
        return nullptr;
    }
    ++counts.opened;
    return real(name == nullptr ? settings.localCodePage : name, status);
}

void ucnv_close(UConverter* converter) {
    static const auto real = nextFunction(&ucnv_close, MV_LINKED_NAME(ucnv_close));
    ++counts.closed;
    real(converter);
}

void ucnv_toUnicode(UConverter* converter, UChar** target, const UChar* targetLimit,
                    const char** source, const char* sourceLimit, int32_t* offsets, UBool flush,
                    UErrorCode* status) {
    static const auto real = nextFunction(&ucnv_toUnicode, MV_LINKED_NAME(ucnv_toUnicode));
    if (settings.toUnicodeStatus != U_ZERO_ERROR) {
        *status = settings.toUnicodeStatus;
        return;
    }
    real(converter, target, targetLimit, source, sourceLimit, offsets, flush, status);
}

void ucnv_fromUnicode(UConverter* converter, char** target, const char* targetLimit,
                      const UChar** source, const UChar* sourceLimit, int32_t* offsets, UBool flush,
                      UErrorCode* status) {
    static const auto real = nextFunction(&ucnv_fromUnicode, MV_LINKED_NAME(ucnv_fromUnicode));
    if (settings.fromUnicodeStatus != U_ZERO_ERROR) {
        *status = settings.fromUnicodeStatus;
        return;
    }
    real(converter, target, targetLimit, source, sourceLimit, offsets, flush, status);
}

const char* ucnv_getName(const UConverter* converter, UErrorCode* status) {
    static const auto real = nextFunction(&ucnv_getName, MV_LINKED_NAME(ucnv_getName));
    return settings.hasNames ? real(converter, status) : nullptr;
}

const char* ucnv_getAlias(const char* name, uint16_t number, UErrorCode* status) {
    static const auto real = nextFunction(&ucnv_getAlias, MV_LINKED_NAME(ucnv_getAlias));
    return settings.hasAliases ? real(name, number, status) : nullptr;
}

}  // extern "C"
