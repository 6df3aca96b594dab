// Where the library's log goes: a folder that only its owner can look into.
#pragma once

#include "Cleanup.h"

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Makes a folder below $TMPDIR (else /tmp), or takes `chosen` when it is not empty, and points the
// library's "TEMP" to it. To be created before the library logs. A folder of its own that is still
// empty at the end is removed; one that holds a log stays.
class LogFolder {
public:
    explicit LogFolder(const std::string& chosen);
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;
    ~LogFolder();

    // The file that the library logs to, whether or not it exists yet.
    const std::string& file() const { return m_file; }
    // Whether anything has been logged.
    bool written() const;

private:
    std::string m_ownFolder;  // empty when it was chosen
    std::string m_file;
    std::unique_ptr<RemovedOnSignal> m_registration;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
