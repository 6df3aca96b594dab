// Conversion between the local code page (ICU's default converter) and UTF-8.
//
// Each call opens its converters anew and shares nothing, so any number of threads may convert at
// once. Memory is bounded: 20480 UTF-16 units and 30720 bytes beside the result.
//
// By design: output is taken chunk by chunk as zero-terminated text, so a U+0000 cuts the chunk it
// is in. (TextConversion.NulCutsItsChunkOnly)
//
// By design: characters that cannot be represented are substituted, not reported.
// (TextConversion.WhatCannotBeRepresentedIsSubstituted)
//
// By design: a sequence that the end of a text of more than 20480 bytes cuts short may be dropped
// instead. (TextConversion.SequenceCutShortAtTheEndOfALongTextIsDropped)
#ifndef MORVENN_UTIL_TEXTCONVERSION_H
#define MORVENN_UTIL_TEXTCONVERSION_H

#include <string>

#include "util/Secret.h"

namespace Morvenn::Net::MvServerProxy::Util::Internal {

/// The UTF-8 form of @p length bytes in the local code page.
/// Throws Client::Utf8ConversionException, type 0, with ICU's name for the failure.
std::string toUtf8(const char* text, int length);
std::string toUtf8(const std::string& text);

/// The same for a secret: the result and every buffer used on the way are wiped.
SecretText toUtf8(const SecretText& text);

/// The local form of @p length bytes of UTF-8. Throws as toUtf8.
std::string fromUtf8(const char* bytes, int length);

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal

#endif  // MORVENN_UTIL_TEXTCONVERSION_H
