#include "testing/FreshProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <system_error>

// Present when the program is instrumented for coverage; _exit would lose what the child counted.
extern "C" __attribute__((weak)) void __gcov_dump();

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

[[noreturn]] void throwErrno(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

int guarded(const std::function<int()>& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        std::cerr << "left by an exception: " << e.what() << '\n';
    } catch (...) {
        std::cerr << "left by an exception that is not a std::exception\n";
    }
    return kLeftByException;
}

[[noreturn]] void runChild(int output, const std::function<int()>& work) {
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    close(output);
    const int status = guarded(work);
    std::cout.flush();
    std::fflush(nullptr);
    if (__gcov_dump != nullptr) {
        __gcov_dump();
    }
    _exit(status);
}

std::string readAll(int input) {
    std::string text;
    char piece[4096];
    for (;;) {
        const ssize_t n = read(input, piece, sizeof piece);
        if (n > 0) {
            text.append(piece, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            return text;
        }
    }
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    if (outcome.signal != 0) {
        out << "ended by signal " << outcome.signal;
    } else {
        out << "exit status " << outcome.status;
    }
    return out << "; output:\n" << outcome.output;
}

Outcome statusFromFreshProcess(const std::function<int()>& work) {
    int ends[2];
    if (pipe(ends) != 0) {
        throwErrno("fresh process: pipe");
    }
    // What is still buffered would be written by both processes.
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        throwErrno("fresh process: fork");
    }
    if (child == 0) {
        close(ends[0]);
        runChild(ends[1], work);
    }
    close(ends[1]);

    Outcome outcome;
    outcome.output = readAll(ends[0]);
    close(ends[0]);
    int state = 0;
    while (waitpid(child, &state, 0) < 0) {
        if (errno != EINTR) {
            throwErrno("fresh process: waitpid");
        }
    }
    outcome.status = WIFEXITED(state) ? WEXITSTATUS(state) : 0;
    outcome.signal = WIFSIGNALED(state) ? WTERMSIG(state) : 0;
    return outcome;
}

Outcome inFreshProcess(const std::function<void()>& work) {
    return statusFromFreshProcess([&work] {
        work();
        return 0;
    });
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
