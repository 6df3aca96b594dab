#include "TempFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Daemon.h"

namespace Morvenn::Net::MvServerProxy::Integration {

TempFolder::TempFolder() : m_path(std::filesystem::temp_directory_path() / "mvintegration-XXXXXX") {
    if (::mkdtemp(m_path.data()) == nullptr || ::chmod(m_path.c_str(), 0755) != 0) {
        throw std::runtime_error("cannot make a temporary folder " + m_path);
    }
    const ServerUser user = serverUser();
    if (::chown(m_path.c_str(), user.uid, user.gid) != 0) {
        throw std::runtime_error("cannot give " + m_path + " to the user of the servers");
    }
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void TempFolder::write(const std::string& name, const std::string& text) const {
    std::ofstream(file(name), std::ios::binary) << text;
}

std::string TempFolder::read(const std::string& name) const {
    std::ifstream in(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
