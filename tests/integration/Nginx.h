// nginx with one server on plain http and several on https, one for each kind of certificate.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Daemon.h"
#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {

// "/text" holds text(), "/deny" answers 413 without reading the body. A connection to the plain
// server serves three requests and is closed after a tenth of a second without one.
class Nginx {
public:
    Nginx();

    std::string plainUrl(const std::string& path) const;
    // `name` is "good", one of badCertificates() or "oldProtocol".
    std::string tlsUrl(const std::string& name, const std::string& path) const;
    static const std::vector<std::string>& badCertificates();
    std::string caFile() const { return m_folder.file("ca.pem"); }

    // Reads the configuration again in new worker processes. Running requests are finished.
    void reload() const;
    // Whether a worker process has been told to finish, after reload().
    bool hasReloaded() const;

    // Every request to the plain server but "/deny": "STATUS N", the N-th of its connection.
    std::vector<std::string> plainRequests(std::size_t count) const;
    // Every request to a server on https: "PORT STATUS LENGTH".
    std::vector<std::string> tlsRequests(std::size_t count) const;

    static constexpr char kDenied[] = "too big\n";
    static std::string text();

private:
    std::unique_ptr<Daemon> start();
    std::string tlsServer(const std::string& name) const;
    int tlsPort(const std::string& name) const;

    TempFolder m_folder;
    std::vector<int> m_ports;
    std::unique_ptr<Daemon> m_daemon;
};

}  // namespace Morvenn::Net::MvServerProxy::Integration
