#include "PortFile.h"

#include "PrivateFile.h"

#include <unistd.h>

namespace Morvenn::Net::MvServerProxy::Hub {

PortFile::PortFile(std::string path, std::uint16_t port) : m_path(std::move(path)) {
    if (!m_path.empty()) {
        writePrivateFile(m_path, std::to_string(port) + "\n");
    }
}

PortFile::~PortFile() {
    if (!m_path.empty()) {
        ::unlink(m_path.c_str());
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
