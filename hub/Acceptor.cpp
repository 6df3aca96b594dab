#include "Acceptor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <chrono>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

// How long to leave clients waiting after accept() failed for want of descriptors or memory.
constexpr std::chrono::milliseconds kPauseAfterFailure{50};

}  // namespace

Acceptor::Acceptor(int listenSocket, unsigned limit, Take take)
    : m_socket(listenSocket),
      m_stopEvent(::eventfd(0, EFD_CLOEXEC)),
      m_take(std::move(take)),
      m_free(limit) {}

Acceptor::~Acceptor() {
    stop();
    ::close(m_stopEvent);
}

void Acceptor::start() {
    m_thread = std::thread([this] { run(); });
}

void Acceptor::stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_changed.notify_all();
    }
    ::eventfd_write(m_stopEvent, 1);
    m_thread.join();
    ::close(m_socket);
}

void Acceptor::release() {
    const std::lock_guard lock(m_mutex);
    ++m_free;
    m_changed.notify_all();
}

void Acceptor::run() {
    while (awaitSlot() && awaitClient()) {
        sockaddr_storage peer = {};
        socklen_t length = sizeof(peer);
        auto* name = reinterpret_cast<sockaddr*>(&peer);
        const int socket = ::accept4(m_socket, name, &length, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (socket < 0) {
            release();
            std::this_thread::sleep_for(kPauseAfterFailure);
            continue;
        }
        if (!m_take(socket, name, length)) {
            release();
        }
    }
}

bool Acceptor::awaitSlot() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopping || m_free > 0; });
    if (m_stopping) {
        return false;
    }
    --m_free;
    return true;
}

bool Acceptor::awaitClient() const {
    pollfd waited[] = {{m_socket, POLLIN, 0}, {m_stopEvent, POLLIN, 0}};
    while (::poll(waited, 2, -1) < 0) {
    }
    return waited[1].revents == 0;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
