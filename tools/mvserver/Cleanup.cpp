#include "Cleanup.h"

#include <termios.h>
#include <unistd.h>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

// The list that the signal handler walks: each step of a change leaves it whole.
std::atomic<RemovedOnSignal*> s_first{nullptr};
static_assert(std::atomic<RemovedOnSignal*>::is_always_lock_free);

volatile std::sig_atomic_t s_json = 0;
volatile std::sig_atomic_t s_terminal = -1;
termios s_settings;

constexpr char kText[] = "\nmvserver: interrupted\n";
constexpr char kJson[] =
    "{\"error\":{\"exit\":130,\"kind\":\"interrupted\",\"message\":\"interrupted\"},"
    "\"ok\":false}\n";

void cleanUp() {
    for (const RemovedOnSignal* at = s_first; at != nullptr; at = at->next()) {
        if (::unlink(at->path()) != 0) {
            ::rmdir(at->path());
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

bool isIgnored(int number) {
    struct sigaction action {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void installSignalHandlers() {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        if (!isIgnored(number)) {
            handle(number, endOnSignal);
        }
    }
    handle(SIGPIPE, SIG_IGN);
    handle(SIGXFSZ, SIG_IGN);
}

void reportInterruptsAsJson() {
    s_json = 1;
}

void endByBrokenPipe() {
    cleanUp();
    handle(SIGPIPE, SIG_DFL);
    static_cast<void>(::raise(SIGPIPE));
    ::_exit(128 + SIGPIPE);
}

SignalsHeld::SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, &m_before);
}

SignalsHeld::~SignalsHeld() {
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

RemovedOnSignal::RemovedOnSignal(const std::string& path) : m_path(path), m_next(s_first.load()) {
    s_first = this;
}

RemovedOnSignal::~RemovedOnSignal() {
    std::atomic<RemovedOnSignal*>* link = &s_first;
    while (*link != this) {
        link = &link->load()->m_next;
    }
    link->store(m_next);
}

void restoreOnSignal(int terminal, const termios& settings) {
    s_settings = settings;
    s_terminal = terminal;
}

void nothingToRestore() {
    s_terminal = -1;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
