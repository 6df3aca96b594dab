// One run of a scenario, as it was and as it should be.
#ifndef MORVENN_TESTS_TORTURE_RUN_H
#define MORVENN_TESTS_TORTURE_RUN_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "testing/Calls.h"
#include "tests/torture/Heap.h"
#include "tests/torture/Scenario.h"
#include "tests/torture/Tape.h"

namespace Torture {

/// Values and messages are compared by their size and so many bytes.
constexpr std::size_t kLongest = 4000;

/// Signatures that the library may be made to hold at once.
constexpr std::int32_t kMostSignatures = 1 << 16;

struct Run {
    Calls calls;
    std::string outcome;  ///< "value ..." or the exception's class, type code and message
    std::string log;      ///< what was appended to the log file
    long kept = 0;        ///< blocks that were allocated and not released
    bool spins = false;   ///< model only: waits for ever on an unknown instruction
    bool hoards = false;  ///< model only: asks for room for more signatures than a test affords
};

/// What the heap did in a run of the library.
struct HeapRecord {
    std::size_t allocations = 0;
    std::size_t failures = 0;
    std::size_t residues = 0;
    std::size_t converterFailures = 0;  ///< converters that could not be opened
};

/// Plays @p scenario with the library. The log is not filled in.
Run play(const Scenario& scenario, const Tape& tape, FailMode mode = FailMode::Never,
         std::size_t failAt = 0, HeapRecord* record = nullptr);

/// What must come of it.
/// @param logs whether the log is at debug level; otherwise it is off.
/// @param initialised whether the proxy was started before.
Run predict(const Scenario& scenario, const Tape& tape, bool logs, bool initialised = true);

/// Where the two part, in words; empty when they agree.
std::string difference(const Run& expected, const Run& actual);

}  // namespace Torture

#endif
