#include "Squid.h"

#include "Certificates.h"
#include "Lines.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

// "secret", as htpasswd writes it.
constexpr char kPasswordHash[] = "$apr1$saltsalt$LrttParrLPdxvgutaSXWJ0";

std::string basicLines(const TempFolder& folder) {
    return "auth_param basic program /usr/lib/squid/basic_ncsa_auth " + folder.file("basic") +
           "\n"
           "auth_param basic children 2 startup=1\n"
           "auth_param basic realm " +
           kBasicRealm + "\nauth_param basic credentialsttl 1 hour\n";
}

std::string digestLines(const TempFolder& folder, int nonceUses) {
    return "auth_param digest program /usr/lib/squid/digest_file_auth " + folder.file("digest") +
           "\n"
           "auth_param digest children 2 startup=1\n"
           "auth_param digest realm " +
           kDigestRealm + "\nauth_param digest nonce_max_count " + std::to_string(nonceUses) + "\n";
}

std::string ntlmLines() {
    return "auth_param ntlm program /usr/lib/squid/ntlm_fake_auth\n"
           "auth_param ntlm children 2 startup=1\n";
}

std::string schemeLines(Squid::Offers offers, const TempFolder& folder, int nonceUses) {
    switch (offers) {
        case Squid::Offers::Basic:
            return basicLines(folder);
        case Squid::Offers::Digest:
            return digestLines(folder, nonceUses);
        case Squid::Offers::Ntlm:
            return ntlmLines();
        case Squid::Offers::Both:
            break;
    }
    return basicLines(folder) + digestLines(folder, nonceUses);
}

}  // namespace

Squid::Squid(Offers offers, Door door, int nonceUses) : m_door(door) {
    if (m_door == Door::Https) {
        makeCertificates(m_folder);
    }
    m_daemon = startDaemon([&] { return start(offers, nonceUses); });
}

std::string Squid::doorLine() const {
    if (m_door == Door::Http) {
        return "http_port " + authority() + "\n";
    }
    return "https_port " + authority() + " tls-cert=" + m_folder.file("good.pem") +
           " tls-key=" + m_folder.file("good.key") + "\n";
}

std::unique_ptr<Daemon> Squid::start(Offers offers, int nonceUses) {
    m_port = freePorts(1).front();
    m_folder.write("basic", std::string(kUser) + ":" + kPasswordHash + "\n");
    m_folder.write("digest", std::string(kUser) + ":" + kPassword + "\n");
    m_folder.write("squid.conf", doorLine() +
                                     "pid_filename none\n"
                                     "visible_hostname forward-proxy\n"
                                     "cache_log " +
                                     m_folder.file("cache.log") +
                                     "\n"
                                     "logformat seen %>Hs %rm %ru %{Proxy-Authorization}>h\n"
                                     "access_log stdio:" +
                                     m_folder.file("access.log") +
                                     " seen\n"
                                     "cache deny all\n"
                                     "pinger_enable off\n"
                                     "shutdown_lifetime 0 seconds\n" +
                                     schemeLines(offers, m_folder, nonceUses) +
                                     "acl known proxy_auth REQUIRED\n"
                                     "http_access allow known\n"
                                     "http_access deny all\n");
    // The service's name is part of the names of its shared memory.
    return std::make_unique<Daemon>(
        m_folder,
        Daemon::Command{"/usr/sbin/squid", "-N", "-n", "mv" + std::to_string(m_port), "-f",
                        m_folder.file("squid.conf")},
        "cache.log", m_door == Door::Http ? "Accepting HTTP Socket" : "Accepting HTTPS Socket");
}

std::vector<std::string> Squid::seen(std::size_t count) const {
    return awaitLines(m_folder, "access.log", count);
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
