#include "OutputFile.h"

#include "Failure.h"
#include "Terminal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr unsigned kPlainFileMode = 0666;
constexpr char kFirstOfControlPair = '\xC2';

void writeAll(int descriptor, const std::string& name, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0 && errno == EPIPE) {
            endByBrokenPipe();
        }
        if (written < 0) {
            throwFileFailure("cannot write", name);
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

mode_t currentUmask() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

// Where `path` leads to, so that renaming replaces the file and not the link to it.
std::string resolved(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::path target = std::filesystem::canonical(path, ignored);
    return ignored ? path : target.string();
}

class RenamedFile : public Output {
public:
    RenamedFile(const std::string& path, unsigned mode)
        : m_path(resolved(path)), m_temporary(m_path + ".XXXXXX") {
        const SignalsHeld untilRegistered;
        m_descriptor = ::mkostemp(m_temporary.data(), O_CLOEXEC);
        if (m_descriptor < 0) {
            throwFileFailure("cannot write", m_path);
        }
        m_registration = std::make_unique<RemovedOnSignal>(m_temporary);
        ::fchmod(m_descriptor, mode & ~currentUmask());
    }

    ~RenamedFile() override {
        closeFile();
        if (!m_committed) {
            ::unlink(m_temporary.c_str());
        }
    }

    void write(const char* bytes, std::size_t count) override {
        writeAll(m_descriptor, m_path, bytes, count);
    }

    void finish() override {
        if (closeFile() != 0) {
            throwFileFailure("cannot write", m_path);
        }
    }

    void commit() override {
        finish();
        if (::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
            throwFileFailure("cannot write", m_path);
        }
        m_committed = true;
    }

private:
    int closeFile() {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor < 0 ? 0 : ::close(descriptor);
    }

    std::string m_path;
    std::string m_temporary;
    int m_descriptor;
    bool m_committed = false;
    std::unique_ptr<RemovedOnSignal> m_registration;
};

class DirectFile : public Output {
public:
    explicit DirectFile(const std::string& path)
        : m_path(path), m_descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC)) {
        if (m_descriptor < 0) {
            throwFileFailure("cannot write", path);
        }
    }
    ~DirectFile() override { ::close(m_descriptor); }

    void write(const char* bytes, std::size_t count) override {
        writeAll(m_descriptor, m_path, bytes, count);
    }

private:
    std::string m_path;
    int m_descriptor;
};

class StandardOutput : public Output {
public:
    void write(const char* bytes, std::size_t count) override {
        if (!m_terminal) {
            writeAll(STDOUT_FILENO, "standard output", bytes, count);
            return;
        }
        show(m_held + std::string(bytes, count), false);
    }

    void commit() override { show(m_held, true); }

private:
    // A control character of two bytes must not pass in two halves: the first waits for the second.
    void show(std::string text, bool last) {
        m_held.clear();
        if (!last && !text.empty() && text.back() == kFirstOfControlPair) {
            m_held.assign(1, kFirstOfControlPair);
            text.pop_back();
        }
        text = escaped(text, true);
        writeAll(STDOUT_FILENO, "standard output", text.data(), text.size());
    }

    const bool m_terminal = isTerminal(STDOUT_FILENO);
    std::string m_held;
};

std::unique_ptr<Output> openWithMode(const std::string& path, unsigned mode) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return std::make_unique<DirectFile>(path);
    }
    return std::make_unique<RenamedFile>(path, mode);
}

}  // namespace

std::unique_ptr<Output> openOutputFile(const std::string& path) {
    return openWithMode(path, kPlainFileMode);
}

std::unique_ptr<Output> standardOutput() {
    return std::make_unique<StandardOutput>();
}

void writeWhole(const std::string& path, const std::string& bytes, unsigned mode) {
    const std::unique_ptr<Output> file = openWithMode(path, mode);
    file->write(bytes.data(), bytes.size());
    file->commit();
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
