#include "Body.h"

#include "Failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <sstream>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr std::size_t kPiece = 65536;

class FileReader : public std::streambuf {
public:
    FileReader(int descriptor, const std::string& name, Progress& progress)
        : m_descriptor(descriptor), m_name(name), m_progress(progress) {}

protected:
    int_type underflow() override {
        ssize_t count = 0;
        do {
            count = ::read(m_descriptor, m_buffer, sizeof m_buffer);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            throwFileFailure("cannot read", m_name);
        }
        if (count == 0) {
            return traits_type::eof();
        }
        refuseZeroByte(static_cast<std::size_t>(count));
        m_position += static_cast<std::uint64_t>(count);
        m_progress.sent(static_cast<std::size_t>(count));
        setg(m_buffer, m_buffer, m_buffer + count);
        return traits_type::to_int_type(*gptr());
    }

private:
    void refuseZeroByte(std::size_t count) const {
        const void* zero = std::memchr(m_buffer, 0, count);
        if (zero == nullptr) {
            return;
        }
        const auto offset = static_cast<std::uint64_t>(static_cast<const char*>(zero) - m_buffer);
        throw Failure(ExitCode::LocalFile,
                      m_name + " holds a zero byte at offset " +
                          std::to_string(m_position + offset) + ": bodies are text",
                      "encode it, for instance: base64 " + m_name + " | mvserver send -d - ...");
    }

    int m_descriptor;
    std::string m_name;
    Progress& m_progress;
    std::uint64_t m_position = 0;
    char m_buffer[kPiece] = {};
};

std::shared_ptr<const int> openFile(const std::string& path) {
    if (path.empty()) {
        throw Failure(ExitCode::Usage, "the body \"@\" names no file", "write -d @FILE");
    }
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throwFileFailure("cannot read", path);
    }
    return {new int(descriptor), [](const int* owned) {
                ::close(*owned);
                delete owned;
            }};
}

std::uint64_t sizeOf(int descriptor, const std::string& name) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throwFileFailure("cannot read", name);
    }
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        throwFileFailure("cannot read", name);
    }
    return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

Body::Body(const std::string& named) {
    if (named == "-") {
        m_name = "standard input";
        m_descriptor = STDIN_FILENO;
    } else if (!named.empty() && named[0] == '@') {
        m_name = named.substr(1);
        m_owned = openFile(m_name);
        m_descriptor = *m_owned;
    } else {
        m_text = named;
    }
    m_size = isLiteral() ? m_text.size() : sizeOf(m_descriptor, m_name);
}

std::string Body::whole(Progress& progress) {
    if (isLiteral()) {
        progress.sent(m_text.size());
        return m_text;
    }
    FileReader reader(m_descriptor, m_name, progress);
    return {std::istreambuf_iterator<char>(&reader), std::istreambuf_iterator<char>()};
}

std::unique_ptr<std::streambuf> Body::stream(Progress& progress) {
    if (isLiteral()) {
        progress.sent(m_text.size());
        return std::make_unique<std::stringbuf>(m_text, std::ios::in);
    }
    return std::make_unique<FileReader>(m_descriptor, m_name, progress);
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
