#include "Spool.h"

#include "Refusal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

[[noreturn]] void refuseFull(const char* what, const std::string& folder) {
    throw Refusal(507, std::string("cannot ") + what + " a temporary file in " + folder + ": " +
                           std::strerror(errno) + "; set TMPDIR to a folder with room");
}

std::string temporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

int openNameless() {
    const std::string folder = temporaryFolder();
    const int file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0) {
        return file;
    }
    // Some file systems know no O_TMPFILE: there a named file loses its name at once.
    std::string name = folder + "/mvhub-XXXXXX";
    const int named = ::mkostemp(name.data(), O_CLOEXEC);
    if (named < 0) {
        refuseFull("open", folder);
    }
    ::unlink(name.c_str());
    return named;
}

}  // namespace

Spool::Spool() = default;

Spool::~Spool() {
    if (m_file >= 0) {
        ::close(m_file);
    }
}

void Spool::write(const char* bytes, std::size_t count) {
    const std::size_t kept = std::min(count, kMemoryPart - m_memory.size());
    m_memory.append(bytes, kept);
    if (kept < count) {
        writeFile(bytes + kept, count - kept);
    }
    m_size += count;
}

void Spool::writeFile(const char* bytes, std::size_t count) {
    if (m_file < 0) {
        m_file = openNameless();
    }
    while (count > 0) {
        const ssize_t done = ::write(m_file, bytes, count);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done < 0) {
            refuseFull("write", temporaryFolder());
        }
        bytes += done;
        count -= static_cast<std::size_t>(done);
    }
}

std::ptrdiff_t Spool::read(char* to, std::size_t room) {
    if (m_position >= m_memory.size()) {
        return readFile(to, room);
    }
    const auto position = static_cast<std::size_t>(m_position);
    const std::size_t count = std::min(room, m_memory.size() - position);
    std::memcpy(to, m_memory.data() + position, count);
    m_position += count;
    return static_cast<std::ptrdiff_t>(count);
}

std::ptrdiff_t Spool::readFile(char* to, std::size_t room) {
    if (m_position == m_size) {
        return kEnd;
    }
    const auto offset = static_cast<off_t>(m_position - m_memory.size());
    const ssize_t count = ::pread(m_file, to, room, offset);
    if (count <= 0) {
        return kBroken;
    }
    m_position += static_cast<std::uint64_t>(count);
    return count;
}

std::optional<std::uint64_t> Spool::size() const {
    return m_size;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
