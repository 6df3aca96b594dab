#include "HubProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#ifndef MVHUB_BINARY
#error "MVHUB_BINARY is defined by the build: the path of mvhub"
#endif

namespace Morvenn::Net::MvServerProxy::Testing {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kReadyLimit{20};
constexpr std::chrono::seconds kWaitLimit{10};
constexpr std::chrono::milliseconds kPollPause{5};
constexpr char kReadyWords[] = "mvhub listening on ";

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string makeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "mvhub-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder " + name);
    }
    return name;
}

// Starts mvhub with its output and error streams on the two descriptors.
pid_t spawnHub(const std::vector<std::string>& arguments, int output, int errors) {
    std::vector<char*> words = {const_cast<char*>(MVHUB_BINARY)};
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    const pid_t pid = ::fork();
    if (pid != 0) {
        return pid;
    }
    const int input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    ::execv(MVHUB_BINARY, words.data());
    ::_exit(127);
}

int decoded(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int waitBounded(pid_t pid) {
    const auto limit = Clock::now() + kWaitLimit;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (Clock::now() > limit) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            break;
        }
        std::this_thread::sleep_for(kPollPause);
    }
    return decoded(status);
}

int openForWriting(const std::string& path) {
    return ::open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
}

bool names(const std::vector<std::string>& arguments, const std::string& option) {
    for (const std::string& argument : arguments) {
        if (argument == option || argument.rfind(option + "=", 0) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

HubProcess::HubProcess(const std::vector<std::string>& arguments) : m_folder(makeFolder()) {
    std::vector<std::string> all;
    if (!names(arguments, "--port")) {
        all.insert(all.end(), {"--port", "0"});
    }
    if (!names(arguments, "--state-dir")) {
        all.insert(all.end(), {"--state-dir", m_folder + "/state"});
    }
    all.insert(all.end(), arguments.begin(), arguments.end());
    try {
        start(all);
    } catch (const std::exception&) {
        std::filesystem::remove_all(m_folder);
        throw;
    }
}

HubProcess::~HubProcess() {
    stop();
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void HubProcess::start(const std::vector<std::string>& arguments) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    const int errors = openForWriting(m_folder + "/log");
    m_pid = spawnHub(arguments, ends[1], errors);
    ::close(ends[1]);
    ::close(errors);
    awaitReadyLine(ends[0]);
    ::close(ends[0]);
    if (!m_url.empty()) {
        return;
    }
    const int status = stop();
    std::string command = MVHUB_BINARY;
    for (const std::string& argument : arguments) {
        command += " " + argument;
    }
    throw std::runtime_error(command + " did not get ready (exit status " + std::to_string(status) +
                             "):\n" + log());
}

void HubProcess::awaitReadyLine(int output) {
    const auto limit = Clock::now() + kReadyLimit;
    std::string text;
    while (text.find('\n') == std::string::npos) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(limit - Clock::now()).count();
        pollfd readable = {output, POLLIN, 0};
        char block[256];
        if (left <= 0 || ::poll(&readable, 1, static_cast<int>(left)) <= 0) {
            return;
        }
        const ssize_t count = ::read(output, block, sizeof(block));
        if (count <= 0) {
            return;
        }
        text.append(block, static_cast<std::size_t>(count));
    }
    const std::string line = text.substr(0, text.find('\n'));
    if (line.rfind(kReadyWords, 0) == 0) {
        m_url = line.substr(sizeof(kReadyWords) - 1);
    }
}

std::uint16_t HubProcess::port() const {
    return static_cast<std::uint16_t>(std::stoi(m_url.substr(m_url.rfind(':') + 1)));
}

std::string HubProcess::log() const {
    return readFile(m_folder + "/log");
}

bool HubProcess::waitForLog(const std::string& text) const {
    const auto limit = Clock::now() + kWaitLimit;
    while (log().find(text) == std::string::npos) {
        if (Clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(kPollPause);
    }
    return true;
}

void HubProcess::signal(int number) const {
    if (m_exitStatus < 0) {
        ::kill(m_pid, number);
    }
}

int HubProcess::stop() {
    signal(SIGTERM);
    return wait();
}

int HubProcess::wait() {
    if (m_exitStatus < 0) {
        m_exitStatus = waitBounded(m_pid);
    }
    return m_exitStatus;
}

int runHub(const std::vector<std::string>& arguments, std::string& output) {
    const std::string folder = makeFolder();
    const std::string file = folder + "/output";
    const int both = openForWriting(file);
    const pid_t pid = spawnHub(arguments, both, both);
    ::close(both);
    const int status = waitBounded(pid);
    output = readFile(file);
    std::filesystem::remove_all(folder);
    return status;
}

}  // namespace Morvenn::Net::MvServerProxy::Testing
