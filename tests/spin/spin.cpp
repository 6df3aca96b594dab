// An exchange whose first instruction is unknown, in a child that is killed once it has used the
// processor for a while. Good when the child was killed there and had made no further call.
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <sstream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace {

constexpr int kUnknownInstruction = 19;

struct Counts {
    volatile int received;
    volatile int others;
};

Counts* s_counts = nullptr;  // shared with the child

int other(int result) {
    s_counts->others = s_counts->others + 1;
    return result;
}

[[noreturn]] void waitInChild() {
    const itimerval patience{{0, 0}, {0, 200000}};
    setitimer(ITIMER_VIRTUAL, &patience, nullptr);
    Morvenn::Net::MvServerProxy::Client::MSPSession session;
    Morvenn::Net::MvServerProxy::Client::MvServerRequest request(&session);
    std::istringstream body("body");
    request.setBody(&body);
    request.send();
    _exit(0);
}

}  // namespace

int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    return other(0);
}
int MvServerProxy_Term(void) {
    return other(0);
}
int MvServerProxy_Send(const char*) {
    return other(1);
}
int MvServerProxy_SendNoAck(const char*) {
    return other(1);
}
int MvServerProxy_SendEOF(void) {
    return other(0);
}
int MvServerProxy_Complete(void) {
    return other(0);
}
int MvServerProxy_GetLastError(char**) {
    return other(0);
}

int MvServerProxy_Receive(char*) {
    s_counts->received = s_counts->received + 1;
    return kUnknownInstruction;
}

int main() {
    void* memory =
        mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("mmap");
        return 2;
    }
    s_counts = static_cast<Counts*>(memory);
    const pid_t child = fork();
    if (child == 0) {
        waitInChild();
    }
    int state = 0;
    if (child < 0 || waitpid(child, &state, 0) != child) {
        std::perror("fork");
        return 2;
    }
    const bool killed = WIFSIGNALED(state) && WTERMSIG(state) == SIGVTALRM;
    // Init, the header text and its end marker come before the one instruction.
    const bool quiet = s_counts->received == 1 && s_counts->others == 3;
    std::printf("%s after %d received and %d other calls\n", killed ? "spun" : "did not spin",
                s_counts->received, s_counts->others);
    return killed && quiet ? 0 : 1;
}
