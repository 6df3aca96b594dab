#include "RawServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "TextTools.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

constexpr int kPatienceMs = 10000;

bool readable(int socket) {
    pollfd watched{socket, POLLIN, 0};
    return ::poll(&watched, 1, kPatienceMs) == 1;
}

// A loopback address with that port.
struct Address {
    Address(int family, int port) {
        if (family == AF_INET6) {
            auto* v6 = reinterpret_cast<sockaddr_in6*>(&storage);
            v6->sin6_addr = in6addr_loopback;
            v6->sin6_port = htons(static_cast<std::uint16_t>(port));
            size = sizeof(*v6);
        } else {
            auto* v4 = reinterpret_cast<sockaddr_in*>(&storage);
            v4->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            v4->sin_port = htons(static_cast<std::uint16_t>(port));
            size = sizeof(*v4);
        }
        storage.ss_family = static_cast<sa_family_t>(family);
    }
    sockaddr* name() { return reinterpret_cast<sockaddr*>(&storage); }

    sockaddr_storage storage{};
    socklen_t size = 0;
};

// The port stands at the same place for both families.
int portOf(const Address& address) {
    return ntohs(reinterpret_cast<const sockaddr_in*>(&address.storage)->sin_port);
}

// A socket that listens on a free loopback port, and the port.
std::pair<int, int> listenSomewhere(int family, int backlog) {
    const int listener = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Address address(family, 0);
    if (listener < 0 || ::bind(listener, address.name(), address.size) != 0 ||
        ::listen(listener, backlog) != 0 ||
        ::getsockname(listener, address.name(), &address.size) != 0) {
        ::close(listener);
        throw std::runtime_error("no listening socket on loopback");
    }
    return {listener, portOf(address)};
}

}  // namespace

bool Connection::fill() {
    std::string bytes(65536, '\0');
    if (!readable(m_socket)) {
        return false;
    }
    const ssize_t count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (count <= 0) {
        return false;
    }
    m_buffer.append(bytes, 0, static_cast<std::size_t>(count));
    return true;
}

std::string Connection::take(std::size_t count) {
    while (m_buffer.size() < count && fill()) {
    }
    const std::string taken = m_buffer.substr(0, count);
    m_buffer.erase(0, count);
    return taken;
}

std::string Connection::readHead() {
    while (m_buffer.find("\r\n\r\n") == std::string::npos) {
        if (!fill()) {
            return {};
        }
    }
    return take(m_buffer.find("\r\n\r\n") + 4);
}

std::string Connection::readChunks() {
    std::string body;
    for (;;) {
        while (m_buffer.find("\r\n") == std::string::npos) {
            if (!fill()) {
                return body + "<cut>";
            }
        }
        const std::size_t size = std::strtoul(m_buffer.c_str(), nullptr, 16);
        take(m_buffer.find("\r\n") + 2);
        body += take(size);
        take(2);
        if (size == 0) {
            return body;
        }
    }
}

std::string Connection::readBody(const std::string& head) {
    if (equalIgnoringCase(headerValue(head, "Transfer-Encoding"), "chunked")) {
        return readChunks();
    }
    return take(std::strtoul(headerValue(head, "Content-Length").c_str(), nullptr, 10));
}

std::string Connection::readSome(std::size_t most) {
    if (m_buffer.empty() && !fill()) {
        return {};
    }
    return take(std::min(most, m_buffer.size()));
}

void Connection::send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return;  // the peer has gone; the test looks at what it makes of that
        }
        sent += static_cast<std::size_t>(count);
    }
}

void Connection::answer(const std::string& body, const std::string& moreHeaders) {
    send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
         moreHeaders + "\r\n" + body);
}

void Connection::close() {
    if (m_socket >= 0) {
        ::shutdown(m_socket, SHUT_RDWR);
        ::close(std::exchange(m_socket, -1));
    }
}

// close() alone would send nothing as long as the server's duplicate is open.
void Connection::reset() {
    const sockaddr nobody{AF_UNSPEC, {}};
    ::connect(m_socket, &nobody, sizeof(nobody));
    ::close(std::exchange(m_socket, -1));
}

void Connection::awaitClose() {
    while (!readSome().empty()) {
    }
}

RawServer::RawServer(Script script, int family)
    : m_script(std::move(script)), m_host(family == AF_INET6 ? "[::1]" : "127.0.0.1") {
    std::tie(m_listener, m_port) = listenSomewhere(family, 64);
    m_acceptor = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    ::shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    ::close(m_listener);
    for (const int socket : m_sockets) {
        ::shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& worker : m_workers) {
        worker.join();
    }
    for (const int socket : m_sockets) {
        ::close(socket);
    }
}

void RawServer::accept() {
    for (;;) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        ++m_connections;
        // The duplicate stays open until the end, so that its number names no other socket.
        m_sockets.push_back(::fcntl(socket, F_DUPFD_CLOEXEC, 0));
        m_workers.emplace_back([this, socket, watched = m_sockets.back()] {
            {
                Connection connection(socket);
                m_script(connection);
            }
            ::shutdown(watched, SHUT_RDWR);
        });
    }
}

void RawServer::note(const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_notes.push_back(text);
}

std::vector<std::string> RawServer::notes() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_notes;
}

FullBacklog::FullBacklog() {
    std::tie(m_listener, m_port) = listenSomewhere(AF_INET, 0);
    Address address(AF_INET, m_port);
    for (int i = 0; i < 8; ++i) {
        const int filler = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        static_cast<void>(::connect(filler, address.name(), address.size));
        m_fillers.push_back(filler);
    }
}

FullBacklog::~FullBacklog() {
    for (const int filler : m_fillers) {
        ::close(filler);
    }
    ::close(m_listener);
}

bool hasIpv6Loopback() {
    const int socket = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Address address(AF_INET6, 0);
    const bool has = socket >= 0 && ::bind(socket, address.name(), address.size) == 0;
    ::close(socket);
    return has;
}

std::string headerValue(const std::string& head, const std::string& name) {
    for (const std::string_view line : pieces(head, "\r\n")) {
        const auto colon = line.find(':');
        if (colon != std::string_view::npos && equalIgnoringCase(line.substr(0, colon), name)) {
            return std::string(trimmed(line.substr(colon + 1)));
        }
    }
    return {};
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
