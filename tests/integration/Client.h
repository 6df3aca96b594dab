// The client library as an application uses it, with what came of it written down.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "morvenn/net/mvserverproxy/client/Credentials.h"

namespace Morvenn::Net::MvServerProxy::Integration {

// The proxy library started with these variables and no others of its own or of the *_proxy family;
// stopped in the destructor, which also makes it forget credentials.
class StartedLibrary {
public:
    explicit StartedLibrary(const std::map<std::string, std::string>& variables);
    ~StartedLibrary();
    StartedLibrary(const StartedLibrary&) = delete;
    StartedLibrary& operator=(const StartedLibrary&) = delete;
};

// Gives the passwords in turn, the last one again and again, and writes down who asked.
class RecordingProvider : public Client::CredentialProvider {
public:
    explicit RecordingProvider(std::vector<std::string> passwords);
    const Client::Credential* getCredential(Client::AuthScope* scope) const override;

    // "HOST PORT REALM" of each call.
    const std::vector<std::string>& scopes() const { return m_scopes; }

private:
    std::vector<Client::Credential> m_credentials;
    mutable std::vector<std::string> m_scopes;
};

enum class Form { Stream, Text };

struct Request {
    std::string url;
    std::string body;
    Form form = Form::Stream;
    const RecordingProvider* provider = nullptr;
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::istream* stream = nullptr;  // in place of `body`
};

struct Outcome {
    std::string failure;  // the class of the exception; empty on success
    std::string message;  // its message
    std::string code;     // of the response
    std::string body;
};
Outcome exchange(const Request& request);

// A text of `size` bytes that differs from place to place and holds no zero byte.
std::string pattern(std::size_t size);

}  // namespace Morvenn::Net::MvServerProxy::Integration
