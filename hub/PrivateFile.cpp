#include "PrivateFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path, int error) {
    throw std::runtime_error("cannot " + what + " " + path + ": " + std::strerror(error));
}

bool writeAll(int file, const std::string& content) {
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t count = ::write(file, content.data() + done, content.size() - done);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

std::string readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail("read", path, errno);
    }
    std::ostringstream content;
    content << file.rdbuf();
    if (file.bad()) {
        fail("read", path, EIO);
    }
    return content.str();
}

void writePrivateFile(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    const int file = ::mkstemp(temporary.data());  // mode 0600
    if (file < 0) {
        fail("write", path, errno);
    }
    const bool written = writeAll(file, content);
    const bool closed = ::close(file) == 0;
    if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        fail("write", path, error);
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
