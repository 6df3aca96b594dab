// The ground that tests of the library stand on: a scripted proxy, and a log of one's own that
// holds every line from debug level up.
#ifndef MV_TESTS_UNIT_LOGGEDTEST_H
#define MV_TESTS_UNIT_LOGGEDTEST_H

#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"

namespace Morvenn::Net::MvServerProxy {

class LoggedTest : public TestKit::ProxyTest {
protected:
    TestKit::PrivateTemp temp;

    void SetUp() override {
        TestKit::setLogLevel("DEBUG");
        Util::MvServerCppBindingLogger::getInstance();
    }
};

}  // namespace Morvenn::Net::MvServerProxy

#endif
