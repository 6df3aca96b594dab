// The kit in googletest's clothes. The kit itself does not need googletest; this header does.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_GTEST_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_GTEST_H

#include <gtest/gtest.h>

#include <functional>

#include "Calls.h"
#include "FakeProxy.h"
#include "FreshProcess.h"

namespace Morvenn::Net::MvServerProxy::TestKit {

/// Gives a test its proxy. At the end of the test every call must have been scripted and the script
/// played to its end.
class ProxyTest : public ::testing::Test {
protected:
    FakeProxy proxy;

    void TearDown() override {
        EXPECT_EQ(proxy.complaints(), "");
        EXPECT_EQ(proxy.leftOver(), "") << "these steps were never asked for";
    }
};

/// Runs expectations in a child process; those that fail there fail the test, with their text.
inline void expectInFreshProcess(const std::function<void()>& work) {
    const Outcome outcome = statusFromFreshProcess([&work] {
        work();
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_TRUE(outcome.good()) << outcome;
}

/// EXPECT_EQ(expected, actual) that names the first call at which the lists part.
inline ::testing::AssertionResult sameCalls(const Calls& expected, const Calls& actual) {
    if (expected == actual) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << difference(expected, actual)
                                         << "\n  expected:" << expected << "\n  actual:" << actual;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
