#include "Spool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

void Spool::configure(std::string folder, std::int64_t limit) {
    close();
    m_folder = std::move(folder);
    m_limit = limit;
}

void Spool::fail(const std::string& what) const {
    throw Failure{MV_STATUS_RUNTIME,
                  "the response that arrives while the body is being sent cannot be kept in " +
                      m_folder + ": " + what +
                      "; point TMPDIR to a folder with room, or see MV_SERVERPROXY_SPOOL_LIMIT"};
}

void Spool::open() {
    m_file = ::open(m_folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_file >= 0) {
        return;
    }
    std::string name = m_folder + "/mvserverproxy-XXXXXX";  // a file system without O_TMPFILE
    m_file = ::mkostemp(name.data(), O_CLOEXEC);
    if (m_file < 0) {
        fail(std::strerror(errno));
    }
    ::unlink(name.c_str());
}

void Spool::write(const char* data, std::size_t size) {
    if (static_cast<std::int64_t>(size) > m_limit - m_end) {
        fail("it is larger than the limit of " + std::to_string(m_limit) + " bytes");
    }
    if (m_file < 0) {
        open();
    }
    while (size > 0) {
        const ssize_t count = ::pwrite(m_file, data, size, m_end);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            fail(std::strerror(errno));
        }
        m_end += count;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
}

std::size_t Spool::read(char* out, std::size_t size) {
    const auto wanted =
        static_cast<std::size_t>(std::min(this->size(), static_cast<std::int64_t>(size)));
    if (wanted == 0) {
        return 0;
    }
    ssize_t count = 0;
    do {
        count = ::pread(m_file, out, wanted, m_begin);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        fail(count < 0 ? std::strerror(errno) : "the file was cut");
    }
    m_begin += count;
    if (empty()) {
        close();  // its room on the disk is free again
    }
    return static_cast<std::size_t>(count);
}

void Spool::close() {
    if (m_file >= 0) {
        ::close(m_file);
    }
    m_file = -1;
    m_begin = 0;
    m_end = 0;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
