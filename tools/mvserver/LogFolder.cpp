#include "LogFolder.h"

#include "Failure.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

std::string valueOr(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : otherwise;
}

std::string makeFolder() {
    std::string path = valueOr("TMPDIR", "/tmp") + "/mvserver-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        throwFileFailure("cannot make the log folder", path);
    }
    return path;
}

void checkFolder(const std::string& path) {
    if (::access(path.c_str(), W_OK | X_OK) != 0) {
        throwFileFailure("cannot log in", path);
    }
}

}  // namespace

LogFolder::LogFolder(const std::string& chosen) {
    if (chosen.empty()) {
        const SignalsHeld untilRegistered;
        m_ownFolder = makeFolder();
        m_registration = std::make_unique<RemovedOnSignal>(m_ownFolder);
    } else {
        checkFolder(chosen);
    }
    const std::string& folder = chosen.empty() ? m_ownFolder : chosen;
    ::setenv("TEMP", folder.c_str(), 1);
    const char* name = std::getenv("MVHUB_CONFIG");
    m_file = folder + "/CppBinding_" + std::to_string(::getpid()) + "_" +
             (name != nullptr ? name : "Morvenn") + ".log";
}

LogFolder::~LogFolder() {
    if (!written()) {
        ::unlink(m_file.c_str());  // opened, and nothing said
    }
    if (!m_ownFolder.empty()) {
        ::rmdir(m_ownFolder.c_str());  // fails, as it should, when there is a log
    }
}

bool LogFolder::written() const {
    struct stat status {};
    return ::stat(m_file.c_str(), &status) == 0 && status.st_size > 0;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
