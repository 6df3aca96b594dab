// The directory that is being served, and its file.
//
// Safe to use from any number of threads.
#pragma once

#include "Directory.h"

#include <memory>
#include <mutex>

namespace Morvenn::Net::MvServerProxy::Hub {

class DirectoryStore {
public:
    // Reads the file; an empty path stands for an empty directory. Throws std::runtime_error with
    // file, line and reason.
    explicit DirectoryStore(std::string file);

    // Reads the file again. When it is bad the directory stays as it was and std::runtime_error is
    // thrown as by the constructor.
    void reload();

    bool hasFile() const { return !m_file.empty(); }
    void replace(Directory directory);
    std::shared_ptr<const Directory> current() const;

private:
    const std::string m_file;
    mutable std::mutex m_mutex;
    std::shared_ptr<const Directory> m_current;
};

// The directory served without a file: one environment, the hub itself under that URL.
Directory ownDirectory(const std::string& url, const std::string& version);

}  // namespace Morvenn::Net::MvServerProxy::Hub
