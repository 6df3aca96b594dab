#include "Server.h"

#include "Exchange.h"
#include "ListenSocket.h"
#include "Log.h"

#include <microhttpd.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::chrono::seconds kStopGrace{2};
constexpr std::size_t kThreadStack = 1024 * 1024;

// Memory of one connection, touched only as far as it is used. It has to hold the request headers
// up to the limit and the answer's; the fault mode "headers" needs more.
constexpr std::size_t kConnectionMemory = 256 * 1024;
constexpr std::size_t kConnectionMemoryForFaults = 2 * 1024 * 1024;

constexpr char kTlsPriorities[] = "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2";

MHD_Result onRequest(void* server, MHD_Connection* connection, const char* url, const char* method,
                     const char*, const char* body, std::size_t* bodySize, void** state) {
    if (*state == nullptr) {
        auto* begun = new Exchange(*static_cast<Server*>(server), connection, method, url);
        *state = begun;
        return begun->begin() ? MHD_YES : MHD_NO;
    }
    auto* exchange = static_cast<Exchange*>(*state);
    if (*bodySize == 0) {
        return exchange->finish() ? MHD_YES : MHD_NO;
    }
    const bool goesOn = exchange->take(body, *bodySize);
    *bodySize = 0;
    return goesOn ? MHD_YES : MHD_NO;
}

void onCompleted(void*, MHD_Connection*, void** state, MHD_RequestTerminationCode code) {
    auto* exchange = static_cast<Exchange*>(*state);
    *state = nullptr;
    if (exchange != nullptr) {
        exchange->completed(code == MHD_REQUEST_TERMINATED_COMPLETED_OK);
        delete exchange;
    }
}

// The connection's thread is about to end, its socket is closed.
void onConnection(void* server, MHD_Connection*, void**, MHD_ConnectionNotificationCode code) {
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
        static_cast<Server*>(server)->connectionEnds();
    }
}

__attribute__((format(printf, 2, 0))) void onLibraryMessage(void*, const char* format,
                                                            va_list arguments) {
    std::array<char, 512> text{};
    static_cast<void>(std::vsnprintf(text.data(), text.size(), format, arguments));
    std::string line = text.data();
    while (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    logExchange("http: " + line);
}

MHD_OptionItem option(MHD_OPTION name, std::size_t value) {
    return {name, static_cast<intptr_t>(value), nullptr};
}

MHD_OptionItem option(MHD_OPTION name, const char* text) {
    return {name, 0, const_cast<char*>(text)};
}

std::vector<MHD_OptionItem> options(const ServerSettings& settings) {
    std::vector<MHD_OptionItem> all = {
        // The library closes connections beyond its limit; the acceptor lets none of them in.
        option(MHD_OPTION_CONNECTION_LIMIT, std::size_t{settings.limits.connections} * 2),
        option(MHD_OPTION_CONNECTION_TIMEOUT, settings.limits.idleSeconds),
        option(MHD_OPTION_CONNECTION_MEMORY_LIMIT,
               settings.faults ? kConnectionMemoryForFaults : kConnectionMemory),
        option(MHD_OPTION_THREAD_STACK_SIZE, kThreadStack),
        option(MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 1),
    };
    if (settings.tls) {
        all.push_back(option(MHD_OPTION_HTTPS_MEM_KEY, settings.tls->key.c_str()));
        all.push_back(option(MHD_OPTION_HTTPS_MEM_CERT, settings.tls->certificate.c_str()));
        all.push_back(option(MHD_OPTION_HTTPS_PRIORITIES, kTlsPriorities));
    }
    all.push_back(option(MHD_OPTION_END, std::size_t{0}));
    return all;
}

}  // namespace

Server::Server(ServerSettings settings, Route route)
    : m_settings(std::move(settings)), m_route(std::move(route)) {}

Server::~Server() {
    stop();
}

void Server::start() {
    const std::vector<int> sockets = openListenSockets(m_settings.addresses, m_settings.port);
    m_port = boundPort(sockets.front());
    unsigned flags = MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD |
                     MHD_USE_POLL | MHD_USE_ITC | MHD_USE_NO_LISTEN_SOCKET | MHD_USE_ERROR_LOG;
    if (m_settings.tls) {
        flags |= MHD_USE_TLS;
    }
    // The message option comes first, so that trouble with the other options is reported too.
    m_daemon = MHD_start_daemon(
        flags, 0, nullptr, nullptr, &onRequest, this, MHD_OPTION_EXTERNAL_LOGGER, &onLibraryMessage,
        nullptr, MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, nullptr, MHD_OPTION_NOTIFY_CONNECTION,
        &onConnection, this, MHD_OPTION_ARRAY, options(m_settings).data(), MHD_OPTION_END);
    if (m_daemon == nullptr) {
        for (const int socket : sockets) {
            ::close(socket);
        }
        throw std::runtime_error(m_settings.tls
                                     ? "cannot start the HTTPS server: see the line above; key and "
                                       "certificate must be PEM and belong together"
                                     : "cannot start the HTTP server: see the line above");
    }
    m_acceptor = std::make_unique<Acceptor>(
        sockets, m_settings.limits.connections,
        [this](int client, const sockaddr* peer, socklen_t length) {
            return MHD_add_connection(m_daemon, client, peer, length) == MHD_YES;
        });
    m_acceptor->start();
}

void Server::stop() {
    if (m_daemon == nullptr) {
        return;
    }
    m_stopSignal.request();
    m_acceptor->stop();
    if (!waitUntilIdle()) {
        logLine("exchanges still running are cut");
    }
    MHD_stop_daemon(m_daemon);
    m_daemon = nullptr;
}

void Server::connectionEnds() {
    m_acceptor->release();
}

void Server::exchangeBegins() {
    const std::lock_guard lock(m_mutex);
    ++m_active;
}

void Server::exchangeEnds() {
    const std::lock_guard lock(m_mutex);
    --m_active;
    m_idle.notify_all();
}

bool Server::waitUntilIdle() {
    std::unique_lock lock(m_mutex);
    return m_idle.wait_for(lock, kStopGrace, [this] { return m_active == 0; });
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
