// Runs a piece of a test in a child of its own: for state that a process has only once, and for
// code that is expected to be killed.
//
//   const Outcome outcome = inFreshProcess([] { std::abort(); });
//   EXPECT_EQ(outcome.signal, SIGABRT) << outcome.output;
//
// With googletest, expectInFreshProcess of GTest.h brings failed expectations back as well.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_FRESHPROCESS_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_FRESHPROCESS_H

#include <functional>
#include <iosfwd>
#include <string>

namespace Morvenn::Net::MvServerProxy::TestKit {

/// Exit status of a child that an exception left.
constexpr int kLeftByException = 70;

/// How a child ended.
struct Outcome {
    int status = 0;      ///< exit status; 0 when a signal ended it
    int signal = 0;      ///< the signal that ended it, or 0
    std::string output;  ///< all it wrote to standard output and standard error, in order

    bool good() const { return status == 0 && signal == 0; }
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

/// Forks, runs @p work in the child and waits for its end. The child leaves with the value of
/// @p work, without running exit handlers or destructors of static objects; an exception ends it
/// with kLeftByException and its text in the output.
/// @throws std::system_error when there can be no child.
Outcome statusFromFreshProcess(const std::function<int()>& work);

/// The same for work without a value: exit status 0.
Outcome inFreshProcess(const std::function<void()>& work);

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
