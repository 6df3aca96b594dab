// A TCP server on a free loopback port that says, byte for byte, what a test wants said.
#pragma once

#include <sys/socket.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy::Test {

// One accepted connection. Reading gives up when the peer closes or nothing comes for ten seconds.
class Connection {
public:
    explicit Connection(int socket) : m_socket(socket) {}
    ~Connection() { close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The header block of a request, empty line included; empty when the peer has closed.
    std::string readHead();
    // The body that belongs to that block, by Content-Length or in chunks.
    std::string readBody(const std::string& head);
    // Exactly that many bytes; fewer at the end.
    std::string take(std::size_t count);
    // Any bytes, at most `most`; empty at the end.
    std::string readSome(std::size_t most = 65536);

    void send(const std::string& bytes);
    // "HTTP/1.1 200 OK" with the length of the body, and the body.
    void answer(const std::string& body, const std::string& moreHeaders = "");
    void close();
    // Closes so that the peer sees a reset.
    void reset();
    // Waits until the peer has closed.
    void awaitClose();

private:
    bool fill();
    std::string readChunks();

    int m_socket;
    std::string m_buffer;
};

class RawServer {
public:
    using Script = std::function<void(Connection&)>;

    // Every connection runs the script, on a thread of its own. `family` is AF_INET or AF_INET6.
    explicit RawServer(Script script, int family = AF_INET);
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    int port() const { return m_port; }
    std::string authority() const { return m_host + ":" + std::to_string(m_port); }
    std::string url(const std::string& path = "/x") const { return "http://" + authority() + path; }

    // What scripts write down: shared by the connections.
    void note(const std::string& text);
    std::vector<std::string> notes() const;
    int connections() const { return m_connections; }

private:
    void accept();

    Script m_script;
    const std::string m_host;  // as it stands in a URL
    int m_listener = -1;
    int m_port = 0;
    std::atomic<int> m_connections{0};
    mutable std::mutex m_mutex;
    std::vector<std::string> m_notes;
    std::vector<int> m_sockets;
    std::vector<std::thread> m_workers;
    std::thread m_acceptor;
};

// A listening socket that takes no further connection.
class FullBacklog {
public:
    FullBacklog();
    ~FullBacklog();
    FullBacklog(const FullBacklog&) = delete;
    FullBacklog& operator=(const FullBacklog&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/x"; }

private:
    int m_listener = -1;
    int m_port = 0;
    std::vector<int> m_fillers;
};

// Whether this machine has the address ::1.
bool hasIpv6Loopback();

// The value of a header in a header block, "" when it is absent. Names in any case.
std::string headerValue(const std::string& head, const std::string& name);

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
