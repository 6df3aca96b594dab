// The ground for tests of requests: the library is initialised, and what that called and logged is
// forgotten.
#ifndef MV_TESTS_UNIT_REQUESTTEST_H
#define MV_TESTS_UNIT_REQUESTTEST_H

#include <sstream>
#include <string>

#include "LoggedTest.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

namespace Morvenn::Net::MvServerProxy {

class RequestTest : public LoggedTest {
protected:
    void SetUp() override {
        LoggedTest::SetUp();
        Client::MvServerRequest::init();
        proxy.takeCalls();
        m_before = TestKit::fileText(TestKit::logPath()).size();
    }

    /// The log since the test began, byte for byte.
    std::string logged() const { return TestKit::fileText(TestKit::logPath()).substr(m_before); }

    /// The same in lines.
    TestKit::Lines lines() const { return TestKit::linesOf(logged()); }

    Client::MSPSession session;

private:
    std::size_t m_before = 0;
};

}  // namespace Morvenn::Net::MvServerProxy

#endif
