#include "Secrets.h"

#include "Cleanup.h"
#include "Failure.h"
#include "Terminal.h"

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr std::size_t kLongestPassword = 1024;

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    int number() const { return m_number; }

private:
    int m_number;
};

// Byte by byte, so that nothing after the line is taken from a descriptor that others read, too.
std::string readLine(int descriptor, const std::string& name) {
    std::string line;
    line.reserve(kLongestPassword + 1);  // one buffer, so that no copy is left behind
    for (char c = 0; line.size() <= kLongestPassword;) {
        const ssize_t count = ::read(descriptor, &c, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            throwFileFailure("cannot read the password from", name);
        }
        if (count == 0 || c == '\n') {
            break;
        }
        line += c;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line;
}

std::string checked(std::string password, const std::string& name) {
    if (password.empty() || password.size() > kLongestPassword ||
        escaped(password).size() != password.size()) {
        wipe(password);
        throw Failure(ExitCode::LocalFile, "no usable password in " + name,
                      "it is the first line: 1 to 1024 bytes without control characters");
    }
    return password;
}

// Switches the echo off for its lifetime, signals included.
class SilentTerminal {
public:
    explicit SilentTerminal(int terminal) : m_terminal(terminal) {
        m_changed = ::tcgetattr(terminal, &m_before) == 0;
        if (m_changed) {
            restoreOnSignal(terminal, m_before);
            termios silent = m_before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(terminal, TCSAFLUSH, &silent);
        }
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    ~SilentTerminal() {
        if (m_changed) {
            ::tcsetattr(m_terminal, TCSAFLUSH, &m_before);
            nothingToRestore();
        }
    }

private:
    int m_terminal;
    bool m_changed;
    termios m_before{};
};

void say(int terminal, const std::string& text) {
    const ssize_t written = ::write(terminal, text.data(), text.size());
    static_cast<void>(written);  // the answer tells whether anybody is there
}

int openTerminal() {
    return ::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
}

}  // namespace

void wipe(std::string& text) {
    ::explicit_bzero(text.data(), text.size());
    text.clear();
}

std::string passwordFromFile(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number() < 0) {
        throwFileFailure("cannot read the password from", path);
    }
    struct stat status {};
    if (::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & (S_IRGRP | S_IROTH)) != 0) {
        note("mvserver: warning: others may read " + escaped(path) + "; chmod 600 it");
    }
    return checked(readLine(file.number(), path), path);
}

std::string passwordFromDescriptor(int descriptor) {
    const std::string name = "descriptor " + std::to_string(descriptor);
    return checked(readLine(descriptor, name), name);
}

std::optional<std::string> askVisibly(const std::string& question) {
    const Descriptor terminal(openTerminal());
    if (terminal.number() < 0) {
        return std::nullopt;
    }
    say(terminal.number(), question);
    return readLine(terminal.number(), "the terminal");
}

std::optional<std::string> askWithoutEcho(const std::string& question) {
    const Descriptor terminal(openTerminal());
    if (terminal.number() < 0) {
        return std::nullopt;
    }
    const SilentTerminal silent(terminal.number());
    say(terminal.number(), question);
    std::string password = readLine(terminal.number(), "the terminal");
    say(terminal.number(), "\n");
    return password;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
