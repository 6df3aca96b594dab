// Every allocation of every exchange fails, once and from there on: the run ends well, in
// std::bad_alloc or in a documented class, completes its exchange as ever, and releases everything
// but what is kept by design.
#include <gtest/gtest.h>

#include <algorithm>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "testing/LogFile.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Harness.h"

using namespace Torture;

namespace {

constexpr int kConnectionLost = MV_STATUS_CONNECTION_LOST;
constexpr std::size_t kMostFailingCalls = 90;

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

// The ways in which a run without enough memory may end, besides as if nothing had happened.
bool isDocumented(const std::string& outcome) {
    static const char* const kMessages[] = {
        "Utf8ConversionException(0, \"Error opening converter U_MEMORY_ALLOCATION_ERROR",
        "Utf8ConversionException(0, \"An error occured converting ",
        "MSPRuntimeException(-1, \"Exception occurred while converting to UTF-8 bytes.",
        "MSPRuntimeException(-1, \"Exception occurred while decoding UTF-8 bytes.",
        "MSPRuntimeException(-1, \"Out of memory\\n. Decompression buffer for Zlib is smaller",
        "MSPException(0, \"Environment Info could not be retieved correctly\"",
    };
    return startsWith(outcome, "bad_alloc") ||
           std::any_of(std::begin(kMessages), std::end(kMessages),
                       [&outcome](const char* message) { return startsWith(outcome, message); });
}

std::vector<std::string> withoutCompletes(const Calls& calls) {
    std::vector<std::string> names;
    for (const auto& call : calls.entries()) {
        if (call.function != Function::Complete) {
            for (std::size_t i = 0; i < call.count; ++i) {
                names.push_back(nameOf(call.function) + (":" + call.text));
            }
        }
    }
    return names;
}

bool isPrefix(const std::vector<std::string>& part, const std::vector<std::string>& whole) {
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

bool keepsMemory(Kind kind) {
    switch (kind) {
        case Kind::Directory:
        case Kind::DirectoryTwice:
        case Kind::DirectoryVersion:
        case Kind::DirectoryUrl:
        case Kind::SignBatch:
        case Kind::SignOne:
        case Kind::SignText:
        case Kind::Simple:
        case Kind::SimpleUnanswered:
            return true;
        default:
            return false;
    }
}

/// An opened converter and the two buffers of a conversion.
constexpr long kBlocksOfAConversion = 6;
/// Session, request, response stream, and what the request's maps hold.
constexpr long kBlocksOfASignature = 24;

/// What the proxy answers while allocations fail.
struct Case {
    std::string description;
    Tape tape;
    bool fails = false;             ///< one call fails
    std::size_t mostCompletes = 0;  ///< as often as an exchange that goes well is completed
};

// All is well, in whole blocks and in single bytes; or one call fails, since what the library does
// then it does at no other time.
std::vector<Case> casesOf(const Scenario& scenario) {
    const std::vector<Function> calls = goldenCalls(scenario, false, true);
    const auto completes =
        static_cast<std::size_t>(std::count(calls.begin(), calls.end(), Function::Complete));
    std::vector<Case> cases = {{"", scenario.tape(false), false, completes},
                               {", single bytes", scenario.tape(true), false, completes}};
    for (const std::size_t number : failingCalls(calls.size(), kMostFailingCalls)) {
        Fault fault;
        fault.call = number;
        fault.answer.result = kConnectionLost;
        Tape tape = scenario.tape(false);
        tape.setLastError(lastErrors()[number % lastErrors().size()]);
        tape.inject(fault);
        cases.push_back({", call " + std::to_string(number) + " fails", tape, true, completes});
    }
    return cases;
}

std::string faultsIn(const Scenario& scenario, const Case& play, const Run& golden, const Run& run,
                     const HeapRecord& record) {
    std::string words;
    const bool isWell = run.outcome == golden.outcome;
    // In the stream of send() a failure only shows as a bad stream.
    const bool isBadStream =
        scenario.kind == Kind::Send && run.outcome.find("|bad\"") != std::string::npos;
    // The one-call function hands every failure of the family back as text, and none when there is
    // no memory for the text.
    const bool isHandedBack =
        startsWith(run.outcome, "value \"(-1)") || startsWith(run.outcome, "value \"(0)none");
    // An index that could not be read has a value of its own.
    const bool isWithoutIndex = run.outcome.find("|99999,") != std::string::npos;
    if (!isWell && !isBadStream && !isHandedBack && !isWithoutIndex && !isDocumented(run.outcome)) {
        words += "outcome: " + run.outcome + "\n";
    }
    if (!isPrefix(withoutCompletes(run.calls), withoutCompletes(golden.calls))) {
        words +=
            "calls: " + Morvenn::Net::MvServerProxy::TestKit::difference(golden.calls, run.calls) +
            "\n";
    }
    const std::size_t completes = run.calls.count(Function::Complete);
    // Where a call fails, failures of both kinds may look alike to the application.
    const bool isOtherThanWell = isWell && !play.fails && run.calls != golden.calls;
    if (completes > play.mostCompletes || isOtherThanWell) {
        words += "Complete came " + std::to_string(completes) + " times\n";
    }
    const bool mayEndUncompleted =
        keepsMemory(scenario.kind) || scenario.kind == Kind::Lifecycle || run.calls.size() == 0;
    if (completes == 0 && !mayEndUncompleted) {
        words += "the exchange was not completed\n";
    }
    const auto conversions = static_cast<long>(record.converterFailures) * kBlocksOfAConversion;
    const long byDesign = keepsMemory(scenario.kind) ? golden.kept + kBlocksOfASignature : 0;
    if (run.kept < 0 || run.kept > conversions + byDesign) {
        words += "blocks never released: " + std::to_string(run.kept) + "\n";
    }
    if (record.residues != 0) {
        words += "the password is left behind in " + std::to_string(record.residues) + " blocks\n";
    }
    return words;
}

std::size_t allocationsOf(Harness& harness, const Scenario& scenario, const Tape& tape,
                          Torture::Run& golden) {
    HeapRecord record;
    golden = harness.playLogged(scenario, tape, FailMode::Never, 0, &record);
    return record.allocations;
}

void everyAllocation(Harness& harness, const Scenario& scenario, const Case& play, FailMode mode) {
    Torture::Run golden;
    const std::size_t allocations = allocationsOf(harness, scenario, play.tape, golden);
    for (std::size_t k = 1; k <= allocations; ++k) {
        HeapRecord record;
        const Torture::Run run = harness.playLogged(scenario, play.tape, mode, k, &record);
        std::string words = faultsIn(scenario, play, golden, run, record);
        if (record.failures == 0) {
            words += "this allocation was never made\n";
        }
        if (!words.empty()) {
            harness.fail(scenario.name + play.description + ", allocation " + std::to_string(k) +
                             " of " + std::to_string(allocations) + " fails" +
                             (mode == FailMode::Once ? " once" : " and all behind it"),
                         words);
        }
    }
}

class MemoryTorture : public testing::TestWithParam<Scenario> {};

TEST_P(MemoryTorture, EveryAllocationThatFailsEndsInADocumentedWay) {
    for (const Log log : {Log::Off, Log::Debug}) {
        const auto work = [](Harness& harness) {
            harness.warm(GetParam());
            for (const Case& play : casesOf(GetParam())) {
                everyAllocation(harness, GetParam(), play, FailMode::Once);
                everyAllocation(harness, GetParam(), play, FailMode::FromThereOn);
            }
        };
        EXPECT_EQ(inHarness(GetParam().name + std::string(" without memory"), log, work), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryTorture, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

// Counted at log level off, where every allocation fails twice; it does so at level debug as well.
TEST(MemoryTortureSum, ThereAreAtLeastTenThousandRuns) {
    const auto work = [](Harness& harness) {
        constexpr std::size_t kRunsOfAnAllocation = 4;
        std::size_t runs = 0;
        for (const Scenario& scenario : scenarios()) {
            harness.warm(scenario);
            for (const Case& play : casesOf(scenario)) {
                Torture::Run golden;
                runs += kRunsOfAnAllocation * allocationsOf(harness, scenario, play.tape, golden);
            }
        }
        std::cout << "at least " << runs << " runs without memory\n";
        if (runs < 10000) {
            harness.fail("sum", std::to_string(runs));
        }
    };
    EXPECT_EQ(inHarness("sum", Log::Off, work), "");
}

TEST(MemoryTortureOfAnIndex, IndexThatCannotBeReadIs99999AndALineInTheLog) {
    const auto work = [](Harness& harness) {
        Morvenn::Net::MvServerProxy::Admin::Environment environment;
        environment.setName("Production");
        const std::string longerThanAStringHoldsWithinItself(20, '7');
        {
            const HeapWatch watch(FailMode::Once, 1);
            environment.setIndex(longerThanAStringHoldsWithinItself);
        }
        ++harness.runs;
        if (environment.getIndex() != 99999) {
            harness.fail("index", std::to_string(environment.getIndex()));
        }
        const std::vector<std::string> wanted = {
            "Invalid display index for Environment : Production"};
        if (Morvenn::Net::MvServerProxy::TestKit::errorLines() != wanted) {
            harness.fail("log", "the line is another one");
        }
    };
    EXPECT_EQ(inHarness("index", Log::Debug, work), "");
}

}  // namespace
