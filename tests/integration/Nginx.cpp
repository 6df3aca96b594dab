#include "Nginx.h"

#include <algorithm>
#include <csignal>

#include "Certificates.h"
#include "Lines.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

constexpr char kGood[] = "good";
constexpr char kOldProtocol[] = "oldProtocol";

std::vector<std::string> tlsNames() {
    std::vector<std::string> names = Nginx::badCertificates();
    names.emplace_back(kGood);
    names.emplace_back(kOldProtocol);
    return names;
}

std::string listenAddress(int port) {
    return "127.0.0.1:" + std::to_string(port);
}

}  // namespace

const std::vector<std::string>& Nginx::badCertificates() {
    static const std::vector<std::string> names = {"unknownCa", "wrongName", "expired",
                                                   "notYetValid", "selfSigned"};
    return names;
}

std::string Nginx::text() {
    std::string text;
    for (int line = 0; line < 5000; ++line) {
        text += "line " + std::to_string(line) + " of the text\n";
    }
    return text;
}

Nginx::Nginx() {
    makeCertificates(m_folder);
    m_folder.write("text", text());
    m_daemon = startDaemon([this] { return start(); });
}

int Nginx::tlsPort(const std::string& name) const {
    const auto names = tlsNames();
    const auto found = std::find(names.begin(), names.end(), name);
    return m_ports.at(static_cast<std::size_t>(found - names.begin()) + 1);
}

std::string Nginx::tlsServer(const std::string& name) const {
    const bool old = name == kOldProtocol;
    const std::string pair = m_folder.file(old ? kGood : name);
    return "server {\n"
           "  listen " +
           listenAddress(tlsPort(name)) + " ssl;\n  ssl_certificate " + pair +
           ".pem;\n  ssl_certificate_key " + pair + ".key;\n  ssl_protocols " +
           (old ? "TLSv1 TLSv1.1;\n  ssl_ciphers ALL:@SECLEVEL=0;\n" : "TLSv1.2 TLSv1.3;\n") +
           "  access_log " + m_folder.file("tls.log") +
           " tls;\n"
           "  location / { error_page 405 =200 $uri; }\n"
           "}\n";
}

std::unique_ptr<Daemon> Nginx::start() {
    m_ports = freePorts(tlsNames().size() + 1);
    std::string servers;
    for (const std::string& name : tlsNames()) {
        servers += tlsServer(name);
    }
    std::string temporaries;
    for (const char* kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
        temporaries += std::string(kind) + "_temp_path " + m_folder.file(kind) + ";\n";
    }
    m_folder.write("nginx.conf",
                   "daemon off;\n"
                   "worker_processes 1;\n"
                   "pid " +
                       m_folder.file("nginx.pid") + ";\nerror_log " + m_folder.file("error.log") +
                       " notice;\n"
                       "events { worker_connections 256; }\n"
                       "http {\n" +
                       temporaries + "root " + m_folder.path() +
                       ";\n"
                       "default_type text/plain;\n"
                       "client_max_body_size 0;\n"
                       "gzip on;\ngzip_types *;\ngzip_min_length 1;\n"
                       "log_format plain '$status $connection_requests';\n"
                       "log_format tls '$server_port $status $request_length';\n"
                       "server {\n"
                       "  listen " +
                       listenAddress(m_ports.front()) +
                       ";\n"
                       "  keepalive_requests 3;\n"
                       "  keepalive_timeout 100ms;\n"
                       "  access_log " +
                       m_folder.file("plain.log") +
                       " plain;\n"
                       "  location = /deny { access_log off; return 413 \"" +
                       "too big\\n" +
                       "\"; }\n"
                       "  location / { error_page 405 =200 $uri; }\n"
                       "}\n" +
                       servers + "}\n");
    return std::make_unique<Daemon>(
        m_folder,
        Daemon::Command{"/usr/sbin/nginx", "-e", m_folder.file("error.log"), "-c",
                        m_folder.file("nginx.conf")},
        "error.log", "start worker process ");
}

std::string Nginx::plainUrl(const std::string& path) const {
    return "http://" + listenAddress(m_ports.front()) + path;
}

std::string Nginx::tlsUrl(const std::string& name, const std::string& path) const {
    return "https://" + listenAddress(tlsPort(name)) + path;
}

void Nginx::reload() const {
    m_daemon->signal(SIGHUP);
}

bool Nginx::hasReloaded() const {
    return m_folder.read("error.log").find("gracefully shutting down") != std::string::npos;
}

std::vector<std::string> Nginx::plainRequests(std::size_t count) const {
    return awaitLines(m_folder, "plain.log", count);
}

std::vector<std::string> Nginx::tlsRequests(std::size_t count) const {
    return awaitLines(m_folder, "tls.log", count);
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
