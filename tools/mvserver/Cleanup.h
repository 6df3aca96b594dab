// What has to go when the program ends early: files not yet renamed, an empty log folder, a
// terminal without echo. Ordinary ends go through destructors; SIGINT and SIGTERM come here.
#pragma once

#include <string>

struct termios;

namespace Morvenn::Net::MvServerProxy::Tools {

// SIGINT ends the program with exit code 130 and SIGTERM with 143, after the cleanup. `json`
// selects what is said about it. SIGPIPE is ignored, so that a reader who left shows as a failed
// write.
void installSignalHandlers();
void reportInterruptsAsJson();

// Ends the program as SIGPIPE would have, quietly. Destructors do not run.
[[noreturn]] void endByBrokenPipe();

// Registers a path for removal; a folder is removed when it is empty. At most 64 at a time: with
// more the path is not registered.
class RemovedOnSignal {
public:
    explicit RemovedOnSignal(const std::string& path);
    RemovedOnSignal(const RemovedOnSignal&) = delete;
    RemovedOnSignal& operator=(const RemovedOnSignal&) = delete;
    ~RemovedOnSignal();

private:
    int m_slot;
};

// Terminal settings that a signal puts back.
void restoreOnSignal(int terminal, const termios& settings);
void nothingToRestore();

}  // namespace Morvenn::Net::MvServerProxy::Tools
