// A folder that the servers of a test can read and write.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Integration {

// Gone with the destructor. Servers started by root run as another user (see Daemon.h), to whom the
// folder then belongs.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }
    void write(const std::string& name, const std::string& text) const;
    // The whole file; empty when there is none.
    std::string read(const std::string& name) const;

private:
    std::string m_path;
};

}  // namespace Morvenn::Net::MvServerProxy::Integration
