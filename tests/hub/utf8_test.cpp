// Which bytes count as UTF-8.

#include "Utf8.h"

#include <gtest/gtest.h>

using Morvenn::Net::MvServerProxy::Hub::isUtf8;

TEST(Utf8, AcceptsEveryLengthAtItsLimits) {
    for (const char* text : {"", "a\x7f", "\xc2\x80\xdf\xbf", "\xe0\xa0\x80\xef\xbf\xbf",
                             "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(isUtf8(text));
    }
}

TEST(Utf8, RefusesWhatIsCutOverlongOrOutOfRange) {
    const struct {
        const char* text;
        const char* why;
    } rows[] = {
        {"\x80", "continuation first"},
        {"\xc3", "cut"},
        {"\xe2\x82", "cut"},
        {"\xc0\xaf", "two bytes for one"},
        {"\xe0\x9f\xbf", "three for two"},
        {"\xf0\x8f\xbf\xbf", "four for three"},
        {"\xed\xa0\x80", "surrogate"},
        {"\xf4\x90\x80\x80", "above U+10FFFF"},
        {"\xf5\x80\x80\x80", "no such form"},
        {"\xc3"
         "a",
         "no continuation"},
        {"\xe2\x82"
         "a",
         "no continuation"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_FALSE(isUtf8(row.text));
    }
}
