// The HTTP side of the hub: a listening socket and one thread per connection.
//
// start(), stop() and the destructor belong to one thread; everything else happens on the
// connections' threads.
#pragma once

#include "Acceptor.h"
#include "Handler.h"
#include "Limits.h"
#include "StopSignal.h"

#include <functional>
#include <optional>

struct MHD_Daemon;

namespace Morvenn::Net::MvServerProxy::Hub {

struct TlsPair {
    std::string key;          // PEM
    std::string certificate;  // PEM, the server's own first
};

struct ServerSettings {
    std::vector<std::string> addresses = {"127.0.0.1"};  // one or more
    std::uint16_t port = 0;                              // 0: a free one
    bool loopbackNamesOnly = true;
    bool faults = false;
    Limits limits;
    std::optional<TlsPair> tls;
};

class Server {
public:
    // Chooses the handler of a request, or throws Refusal. Called on many threads at once.
    using Route = std::function<HandlerPtr(const Request&)>;

    Server(ServerSettings settings, Route route);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Accepts connections when it returns. Throws std::runtime_error when it cannot.
    void start();

    // Accepts nothing more, gives running exchanges two seconds to end, and closes the rest.
    void stop();

    std::uint16_t port() const { return m_port; }

    // For the exchanges of this server.
    const ServerSettings& settings() const { return m_settings; }
    const Route& route() const { return m_route; }
    StopSignal& stopSignal() { return m_stopSignal; }
    void exchangeBegins();
    void exchangeEnds();
    void connectionEnds();

private:
    bool waitUntilIdle();

    const ServerSettings m_settings;
    const Route m_route;
    StopSignal m_stopSignal;
    MHD_Daemon* m_daemon = nullptr;
    std::unique_ptr<Acceptor> m_acceptor;
    std::uint16_t m_port = 0;
    std::mutex m_mutex;
    std::condition_variable m_idle;
    std::size_t m_active = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
