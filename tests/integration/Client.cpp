#include "Client.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "Squid.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

constexpr const char* kVariables[] = {
    "MV_SERVERPROXY_HUB",
    "MV_SERVERPROXY_CA_FILE",
    "MV_SERVERPROXY_TRACE",
    "MV_SERVERPROXY_CONNECT_TIMEOUT_MS",
    "MV_SERVERPROXY_IDLE_TIMEOUT_MS",
    "MV_SERVERPROXY_TOTAL_TIMEOUT_MS",
    "MV_SERVERPROXY_EXPECT_TIMEOUT_MS",
    "MV_SERVERPROXY_SPOOL_LIMIT",
    "MV_SERVERPROXY_HEADER_LIMIT",
    "http_proxy",
    "https_proxy",
    "HTTPS_PROXY",
    "all_proxy",
    "ALL_PROXY",
    "no_proxy",
    "NO_PROXY",
};

void setBody(Client::MvServerRequest& sent, const Request& request, std::istream& body) {
    if (request.form == Form::Text) {
        sent.setBody(request.body.c_str());
    } else {
        sent.setBody(request.stream != nullptr ? request.stream : &body);
    }
}

}  // namespace

StartedLibrary::StartedLibrary(const std::map<std::string, std::string>& variables) {
    for (const char* name : kVariables) {
        ::unsetenv(name);
    }
    for (const auto& [name, value] : variables) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    Client::MvServerRequest::init();
}

StartedLibrary::~StartedLibrary() {
    Client::MvServerRequest::term();
}

RecordingProvider::RecordingProvider(std::vector<std::string> passwords) {
    for (const std::string& password : passwords) {
        m_credentials.emplace_back(kUser, password);
    }
}

const Client::Credential* RecordingProvider::getCredential(Client::AuthScope* scope) const {
    m_scopes.push_back(scope->getHost() + " " + scope->getPort() + " " + scope->getRealm());
    return &m_credentials[std::min(m_scopes.size(), m_credentials.size()) - 1];
}

Outcome exchange(const Request& request) {
    Client::MSPSession session;
    Client::MvServerRequest sent(&session);
    sent.setHeader(Client::HeaderKeys::kServerUrl, request.url);
    for (const auto& [name, value] : request.headers) {
        sent.setHeader(name, value);
    }
    sent.setCredentialProvider(request.provider);
    std::istringstream body(request.body);
    setBody(sent, request, body);
    Outcome outcome;
    try {
        outcome.body = sent.execute();
        outcome.code = sent.getResponseCode();
    } catch (const Client::MSPConnectionException& failure) {
        outcome.failure = "MSPConnectionException";
        outcome.message = failure.getMessage();
    } catch (const Client::MSPException& failure) {
        outcome.failure = "another class";
        outcome.message = failure.getMessage();
    }
    return outcome;
}

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    unsigned state = 12345;
    for (char& c : text) {
        state = state * 1103515245U + 12345U;
        c = static_cast<char>('0' + (state >> 16U) % 75U);
    }
    return text;
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
