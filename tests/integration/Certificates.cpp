#include "Certificates.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "Daemon.h"

namespace Morvenn::Net::MvServerProxy::Integration {

void makeCertificates(const TempFolder& folder) {
    const std::string command = std::string(MV_CERTIFICATES_SCRIPT) + " " + folder.path() + " >" +
                                folder.file("certificates.log") + " 2>&1";
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("no certificates: " + folder.read("certificates.log"));
    }
    const ServerUser user = serverUser();
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        if (entry.path().extension() == ".key" &&
            ::chown(entry.path().c_str(), user.uid, user.gid) != 0) {
            throw std::runtime_error("cannot give " + entry.path().string() +
                                     " to the server's user");
        }
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
