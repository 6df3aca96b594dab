// Runs library and model side by side in a process whose log level is fixed.
#ifndef MORVENN_TESTS_TORTURE_HARNESS_H
#define MORVENN_TESTS_TORTURE_HARNESS_H

#include <functional>
#include <string>

#include "tests/torture/Run.h"

namespace Torture {

/// How much is done: the whole with MV_TORTURE=full in the environment; otherwise a sample, which
/// is a shallow one in sanitizer builds, where a run takes many times as long.
enum class Effort { Shallow, Sample, Whole };
Effort effort();

/// A number that the environment sets, for longer or other runs than the usual.
std::size_t setting(const char* variable, std::size_t usual);

enum class Log { Off, Debug };

class Harness {
public:
    /// Warms up what the library and ICU keep, so that the heap's figures repeat.
    explicit Harness(Log log);

    /// Makes sure that the proxy has been started and every cache is filled.
    void warm(const Scenario& scenario);

    /// Plays and predicts; prints and counts when they differ, when a secret is left behind, or
    /// when something follows the end of the exchange.
    void compare(const Scenario& scenario, const Tape& tape, const std::string& description);

    /// play() with its part of the log.
    Run playLogged(const Scenario& scenario, const Tape& tape, FailMode mode = FailMode::Never,
                   std::size_t failAt = 0, HeapRecord* record = nullptr);

    void fail(const std::string& description, const std::string& words);

    bool logs() const { return m_log == Log::Debug; }
    std::size_t runs = 0;
    std::size_t failures = 0;

private:
    void compareSpinning(const Scenario& scenario, const Tape& tape, const Run& expected,
                         const std::string& description);
    std::string newLog();

    Log m_log;
    std::size_t m_logRead = 0;
    std::size_t m_spins = 0;
};

/// Runs @p work in a child of its own with a private log; its counts are printed as
/// "<title>: <runs> runs, <failures> failures". Gives what the child printed, empty when all is
/// well.
std::string inHarness(const std::string& title, Log log, const std::function<void(Harness&)>& work);

}  // namespace Torture

#endif
