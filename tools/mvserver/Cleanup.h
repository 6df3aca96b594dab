// What has to go when the program ends early: files not yet renamed, an empty log folder, a
// terminal without echo. Ordinary ends go through destructors; signals come here.
#pragma once

#include <atomic>
#include <csignal>
#include <string>

struct termios;

namespace Morvenn::Net::MvServerProxy::Tools {

// SIGHUP, SIGINT and SIGTERM end the program with exit codes 129, 130 and 143 after the cleanup,
// unless whoever started it has them ignored. SIGPIPE and SIGXFSZ are ignored, so that a reader who
// left and a file that may not grow show as a failed write.
void installSignalHandlers();
// What is said about SIGINT.
void reportInterruptsAsJson();

// Ends the program as SIGPIPE would have, quietly. Destructors do not run.
[[noreturn]] void endByBrokenPipe();

// Keeps signals waiting for its lifetime: from making a file until it is registered.
class SignalsHeld {
public:
    SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

private:
    sigset_t m_before{};
};

// Registers a path for removal; a folder is removed when it is empty.
class RemovedOnSignal {
public:
    explicit RemovedOnSignal(const std::string& path);
    RemovedOnSignal(const RemovedOnSignal&) = delete;
    RemovedOnSignal& operator=(const RemovedOnSignal&) = delete;
    ~RemovedOnSignal();

    const char* path() const { return m_path.c_str(); }
    const RemovedOnSignal* next() const { return m_next; }

private:
    const std::string m_path;
    std::atomic<RemovedOnSignal*> m_next;
};

// Terminal settings that a signal puts back.
void restoreOnSignal(int terminal, const termios& settings);
void nothingToRestore();

}  // namespace Morvenn::Net::MvServerProxy::Tools
