// A server of another maker, run in the foreground by a test and ended by its process id.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {

// Who servers run as: the user of the test, but "nobody" in place of root.
struct ServerUser {
    uid_t uid;
    gid_t gid;
};
ServerUser serverUser();

// Free TCP ports of 127.0.0.1, all different.
std::vector<int> freePorts(std::size_t count);

// Asks `holds` until it says true, for 20 seconds at most. The last answer.
bool waitUntil(const std::function<bool()>& holds);

class Daemon {
public:
    using Command = std::vector<std::string>;

    // Starts the command and waits until the file `log` of the folder holds `ready`. The server is
    // told to end when this process dies. Throws std::runtime_error with all it wrote when it ends
    // or is not ready within 20 seconds.
    Daemon(const TempFolder& folder, const Command& command, const std::string& log,
           const std::string& ready);
    // SIGTERM, and waits; SIGKILL when that does not help within 20 seconds.
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    void signal(int number) const;

private:
    void stop();
    bool hasEnded();

    pid_t m_pid = -1;
    bool m_ended = false;
};

// Calls `start` again when it fails, three times in all: between the choice of a free port and its
// use anybody can take it.
std::unique_ptr<Daemon> startDaemon(const std::function<std::unique_ptr<Daemon>()>& start);

}  // namespace Morvenn::Net::MvServerProxy::Integration
