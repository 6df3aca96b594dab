// The ground for tests of the log: a private directory and no level set.
#ifndef MV_TESTS_UNIT_LOGGERTEST_H
#define MV_TESTS_UNIT_LOGGERTEST_H

#include <gtest/gtest.h>

#include <cstdlib>

#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"

namespace Morvenn::Net::MvServerProxy {

class Logger : public ::testing::Test {
protected:
    TestKit::PrivateTemp temp;

    void SetUp() override { unsetenv("MV_CPPBINDING_LOG_LEVEL"); }
};

}  // namespace Morvenn::Net::MvServerProxy

#endif
