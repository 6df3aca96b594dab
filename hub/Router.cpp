#include "Router.h"

#include "EchoHandler.h"
#include "Refusal.h"
#include "SessionHandler.h"

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

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

Router::Router(std::function<void()> shutDown) : m_shutDown(std::move(shutDown)) {}

HandlerPtr Router::route(const Request& request) {
    struct Path {
        const char* path;
        const char* method;
        HandlerPtr (Router::*handler)(const Request&);
    };
    static constexpr Path kPaths[] = {
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

HandlerPtr Router::echo(const Request& request) {
    return inSession(std::make_unique<EchoHandler>(request), request, m_sessions);
}

HandlerPtr Router::shutdown(const Request&) {
    Answer answer = textAnswer(200, "mvhub is shutting down\n");
    answer.afterwards = m_shutDown;
    return std::make_unique<FixedHandler>(std::move(answer));
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
