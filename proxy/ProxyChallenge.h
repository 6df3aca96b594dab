// What passes between a forward proxy that demands credentials and the application that has them.
//
//   from the proxy       Proxy-Authenticate values, each one or more schemes with parameters
//   to the application   "host:" H LF "port:" P LF "realm:" R LF
//   from the application "user:" U CRLF "password:" P CRLF "domain:" D CRLF CRLF
#ifndef MORVENN_PROXY_PROXYCHALLENGE_H
#define MORVENN_PROXY_PROXYCHALLENGE_H

#include <string>
#include <string_view>
#include <vector>

#include "ForwardProxy.h"
#include "Secret.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

// Unknown: credentials are there, but the proxy has not said yet how it wants them.
enum class AuthScheme { Unknown, Basic, Digest, Ntlm };
const char* nameOf(AuthScheme scheme);

struct ProxyOffer {
    AuthScheme scheme = AuthScheme::Unknown;  // the strongest that can be used; Unknown: none can
    std::string realm;                        // of that scheme
    std::string offered;                      // all scheme names, as they came, for texts
};

// Digest is preferred to Basic; NTLM is taken when neither is offered and `ntlm` says that it can
// be.
ProxyOffer strongestOffer(const std::vector<std::string>& challenges, bool ntlm);

// The text for the application. Its reader cuts a value at ":", so that one travels as "%3A"; line
// breaks become blanks and a value longer than 1 KiB is cut.
std::string challengeText(const ForwardProxy& proxy, const std::string& realm);

struct Credentials {
    Secret user;
    Secret password;
    bool given = false;
};

// True when the text is an answer to a challenge rather than the beginning of another exchange.
bool isAnswer(std::string_view text);

// A domain that is not empty goes before the user's name, as DOMAIN\user. Throws Failure (-1002).
Credentials readAnswer(std::string_view text);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
