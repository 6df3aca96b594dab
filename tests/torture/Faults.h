// The fault alphabet: everything that a call of the proxy may answer instead of what it should.
#ifndef MORVENN_TESTS_TORTURE_FAULTS_H
#define MORVENN_TESTS_TORTURE_FAULTS_H

#include <cstddef>
#include <vector>

#include "tests/torture/Scenario.h"
#include "tests/torture/Tape.h"

namespace Torture {

/// The functions called in the run without faults, in order.
std::vector<Function> goldenCalls(const Scenario& scenario, bool singleBytes, bool initialised);

/// Every fault for a call of @p function that is number @p call of its run.
std::vector<Fault> faultsOf(Function function, std::size_t call);

/// The rows of GetLastError, one of which goes with each fault.
const std::vector<LastError>& lastErrors();

/// Numbers of the calls that are made to fail: all of them in a short run; first, last and an even
/// choice between in a long one, which has thousands of like calls.
std::vector<std::size_t> failingCalls(std::size_t calls, std::size_t most);

}  // namespace Torture

#endif
