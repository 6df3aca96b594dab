#include "KeyStore.h"

#include "Certificates.h"
#include "PrivateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

[[noreturn]] void failFolder(const std::string& folder, const std::string& reason) {
    throw std::runtime_error("cannot keep keys in " + folder + ": " + reason +
                             "; choose another with --state-dir");
}

void makePrivateFolder(const std::string& folder) {
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::path(folder).parent_path();
    if (!parent.empty()) {
        std::filesystem::create_directories(parent, error);
    }
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        failFolder(folder, std::strerror(errno));
    }
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        failFolder(folder, "not a folder");
    }
    if (status.st_uid != ::geteuid()) {
        failFolder(folder, "it belongs to another user");
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        failFolder(folder, "others can write to it");
    }
}

// Holds the folder against another hub that starts at the same moment.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : m_file(
              ::open((folder + "/lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (m_file < 0 || ::flock(m_file, LOCK_EX) != 0) {
            const int error = errno;
            if (m_file >= 0) {
                ::close(m_file);
            }
            failFolder(folder, std::strerror(error));
        }
    }
    ~FolderLock() { ::close(m_file); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    const int m_file;
};

}  // namespace

KeyStore::KeyStore(std::string keyFile, std::string certificateFile)
    : m_keyFile(std::move(keyFile)), m_certificateFile(std::move(certificateFile)) {}

KeyStore::KeyStore(std::string folder) : m_generates(true), m_folder(std::move(folder)) {}

const KeyPair& KeyStore::pair() {
    const std::lock_guard lock(m_mutex);
    if (!m_pair) {
        m_pair = m_generates ? loadOrMake() : load();
    }
    return *m_pair;
}

KeyPair KeyStore::load() const {
    return {readWholeFile(m_keyFile), readWholeFile(m_certificateFile)};
}

KeyPair KeyStore::loadOrMake() {
    if (m_folder.empty()) {
        m_folder = defaultFolder();
    }
    m_keyFile = m_folder + "/hub.key";
    m_certificateFile = m_folder + "/hub.pem";
    makePrivateFolder(m_folder);
    const FolderLock lock(m_folder);
    const auto present = [](const std::string& file) { return ::access(file.c_str(), R_OK) == 0; };
    if (present(caFile()) && present(m_keyFile) && present(m_certificateFile)) {
        KeyPair kept = load();
        if (stillValid(kept.certificate)) {
            return kept;
        }
    }
    const MadeCertificates made = makeCertificates();
    // The certificate comes last: without it the next start makes all three again.
    ::unlink(m_certificateFile.c_str());
    writePrivateFile(caFile(), made.ca);
    writePrivateFile(m_keyFile, made.key);
    writePrivateFile(m_certificateFile, made.certificate);
    return {made.key, made.certificate};
}

std::string KeyStore::defaultFolder() {
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state != '\0') {
        return std::string(state) + "/mvhub";
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') {
        return std::string(home) + "/.local/state/mvhub";
    }
    throw std::runtime_error(
        "no place for keys: neither XDG_STATE_HOME nor HOME is set; "
        "choose one with --state-dir");
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
