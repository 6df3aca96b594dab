// The ground for tests of text conversion: ICU, which a test may set to another code page or
// failure.
#ifndef MV_TESTS_UNIT_TEXTCONVERSIONTEST_H
#define MV_TESTS_UNIT_TEXTCONVERSIONTEST_H

#include <gtest/gtest.h>

#include "IcuInterposer.h"
#include "util/TextConversion.h"

namespace Morvenn::Net::MvServerProxy {

class TextConversion : public ::testing::Test {
protected:
    IcuInterposer::Settings& icu = IcuInterposer::settings;

    ~TextConversion() override { icu = {}; }
};

}  // namespace Morvenn::Net::MvServerProxy

#endif
