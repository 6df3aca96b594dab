// Accepts connections on a thread of its own, never more at once than the limit. Further clients
// stay in the queue of their listening socket until a connection ends.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <sys/socket.h>

namespace Morvenn::Net::MvServerProxy::Hub {

class Acceptor {
public:
    // Takes over an accepted socket. False: it was closed and nothing will be released for it.
    using Take = std::function<bool(int socket, const sockaddr* peer, socklen_t length)>;

    // The listening sockets belong to the acceptor from now on.
    Acceptor(std::vector<int> listenSockets, unsigned limit, Take take);

    ~Acceptor();

    Acceptor(const Acceptor&) = delete;
    Acceptor& operator=(const Acceptor&) = delete;

    void start();

    // Accepts nothing more and closes the listening sockets: clients still in the queue are
    // refused.
    void stop();

    // A connection has ended. Any thread, also after stop().
    void release();

private:
    void run();
    bool awaitSlot();
    // The listening socket of a client that waits; nothing when the acceptor stops.
    std::optional<int> awaitClient() const;

    const std::vector<int> m_sockets;
    const int m_stopEvent;
    const Take m_take;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_free;
    bool m_stopping = false;
    std::thread m_thread;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
