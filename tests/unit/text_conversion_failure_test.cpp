// Conversions that fail: messages, and what is released.
#include <malloc.h>

#include "TextConversionTest.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "testing/Failure.h"
#include "testing/GTest.h"

// Present when the program is built with the address sanitizer, whose memory mallinfo2 does not
// see.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Client::Utf8ConversionException;

namespace {

Failure ofToUtf8(int length = 1) {
    return failureOf([length] { Util::Internal::toUtf8("a", length); });
}

Failure ofFromUtf8(int length = 1) {
    return failureOf([length] { Util::Internal::fromUtf8("a", length); });
}

Failure conversionFailure(const std::string& message) {
    return failure<Utf8ConversionException>(0, message);
}

std::size_t allocatedBytes() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace

TEST_F(TextConversion, NegativeLengthIsRefusedByIcu) {
    icu.localCodePage = "ISO-8859-1";
    const Failure expected =
        conversionFailure("An error occured converting " + IcuInterposer::describe("ISO-8859-1") +
                          " to Unicode.\nU_ILLEGAL_ARGUMENT_ERROR\n");
    EXPECT_EQ(ofToUtf8(-1), expected);
    EXPECT_EQ(ofToUtf8(-2147483647 - 1), expected);
    EXPECT_EQ(ofFromUtf8(-1), expected);
}

// By design: both directions name the local converter for the step to Unicode and the UTF-8
// converter for the step from it, whichever did the work.
TEST_F(TextConversion, FailuresNameTheSameConvertersInBothDirections) {
    icu.localCodePage = "ISO-8859-1";
    icu.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    const Failure toUnicode =
        conversionFailure("An error occured converting " + IcuInterposer::describe("ISO-8859-1") +
                          " to Unicode.\nU_INVALID_CHAR_FOUND\n");
    EXPECT_EQ(ofToUtf8(), toUnicode);
    EXPECT_EQ(ofFromUtf8(), toUnicode);

    icu.toUnicodeStatus = U_ZERO_ERROR;
    icu.fromUnicodeStatus = U_MEMORY_ALLOCATION_ERROR;
    const Failure fromUnicode =
        conversionFailure("An error occured converting Unicode to " +
                          IcuInterposer::describe("UTF-8") + ".\nU_MEMORY_ALLOCATION_ERROR\n");
    EXPECT_EQ(ofToUtf8(), fromUnicode);
    EXPECT_EQ(ofFromUtf8(), fromUnicode);
}

TEST_F(TextConversion, FromUnicodeIsCheckedBeforeToUnicode) {
    icu.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    icu.fromUnicodeStatus = U_ILLEGAL_CHAR_FOUND;
    EXPECT_EQ(ofToUtf8(),
              conversionFailure("An error occured converting Unicode to " +
                                IcuInterposer::describe("UTF-8") + ".\nU_ILLEGAL_CHAR_FOUND\n"));
}

TEST_F(TextConversion, WarningsAreNoFailures) {
    icu.toUnicodeStatus = U_USING_DEFAULT_WARNING;
    EXPECT_EQ(ofToUtf8(), Failure{});
    icu.toUnicodeStatus = U_ZERO_ERROR;
    icu.fromUnicodeStatus = U_STRING_NOT_TERMINATED_WARNING;
    EXPECT_EQ(ofFromUtf8(), Failure{});
}

TEST_F(TextConversion, AliasesAreListedByIcu) {
    const std::string utf8 = IcuInterposer::describe("UTF-8");
    EXPECT_EQ(utf8.substr(0, 14), "UTF-8 (UTF-8, ");
    EXPECT_EQ(utf8.back(), ')');
}

TEST_F(TextConversion, AliasesThatIcuCountsAndDoesNotGiveAreEmpty) {
    icu.localCodePage = "ISO-8859-1";
    icu.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    UErrorCode status = U_ZERO_ERROR;
    std::string commas;
    for (int i = 1; i < ucnv_countAliases("ISO-8859-1", &status); ++i) {
        commas += ", ";
    }
    icu.hasAliases = false;
    EXPECT_EQ(ofToUtf8(), conversionFailure("An error occured converting ISO-8859-1 (" + commas +
                                            ") to Unicode.\nU_INVALID_CHAR_FOUND\n"));
}

TEST_F(TextConversion, ConverterThatDoesNotTellItsNameHasNoAliasesEither) {
    icu.toUnicodeStatus = U_INVALID_CHAR_FOUND;
    icu.hasNames = false;
    EXPECT_EQ(ofToUtf8(), conversionFailure("An error occured converting  () to Unicode.\n"
                                            "U_INVALID_CHAR_FOUND\n"));
}

TEST_F(TextConversion, ConvertersAreClosedWhenAConversionFails) {
    icu.fromUnicodeStatus = U_ILLEGAL_CHAR_FOUND;
    ofToUtf8();
    EXPECT_EQ(IcuInterposer::counts.opened, 2);
    EXPECT_EQ(IcuInterposer::counts.closed, 2);
}

// --- converters that cannot be opened ------------------------------------------------------------

// In children, as the memory of a conversion that could not start is lost for good.

TEST_F(TextConversion, LocalConverterThatCannotBeOpenedStopsThere) {
    expectInFreshProcess([this] {
        icu.failOpen = 1;
        EXPECT_EQ(ofToUtf8(), conversionFailure("Error opening converter U_FILE_ACCESS_ERROR\n"));
        EXPECT_EQ(IcuInterposer::counts.opened, 0) << "the UTF-8 converter is not tried";
    });
}

TEST_F(TextConversion, Utf8ConverterThatCannotBeOpened) {
    expectInFreshProcess([this] {
        icu.failOpen = 2;
        icu.openStatus = U_MEMORY_ALLOCATION_ERROR;
        EXPECT_EQ(ofFromUtf8(),
                  conversionFailure("Error opening converter U_MEMORY_ALLOCATION_ERROR\n"));
    });
}

// By design: nothing is released when a converter cannot be opened.
TEST_F(TextConversion, ConverterThatCannotBeOpenedKeepsItsBuffers) {
    expectInFreshProcess([this] {
        icu.failOpen = 2;
        const std::size_t before = allocatedBytes();
        EXPECT_EQ(ofToUtf8(20480),
                  conversionFailure("Error opening converter U_FILE_ACCESS_ERROR\n"));
        EXPECT_EQ(IcuInterposer::counts.opened, 1);
        EXPECT_EQ(IcuInterposer::counts.closed, 0);
        // 20481 units of two bytes and 30721 bytes.
        EXPECT_GE(allocatedBytes() - before, 2U * 20481U + 30721U);
    });
}
