#include "util/Utf8Converter.h"

#include <string.h>

#include <cstdint>
#include <memory>
#include <string>

#include "morvenn/net/mvserverproxy/client/Exceptions.h"

namespace Morvenn::Net::MvServerProxy::Util::Internal {

namespace {

using Client::Utf8ConversionException;

constexpr std::size_t kPivotLimit = 20480;
constexpr std::size_t kTargetLimit = 30720;
constexpr double kTargetFactor = 1.5;

std::size_t targetCapacityFor(std::size_t length) {
    return length < kPivotLimit
               ? static_cast<std::size_t>(static_cast<double>(length) * kTargetFactor)
               : kTargetLimit;
}

UConverter* openConverter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    if (status > U_ZERO_ERROR) {
        throw Utf8ConversionException(std::string("Error opening converter ") +
                                      u_errorName(status) + "\n");
    }
    return converter;
}

// The converter's name with its aliases: "UTF-8 (UTF-8, ibm-1208, ...)".
std::string describe(const UConverter* converter) {
    UErrorCode status = U_ZERO_ERROR;
    const char* name = ucnv_getName(converter, &status);
    std::string description = std::string(name != nullptr ? name : "") + " (";
    const std::uint16_t count = ucnv_countAliases(name, &status);
    for (std::uint16_t i = 0; i < count; ++i) {
        const char* alias = ucnv_getAlias(name, i, &status);
        description.append(i == 0 ? "" : ", ").append(alias != nullptr ? alias : "");
    }
    return description + ")";
}

// By design: both directions name the UTF-8 converter for "from Unicode" and the local one for "to
// Unicode", whichever did the work. (TextConversion.FailuresNameTheSameConvertersInBothDirections)
void checkFromUnicode(UErrorCode status, const UConverter* utf8) {
    if (status > U_ZERO_ERROR) {
        throw Utf8ConversionException("An error occured converting Unicode to " + describe(utf8) +
                                      ".\n" + u_errorName(status) + "\n");
    }
}

void checkToUnicode(UErrorCode status, const UConverter* local) {
    if (status > U_ZERO_ERROR) {
        throw Utf8ConversionException("An error occured converting " + describe(local) +
                                      " to Unicode.\n" + u_errorName(status) + "\n");
    }
}

}  // namespace

Utf8Converter::Utf8Converter(Direction direction, int length) : m_direction(direction) {
    const auto size = static_cast<std::size_t>(length);
    m_pivotCapacity = size < kPivotLimit ? size : kPivotLimit;
    m_targetCapacity = direction == Direction::Decode ? m_pivotCapacity : targetCapacityFor(size);

    std::unique_ptr<UChar[]> pivot(new UChar[m_pivotCapacity + 1]);
    std::unique_ptr<char[]> output(new char[m_targetCapacity + 1]);
    pivot[0] = 0;
    output[0] = '\0';
    m_pivot = pivot.release();  // from here on released by the destructor only
    m_output = output.release();

    m_local = openConverter(nullptr);
    m_utf8 = openConverter("UTF-8");
}

Utf8Converter::~Utf8Converter() {
    ucnv_close(m_local);
    ucnv_close(m_utf8);
    ::explicit_bzero(m_pivot, (m_pivotCapacity + 1) * sizeof(UChar));
    ::explicit_bzero(m_output, m_targetCapacity + 1);
    delete[] m_pivot;
    delete[] m_output;
}

void Utf8Converter::convert(const char* source, int length, const Sink& sink) {
    const char* const limit = source + length;
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        UChar* end = m_pivot;
        const bool flush = limit - source <= static_cast<std::ptrdiff_t>(m_pivotCapacity);
        ucnv_toUnicode(from(), &end, m_pivot + m_pivotCapacity, &source, limit, nullptr,
                       static_cast<UBool>(flush), &status);
        *end = 0;
        emptyPivot(end, status != U_BUFFER_OVERFLOW_ERROR, sink);
    }
    checkToUnicode(status, m_local);
}

// Flushes the target converter with the last pivot only: a surrogate pair may lie across two.
void Utf8Converter::emptyPivot(const UChar* end, bool isLast, const Sink& sink) {
    const UChar* next = m_pivot;
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        char* stop = m_output;
        ucnv_fromUnicode(to(), &stop, m_output + m_targetCapacity, &next, end, nullptr,
                         static_cast<UBool>(isLast), &status);
        *stop = '\0';
        sink(m_output, ::strlen(m_output));
    }
    checkFromUnicode(status, m_utf8);
}

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal
