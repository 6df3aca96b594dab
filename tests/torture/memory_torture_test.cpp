// Every allocation of every exchange fails, once and from there on: the run ends well, in
// std::bad_alloc or in a documented class, completes its exchange as ever, and releases everything
// but what is kept by design.
#include <gtest/gtest.h>

#include <algorithm>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "testing/LogFile.h"
#include "tests/torture/Harness.h"

using namespace Torture;

namespace {

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

std::string faultsIn(const Scenario& scenario, const Run& golden, const Run& run,
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
    if (completes > golden.calls.count(Function::Complete) ||
        (isWell && run.calls != golden.calls)) {
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

void everyAllocation(Harness& harness, const Scenario& scenario, FailMode mode) {
    harness.warm(scenario);
    HeapRecord record;
    const Torture::Run golden =
        harness.playLogged(scenario, scenario.tape(false), FailMode::Never, 0, &record);
    const std::size_t allocations = record.allocations;
    for (std::size_t k = 1; k <= allocations; ++k) {
        const Torture::Run run =
            harness.playLogged(scenario, scenario.tape(false), mode, k, &record);
        std::string words = faultsIn(scenario, golden, run, record);
        if (record.failures == 0) {
            words += "this allocation was never made\n";
        }
        if (!words.empty()) {
            harness.fail(std::string(scenario.name) + ", allocation " + std::to_string(k) + " of " +
                             std::to_string(allocations) + " fails" +
                             (mode == FailMode::Once ? " once" : " and all behind it"),
                         words);
        }
    }
}

class MemoryTorture : public testing::TestWithParam<Scenario> {};

TEST_P(MemoryTorture, EveryAllocationThatFailsEndsInADocumentedWay) {
    for (const Log log : {Log::Off, Log::Debug}) {
        for (const FailMode mode : {FailMode::Once, FailMode::FromThereOn}) {
            EXPECT_EQ(
                inHarness(GetParam().name, log,
                          [mode](Harness& harness) { everyAllocation(harness, GetParam(), mode); }),
                "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryTorture, testing::ValuesIn(scenarios()),
                         [](const auto& test) { return std::string(test.param.name); });

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
