#include "Router.h"

#include "DocumentHandler.h"
#include "EchoHandler.h"
#include "Refusal.h"
#include "Services.h"
#include "SessionHandler.h"
#include "SigningRecord.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

// A header that names nothing: absent, without value, or the word that stands for it.
bool namesNothing(const std::string& value) {
    return value.empty() || value == "null";
}

// Drops the body and gives an answer that was made beforehand.
class FixedHandler : public Handler {
public:
    explicit FixedHandler(Answer answer) : m_answer(std::move(answer)) {}

    void take(const char*, std::size_t) override {}
    Answer finish() override { return std::move(m_answer); }

private:
    Answer m_answer;
};

}  // namespace

Router::Router(DirectoryStore& directory, KeyStore& keys, std::function<void()> shutDown)
    : m_directory(directory), m_keys(keys), m_shutDown(std::move(shutDown)) {}

HandlerPtr Router::route(const Request& request) {
    struct Path {
        const char* path;
        const char* method;
        HandlerPtr (Router::*handler)(const Request&);
    };
    static constexpr Path kPaths[] = {
        {"/environments", "GET", &Router::environments},
        {"/request", "POST", &Router::service},
        {"/echo", "POST", &Router::echo},
        {"/shutdown", "POST", &Router::shutdown},
    };
    for (const Path& known : kPaths) {
        if (request.path != known.path) {
            continue;
        }
        if (request.method != known.method) {
            throw Refusal(405, std::string(known.path) + " takes " + known.method + " only");
        }
        return (this->*known.handler)(request);
    }
    throw Refusal(404, "no such path; the hub knows /environments, /request, /echo and /shutdown");
}

HandlerPtr Router::environments(const Request& request) {
    const auto selector = request.query.find("select");
    if (selector == request.query.end() || selector->second.empty()) {
        throw Refusal(400,
                      "say which environments: ?select=All, a version, or mapURLtoEnv:: and a URL");
    }
    const Directory selected = selectEnvironments(*m_directory.current(), selector->second);
    return std::make_unique<FixedHandler>(textAnswer(200, directoryText(selected)));
}

HandlerPtr Router::service(const Request& request) {
    checkEnvironment(request);
    const std::string* signing = request.header("generatePKCS7Signatures");
    const bool signs = signing != nullptr && *signing != "null";
    return inSession(signs ? makeSigning() : makeService(request), request, m_sessions);
}

HandlerPtr Router::echo(const Request& request) {
    return inSession(std::make_unique<EchoHandler>(request), request, m_sessions);
}

HandlerPtr Router::shutdown(const Request&) {
    if (!m_shutDown) {
        throw Refusal(403, "a hub that other machines can reach is stopped with SIGTERM only");
    }
    Answer answer = textAnswer(200, "mvhub is shutting down\n");
    answer.afterwards = m_shutDown;
    return std::make_unique<FixedHandler>(std::move(answer));
}

// Only a directory that the user wrote tells which environments there are.
void Router::checkEnvironment(const Request& request) const {
    const std::string name = request.headerText("Env-Name");
    if (namesNothing(name) || !m_directory.hasFile()) {
        return;
    }
    const auto directory = m_directory.current();
    if (std::none_of(directory->begin(), directory->end(),
                     [&name](const DirectoryEnvironment& known) { return known.name == name; })) {
        throw Refusal(404, "no environment \"" + name + "\" in the directory");
    }
}

HandlerPtr Router::makeSigning() {
    return std::make_unique<DocumentHandler>([this](const std::string& body) {
        std::vector<std::string> signatures;
        for (const std::string& item : decodeSigningRequest(body)) {
            signatures.push_back(signer().sign(item));
        }
        return textAnswer(200, encodeSigningAnswer(signatures), "text/plain");
    });
}

const Signer& Router::signer() {
    const std::lock_guard lock(m_signerMutex);
    if (!m_signer) {
        const KeyPair& pair = m_keys.pair();
        m_signer = std::make_unique<const Signer>(pair.key, pair.certificate);
    }
    return *m_signer;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
