#include "Cleanup.h"

#include <termios.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

// Everything that the signal handler touches is static memory without constructors.
constexpr int kSlots = 64;

struct Slot {
    volatile std::sig_atomic_t used;
    char path[PATH_MAX];
};

Slot s_slots[kSlots];
volatile std::sig_atomic_t s_json = 0;
volatile std::sig_atomic_t s_terminal = -1;
termios s_settings;

constexpr char kText[] = "\nmvserver: interrupted\n";
constexpr char kJson[] =
    "{\"error\":{\"exit\":130,\"kind\":\"interrupted\",\"message\":\"interrupted\"},"
    "\"ok\":false}\n";

void cleanUp() {
    for (Slot& slot : s_slots) {
        if (slot.used && ::unlink(slot.path) != 0) {
            ::rmdir(slot.path);
        }
    }
    if (s_terminal >= 0) {
        ::tcsetattr(static_cast<int>(s_terminal), TCSAFLUSH, &s_settings);
    }
}

extern "C" void endOnSignal(int number) {
    cleanUp();
    if (number == SIGINT) {
        const bool json = s_json != 0;
        const ssize_t written = json ? ::write(STDOUT_FILENO, kJson, sizeof kJson - 1)
                                     : ::write(STDERR_FILENO, kText, sizeof kText - 1);
        static_cast<void>(written);  // nothing is left to tell it to
    }
    ::_exit(128 + number);
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigfillset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

}  // namespace

void installSignalHandlers() {
    handle(SIGINT, endOnSignal);
    handle(SIGTERM, endOnSignal);
    handle(SIGPIPE, SIG_IGN);
}

void reportInterruptsAsJson() {
    s_json = 1;
}

void endByBrokenPipe() {
    cleanUp();
    handle(SIGPIPE, SIG_DFL);
    ::raise(SIGPIPE);
    ::_exit(128 + SIGPIPE);
}

RemovedOnSignal::RemovedOnSignal(const std::string& path) : m_slot(-1) {
    for (int i = 0; i < kSlots && path.size() < PATH_MAX; ++i) {
        if (!s_slots[i].used) {
            std::memcpy(s_slots[i].path, path.c_str(), path.size() + 1);
            s_slots[i].used = 1;
            m_slot = i;
            return;
        }
    }
}

RemovedOnSignal::~RemovedOnSignal() {
    if (m_slot >= 0) {
        s_slots[m_slot].used = 0;
    }
}

void restoreOnSignal(int terminal, const termios& settings) {
    s_settings = settings;
    s_terminal = terminal;
}

void nothingToRestore() {
    s_terminal = -1;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
