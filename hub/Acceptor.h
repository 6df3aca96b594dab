// Accepts connections on a thread of its own, never more at once than the limit. Further clients
// stay in the queue of the listening socket until a connection ends.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include <sys/socket.h>

namespace Morvenn::Net::MvServerProxy::Hub {

class Acceptor {
public:
    // Takes over an accepted socket. False: it was closed and nothing will be released for it.
    using Take = std::function<bool(int socket, const sockaddr* peer, socklen_t length)>;

    // `listenSocket` belongs to the acceptor from now on.
    Acceptor(int listenSocket, unsigned limit, Take take);

    ~Acceptor();

    Acceptor(const Acceptor&) = delete;
    Acceptor& operator=(const Acceptor&) = delete;

    void start();

    // Accepts nothing more and closes the listening socket: clients still in the queue are refused.
    void stop();

    // A connection has ended. Any thread, also after stop().
    void release();

private:
    void run();
    bool awaitSlot();
    bool awaitClient() const;

    const int m_socket;
    const int m_stopEvent;
    const Take m_take;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_free;
    bool m_stopping = false;
    std::thread m_thread;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
