// squid as a forward proxy that lets in only bob, whose password is "secret".
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Daemon.h"
#include "TempFolder.h"

namespace Morvenn::Net::MvServerProxy::Integration {

constexpr char kUser[] = "bob";
constexpr char kPassword[] = "secret";
constexpr char kBasicRealm[] = "corp";
constexpr char kDigestRealm[] = "test digest";

class Squid {
public:
    enum class Offers { Basic, Digest, Both, Ntlm };  // Ntlm: whatever the password
    enum class Door { Http, Https };

    // `nonceUses`: how often a Digest nonce may be used before it is stale.
    explicit Squid(Offers offers, Door door = Door::Http, int nonceUses = 50);

    int port() const { return m_port; }
    std::string authority() const { return "127.0.0.1:" + std::to_string(m_port); }
    // For a *_proxy variable; `userInfo` with its "@".
    std::string url(const std::string& userInfo = "") const {
        return (m_door == Door::Http ? "http://" : "https://") + userInfo + authority();
    }
    // The certificate to be trusted for https, as text; empty when http is spoken.
    std::string authorityText() const { return m_folder.read("ca.pem"); }

    // What came, one line for each request: "STATUS METHOD URL CREDENTIALS", the credentials as
    // they were sent ("-" for none) with blanks as %20. Waits until there are `count` lines.
    std::vector<std::string> seen(std::size_t count) const;

private:
    std::unique_ptr<Daemon> start(Offers offers, int nonceUses);

    std::string doorLine() const;

    const Door m_door;
    TempFolder m_folder;
    int m_port = 0;
    std::unique_ptr<Daemon> m_daemon;
};

}  // namespace Morvenn::Net::MvServerProxy::Integration
