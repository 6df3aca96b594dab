#include "SessionFile.h"

#include "Failure.h"
#include "OutputFile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr std::size_t kLongestId = 4096;
constexpr unsigned kOwnerOnly = 0600;

bool isVisible(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7F'; });
}

}  // namespace

std::string SessionFile::load() const {
    if (::access(m_path.c_str(), F_OK) != 0 && errno == ENOENT) {
        return "";
    }
    std::ifstream file(m_path);
    std::string id;
    if (!file) {
        throwFileFailure("cannot read the session id from", m_path);
    }
    std::getline(file, id);
    if (id.size() > kLongestId || !isVisible(id) ||
        file.peek() != std::ifstream::traits_type::eof()) {
        throw Failure(ExitCode::LocalFile, m_path + " does not hold a session id",
                      "name another file; a new one is made");
    }
    return id;
}

void SessionFile::store(const std::string& id) const {
    if (!id.empty()) {
        writeWhole(m_path, id + "\n", kOwnerOnly);
        return;
    }
    if (::unlink(m_path.c_str()) != 0 && errno != ENOENT) {
        throwFileFailure("cannot remove", m_path);
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
