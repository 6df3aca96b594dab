#include "Acceptor.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

// How long to leave clients waiting after accept() failed for want of descriptors or memory.
constexpr std::chrono::milliseconds kPauseAfterFailure{50};

}  // namespace

Acceptor::Acceptor(std::vector<int> listenSockets, unsigned limit, Take take)
    : m_sockets(std::move(listenSockets)),
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
    for (const int socket : m_sockets) {
        ::close(socket);
    }
}

void Acceptor::release() {
    const std::lock_guard lock(m_mutex);
    ++m_free;
    m_changed.notify_all();
}

void Acceptor::run() {
    while (awaitSlot()) {
        const auto listener = awaitClient();
        if (!listener) {
            return;
        }
        sockaddr_storage peer = {};
        socklen_t length = sizeof(peer);
        auto* name = reinterpret_cast<sockaddr*>(&peer);
        const int socket = ::accept4(*listener, name, &length, SOCK_CLOEXEC | SOCK_NONBLOCK);
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

std::optional<int> Acceptor::awaitClient() const {
    std::vector<pollfd> waited{{m_stopEvent, POLLIN, 0}};
    for (const int socket : m_sockets) {
        waited.push_back({socket, POLLIN, 0});
    }
    while (::poll(waited.data(), waited.size(), -1) < 0) {
    }
    const auto ready = std::find_if(waited.begin(), waited.end(),
                                    [](const pollfd& one) { return one.revents != 0; });
    return ready->fd == m_stopEvent ? std::nullopt : std::optional<int>(ready->fd);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
