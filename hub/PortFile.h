// The file that tells other programs the hub's port: there while the hub runs, readable by its
// owner only.
#pragma once

#include <cstdint>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

class PortFile {
public:
    // Writes the port and a line end; the file appears whole or not at all. An empty path: no file.
    // Throws std::runtime_error when it cannot be written.
    PortFile(std::string path, std::uint16_t port);
    ~PortFile();
    PortFile(const PortFile&) = delete;
    PortFile& operator=(const PortFile&) = delete;

private:
    const std::string m_path;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
