#include "SessionHandler.h"

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

class SessionHandler : public Handler {
public:
    SessionHandler(HandlerPtr service, const Request& request, SessionStore& sessions)
        : m_service(std::move(service)),
          m_sessionId(request.headerText("SessionID")),
          m_gzip(acceptsGzip(request)),
          m_sessions(sessions) {}

    void take(const char* bytes, std::size_t count) override { m_service->take(bytes, count); }

    Answer finish() override {
        Answer answer = m_service->finish();
        const Session session = m_sessions.visit(m_sessionId);
        answer.headers.emplace_back("ResponseSessionID", session.id);
        answer.headers.emplace_back("Session-Request-Count", std::to_string(session.requests));
        if (m_gzip) {
            compress(answer);
        }
        return answer;
    }

private:
    const HandlerPtr m_service;
    const std::string m_sessionId;
    const bool m_gzip;
    SessionStore& m_sessions;
};

}  // namespace

HandlerPtr inSession(HandlerPtr service, const Request& request, SessionStore& sessions) {
    return std::make_unique<SessionHandler>(std::move(service), request, sessions);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
