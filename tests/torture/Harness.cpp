#include "tests/torture/Harness.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/FreshProcess.h"
#include "testing/LogFile.h"

namespace Torture {
namespace {

namespace Kit = Morvenn::Net::MvServerProxy::TestKit;
using Logger = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;

constexpr std::size_t kMostFailuresShown = 5;
/// Every wait on an unknown instruction costs the time of its alarm.
constexpr std::size_t kMostSpins = 6;
constexpr int kSpinMicroseconds = 8000;

}  // namespace

Effort effort() {
    const char* value = std::getenv("MV_TORTURE");
    if (value != nullptr && std::string(value) == "full") {
        return Effort::Whole;
    }
    return kIsSanitized ? Effort::Shallow : Effort::Sample;
}

std::size_t setting(const char* variable, std::size_t usual) {
    const char* value = std::getenv(variable);
    return value == nullptr ? usual : std::stoul(value);
}

Harness::Harness(Log log) : m_log(log) {
    setSecret(kPassword);
}

void Harness::warm(const Scenario& scenario) {
    for (int i = 0; i < 3; ++i) {
        play(scenario, scenario.tape(false));
    }
    newLog();
}

std::string Harness::newLog() {
    if (m_log == Log::Off) {
        return {};
    }
    std::ifstream file(Kit::logPath(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_logRead));
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    m_logRead += text.size();
    return text;
}

Run Harness::playLogged(const Scenario& scenario, const Tape& tape, FailMode mode,
                        std::size_t failAt, HeapRecord* record) {
    Run run = play(scenario, tape, mode, failAt, record);
    run.log = newLog();
    ++runs;
    return run;
}

void Harness::fail(const std::string& description, const std::string& words) {
    if (++failures <= kMostFailuresShown) {
        std::cout << description << "\n" << words << std::flush;
    }
}

void Harness::compare(const Scenario& scenario, const Tape& tape, const std::string& description) {
    const Run expected = predict(scenario, tape, logs());
    if (expected.spins) {
        return compareSpinning(scenario, tape, expected, description);
    }
    HeapRecord record;
    const Run actual = playLogged(scenario, tape, FailMode::Never, 0, &record);
    std::string words = difference(expected, actual);
    if (record.residues != 0) {
        words += "released blocks that hold the password: " + std::to_string(record.residues);
    }
    if (actual.log.find(kPassword) != std::string::npos) {
        words += "the password is in the log";
    }
    if (!words.empty()) {
        fail(description, words);
    }
}

// The wait makes no call and never ends: a timer of the child's own processor time ends it.
void Harness::compareSpinning(const Scenario& scenario, const Tape& tape, const Run& expected,
                              const std::string& description) {
    if (effort() != Effort::Whole && ++m_spins > kMostSpins) {
        return;
    }
    const Kit::Outcome outcome = Kit::inFreshProcess([&] {
        const itimerval timer = {{0, 0}, {0, kSpinMicroseconds}};
        setitimer(ITIMER_VIRTUAL, &timer, nullptr);
        play(scenario, tape);
    });
    ++runs;
    std::string words;
    if (outcome.signal != SIGVTALRM) {
        words = "expected to wait on the instruction for ever, but ended\n";
    }
    const std::string log = newLog();
    if (log != expected.log) {
        words += "log: expected " + expected.log + "\n     came     " + log + "\n";
    }
    if (!words.empty()) {
        fail(description, words);
    }
}

std::string inHarness(const std::string& title, Log log,
                      const std::function<void(Harness&)>& work) {
    const Kit::Outcome outcome = Kit::statusFromFreshProcess([&] {
        const Kit::PrivateTemp temp;
        Kit::setLogLevel(log == Log::Debug ? "DEBUG" : "OFF");
        Logger::getInstance();
        Harness harness(log);
        work(harness);
        std::cout << title << ": " << harness.runs << " runs, " << harness.failures
                  << " failures\n";
        std::cout.flush();
        return harness.failures == 0 && harness.runs > 0 ? 0 : 1;
    });
    if (!outcome.good()) {
        return title + ": ended with status " + std::to_string(outcome.status) + ", signal " +
               std::to_string(outcome.signal) + "\n" + outcome.output;
    }
    std::cout << outcome.output;
    return {};
}

}  // namespace Torture
