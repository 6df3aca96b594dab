// Every call of every exchange fails once with every result there is, and class, message, log,
// calls and memory come out as the model says.
#include <gtest/gtest.h>

#include <random>

#include "tests/torture/Faults.h"
#include "tests/torture/Harness.h"

using namespace Torture;

namespace {

/// Longer runs repeat the same calls thousands of times.
constexpr std::size_t kMostCalls = 2000;
constexpr std::size_t kMostFailingCalls = 90;
/// Of the shallow sample, prime to the number of rows and faults.
constexpr std::size_t kShallowStride = 11;

std::string describe(const Scenario& scenario, bool singleBytes, const Fault& fault,
                     std::size_t row) {
    return std::string(scenario.name) + (singleBytes ? ", single bytes" : "") + ", call " +
           std::to_string(fault.call) +
           (fault.answer.escapes ? " leaves by an exception"
            : fault.shortens     ? " claims one byte less"
                                 : " gives " + std::to_string(fault.answer.result) + " x " +
                                   std::to_string(fault.repeat)) +
           ", last error row " + std::to_string(row);
}

// In the sample each fault comes with one row of GetLastError, in turn; in the whole with each.
void singleFaults(Harness& harness, const Scenario& scenario, bool singleBytes) {
    harness.warm(scenario);
    harness.compare(scenario, scenario.tape(singleBytes), "without a fault");
    const std::vector<Function> calls = goldenCalls(scenario, singleBytes, true);
    if (calls.size() > kMostCalls) {
        return;
    }
    const std::size_t rows = effort() == Effort::Whole ? lastErrors().size() : 1;
    const std::size_t stride = effort() == Effort::Shallow ? kShallowStride : 1;
    std::size_t turn = 0;
    for (const std::size_t number : failingCalls(calls.size(), kMostFailingCalls)) {
        for (const Fault& fault : faultsOf(calls[number - 1], number)) {
            for (std::size_t i = 0; i < rows; ++i) {
                const std::size_t row = turn++ % lastErrors().size();
                if (turn % stride != 0) {
                    continue;
                }
                Tape tape = scenario.tape(singleBytes);
                tape.setLastError(lastErrors()[row]);
                tape.inject(fault);
                harness.compare(scenario, tape, describe(scenario, singleBytes, fault, row));
            }
        }
    }
}

class FaultTorture : public testing::TestWithParam<Scenario> {};

TEST_P(FaultTorture, EverySingleFaultEndsAsTheModelSays) {
    for (const Log log : {Log::Off, Log::Debug}) {
        for (const bool singleBytes : {false, true}) {
            EXPECT_EQ(inHarness(GetParam().name, log,
                                [singleBytes](Harness& harness) {
                                    singleFaults(harness, GetParam(), singleBytes);
                                }),
                      "");
        }
    }
}

TEST_P(FaultTorture, RandomPairsOfFaultsEndAsTheModelSays) {
    const auto seed = static_cast<unsigned>(setting("MV_TORTURE_SEED", 20260101));
    const std::size_t pairs = setting("MV_TORTURE_PAIRS", effort() == Effort::Whole ? 2000 : 30);
    const auto work = [&](Harness& harness) {
        const Scenario& scenario = GetParam();
        harness.warm(scenario);
        const std::vector<Function> calls = goldenCalls(scenario, false, true);
        std::mt19937 random(seed);
        const auto below = [&random](std::size_t limit) { return random() % limit; };
        for (std::size_t i = 0; i < pairs; ++i) {
            Tape tape = scenario.tape(false);
            tape.setLastError(lastErrors()[below(lastErrors().size())]);
            std::string description = "seed " + std::to_string(seed) + ":";
            for (int n = 0; n < 2; ++n) {
                const std::size_t number = 1 + below(calls.size());
                const std::vector<Fault> faults = faultsOf(calls[number - 1], number);
                const Fault& fault = faults[below(faults.size())];
                const bool mayEscape = n == 0 || !fault.answer.escapes;
                if (mayEscape) {
                    tape.inject(fault);
                    description += " " + describe(scenario, false, fault, 0);
                }
            }
            harness.compare(scenario, tape, description);
        }
    };
    const std::string title = GetParam().name + (" in pairs, seed " + std::to_string(seed));
    EXPECT_EQ(inHarness(title, Log::Debug, work), "");
}

INSTANTIATE_TEST_SUITE_P(Every, FaultTorture, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FaultTortureSum, ThereAreAtLeastSixThousandSingleFaults) {
    std::size_t sites = 0;
    std::size_t faults = 0;
    for (const Scenario& scenario : scenarios()) {
        const std::vector<Function> calls = goldenCalls(scenario, false, true);
        sites += calls.size();
        for (const Function function : calls) {
            faults += faultsOf(function, 1).size();
        }
    }
    std::cout << scenarios().size() << " scenarios, " << sites << " calls, " << faults
              << " single faults\n";
    EXPECT_GE(faults, 6000U);
}

// The proxy is started by the first request of a process: each run needs one of its own.
TEST(FaultTortureOfTheFirstRequest, EverySingleFaultEndsAsTheModelSays) {
    for (const Scenario& scenario : scenarios()) {
        if (scenario.name != std::string("StreamBody") &&
            scenario.name != std::string("TextOneBlock")) {
            continue;
        }
        const std::vector<Function> calls = goldenCalls(scenario, false, false);
        ASSERT_EQ(calls.front(), Function::Init);
        for (const Fault& fault : faultsOf(Function::Init, 1)) {
            Tape tape = scenario.tape(false);
            tape.inject(fault);
            const auto work = [&](Harness& harness) {
                const Torture::Run expected = predict(scenario, tape, true, false);
                Torture::Run actual = harness.playLogged(scenario, tape);
                actual.kept = expected.kept;  // the first run fills caches
                const std::string words = difference(expected, actual);
                if (!words.empty()) {
                    harness.fail(describe(scenario, false, fault, 0), words);
                }
            };
            EXPECT_EQ(inHarness(scenario.name, Log::Debug, work), "");
        }
    }
}

}  // namespace
