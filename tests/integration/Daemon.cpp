#include "Daemon.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

constexpr std::chrono::seconds kPatience{20};
constexpr std::chrono::milliseconds kPollPause{5};
constexpr int kAttempts = 3;

// In the child. Gives up root before the wish to die with the parent, which a change of user
// clears.
[[noreturn]] void become(char* const* words, const std::string& output, const ServerUser& user) {
    const int in = ::open("/dev/null", O_RDONLY);
    const int out = ::open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    const bool changes = ::geteuid() != user.uid;
    if (changes &&
        (::setgroups(1, &user.gid) != 0 || ::setgid(user.gid) != 0 || ::setuid(user.uid) != 0)) {
        ::_exit(126);
    }
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::execvp(words[0], words);
    ::_exit(127);
}

}  // namespace

ServerUser serverUser() {
    if (::geteuid() != 0) {
        return {::geteuid(), ::getegid()};
    }
    const passwd* nobody = ::getpwnam("nobody");
    if (nobody == nullptr) {
        throw std::runtime_error("this system has no user \"nobody\"");
    }
    return {nobody->pw_uid, nobody->pw_gid};
}

std::vector<int> freePorts(std::size_t count) {
    std::vector<int> sockets;
    std::vector<int> ports;
    while (ports.size() < count) {
        sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* raw = reinterpret_cast<sockaddr*>(&address);
        if (::bind(sockets.back(), raw, size) != 0 ||
            ::getsockname(sockets.back(), raw, &size) != 0) {
            throw std::runtime_error("no free port on loopback");
        }
        ports.push_back(ntohs(address.sin_port));
    }
    for (const int socket : sockets) {
        ::close(socket);
    }
    return ports;
}

bool waitUntil(const std::function<bool()>& holds) {
    const auto limit = std::chrono::steady_clock::now() + kPatience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(kPollPause);
    }
    return true;
}

Daemon::Daemon(const TempFolder& folder, const Command& command, const std::string& log,
               const std::string& ready) {
    std::vector<char*> words;
    std::string shown;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
        shown += word + " ";
    }
    words.push_back(nullptr);
    const std::string output = folder.file("output");
    const ServerUser user = serverUser();
    m_pid = ::fork();
    if (m_pid == 0) {
        become(words.data(), output, user);
    }
    const auto isReady = [&] { return folder.read(log).find(ready) != std::string::npos; };
    waitUntil([&] { return isReady() || hasEnded(); });
    if (!isReady() || hasEnded()) {
        stop();
        throw std::runtime_error(shown + "did not get ready:\n" + folder.read("output") +
                                 folder.read(log));
    }
}

Daemon::~Daemon() {
    stop();
}

void Daemon::stop() {
    signal(SIGTERM);
    if (!waitUntil([this] { return hasEnded(); })) {
        signal(SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
}

void Daemon::signal(int number) const {
    if (!m_ended && m_pid > 0) {
        ::kill(m_pid, number);
    }
}

bool Daemon::hasEnded() {
    m_ended = m_ended || ::waitpid(m_pid, nullptr, WNOHANG) != 0;
    return m_ended;
}

std::unique_ptr<Daemon> startDaemon(const std::function<std::unique_ptr<Daemon>()>& start) {
    for (int attempt = 1; attempt < kAttempts; ++attempt) {
        try {
            return start();
        } catch (const std::runtime_error&) {
            // The last attempt reports what is wrong.
        }
    }
    return start();
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
