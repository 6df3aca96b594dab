#include "ListenSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr int kBacklog = 128;

struct Address {
    sockaddr_storage storage = {};
    socklen_t length = 0;
};

bool parseAddress(const std::string& text, std::uint16_t port, Address& address) {
    auto* v4 = reinterpret_cast<sockaddr_in*>(&address.storage);
    if (::inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        address.length = sizeof(*v4);
        return true;
    }
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&address.storage);
    if (::inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        address.length = sizeof(*v6);
        return true;
    }
    return false;
}

[[noreturn]] void failToListen(const std::string& address, std::uint16_t port, int error) {
    std::string text =
        "cannot listen on " + urlAuthority(address, port) + ": " + std::strerror(error);
    if (error == EADDRINUSE) {
        text += "; choose another with --port, or --port 0 for a free one";
    }
    throw std::runtime_error(text);
}

}  // namespace

bool isLoopbackAddress(const std::string& address) {
    Address parsed;
    if (!parseAddress(address, 0, parsed)) {
        return false;
    }
    if (parsed.storage.ss_family == AF_INET6) {
        const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&parsed.storage);
        return IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr) != 0;
    }
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(&parsed.storage);
    return (ntohl(v4->sin_addr.s_addr) >> 24) == 127;
}

int openListenSocket(const std::string& address, std::uint16_t port) {
    Address parsed;
    if (!parseAddress(address, port, parsed)) {
        throw std::runtime_error("cannot listen on " + address +
                                 ": not a numeric IPv4 or IPv6 address");
    }
    const int socket = ::socket(parsed.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        failToListen(address, port, errno);
    }
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    const auto* name = reinterpret_cast<const sockaddr*>(&parsed.storage);
    if (::bind(socket, name, parsed.length) != 0 || ::listen(socket, kBacklog) != 0) {
        const int error = errno;
        ::close(socket);
        failToListen(address, port, error);
    }
    return socket;
}

std::vector<int> openListenSockets(const std::vector<std::string>& addresses, std::uint16_t port) {
    std::vector<int> sockets;
    try {
        for (const std::string& address : addresses) {
            sockets.push_back(openListenSocket(address, port));
            port = boundPort(sockets.front());
        }
    } catch (...) {
        for (const int socket : sockets) {
            ::close(socket);
        }
        throw;
    }
    return sockets;
}

std::uint16_t boundPort(int socket) {
    sockaddr_storage storage = {};
    socklen_t length = sizeof(storage);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&storage), &length);
    return ntohs(storage.ss_family == AF_INET6
                     ? reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_port
                     : reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
}

std::string urlAuthority(const std::string& address, std::uint16_t port) {
    const bool v6 = address.find(':') != std::string::npos;
    return (v6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
