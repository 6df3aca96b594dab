// A session id that outlives the process.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// The file holds one line, the id. It is made with mode 0600; whoever knows the id is in the
// session.
class SessionFile {
public:
    explicit SessionFile(std::string path) : m_path(std::move(path)) {}

    // The id; empty when there is no file. Anything but one line of visible ASCII is a Failure
    // (LocalFile).
    std::string load() const;
    // Keeps the id; removes the file when it is empty.
    void store(const std::string& id) const;

private:
    std::string m_path;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
