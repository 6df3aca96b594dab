// A bound and listening TCP socket.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {

// 127.0.0.0/8 and ::1.
bool isLoopbackAddress(const std::string& address);

// Opens a listening socket on a numeric IPv4 or IPv6 address; the caller closes it. Throws
// std::runtime_error that names address, port, reason and remedy.
int openListenSocket(const std::string& address, std::uint16_t port);

// The same for each of the addresses, all on one port; with port 0 the first takes a free one.
std::vector<int> openListenSockets(const std::vector<std::string>& addresses, std::uint16_t port);

// The port that the socket is bound to.
std::uint16_t boundPort(int socket);

// "host:port" for use in a URL, IPv6 addresses in brackets.
std::string urlAuthority(const std::string& address, std::uint16_t port);

}  // namespace Morvenn::Net::MvServerProxy::Hub
