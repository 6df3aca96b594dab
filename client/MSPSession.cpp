#include "morvenn/net/mvserverproxy/client/MSPSession.h"

#include <utility>

namespace Morvenn::Net::MvServerProxy::Client {

MSPSession::MSPSession() = default;
MSPSession::MSPSession(const MSPSession&) = default;
MSPSession& MSPSession::operator=(const MSPSession&) = default;
MSPSession::~MSPSession() = default;

void MSPSession::setSessionId(std::string id) {
    m_sessionId = std::move(id);
}

std::string MSPSession::getSessionId() const {
    return m_sessionId;
}

}  // namespace Morvenn::Net::MvServerProxy::Client
