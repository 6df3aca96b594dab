// Runs mvhub for a test: a process of its own on a free port, ended by its id.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Testing {

// Starts in the constructor, ends in the destructor. Belongs to one thread.
class HubProcess {
public:
    // Starts mvhub with "--port 0", a state folder in its own temporary folder, and `arguments`
    // (an option given there replaces the one given here), and waits for the ready line. Throws
    // std::runtime_error with the command and everything mvhub wrote when it does not get ready
    // within 20 seconds.
    explicit HubProcess(const std::vector<std::string>& arguments = {});

    // Ends the process as stop() does and removes the temporary folder.
    ~HubProcess();

    HubProcess(const HubProcess&) = delete;
    HubProcess& operator=(const HubProcess&) = delete;

    // "http://127.0.0.1:PORT" or "https://127.0.0.1:PORT", without a slash at the end.
    const std::string& url() const { return m_url; }
    std::uint16_t port() const;
    pid_t pid() const { return m_pid; }

    // A folder of this process alone, there until the destructor.
    const std::string& folder() const { return m_folder; }

    // The CA of the generated key pair; the file is there once TLS or a signature needed it.
    std::string caFile() const { return m_folder + "/state/ca.pem"; }

    // What the hub has written to its standard error stream so far.
    std::string log() const;

    // Waits up to 10 seconds until the log holds `text`; false when it does not come.
    bool waitForLog(const std::string& text) const;

    void signal(int number) const;

    // Sends SIGTERM and waits. The result of wait().
    int stop();

    // Waits up to 10 seconds for the process to end and returns its exit status; 128 + the signal
    // when one ended it. A process that does not end is killed, which gives 137. Later calls give
    // the same result again.
    int wait();

private:
    void start(const std::vector<std::string>& arguments);
    void awaitReadyLine(int output);

    std::string m_folder;
    std::string m_url;
    pid_t m_pid = -1;
    int m_exitStatus = -1;
};

// Runs mvhub to its end with its input empty, for command lines that start no server. `output`
// receives what it wrote to both streams. Returns the exit status as HubProcess::wait() does.
int runHub(const std::vector<std::string>& arguments, std::string& output);

}  // namespace Morvenn::Net::MvServerProxy::Testing
