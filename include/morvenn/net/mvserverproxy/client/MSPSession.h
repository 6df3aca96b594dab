/**
 * @file
 * The session identity that goes from one request to the next.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_MSPSESSION_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_MSPSESSION_H

#include <string>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Client {

class MvServerRequest;

/**
 * Carries the server's session id. Create one and pass its address to every request of the session;
 * it must outlive them. Each send puts the id into the request's headers and stores the one that
 * the server returns.
 *
 * By design: a response without "ResponseSessionID" empties the id, so that the next request goes
 * out without "SessionID". (Session.ResponseWithoutTheKeyEmptiesTheId)
 *
 * By design: the application can neither read nor set the id here; to use an id of its own it sets
 * the header "SessionID" on the request. (Session.IdSetByTheApplicationOutlivesTheSessions)
 *
 * Thread rule: a plain value; the requests of one session run on one thread at a time.
 */
class MVCPP_API MSPSession {
public:
    /** A session that has no id yet. */
    MSPSession();
    /** A copy has its own id from here on. @{ */
    MSPSession(const MSPSession& other);
    MSPSession& operator=(const MSPSession& other);
    /** @} */
    ~MSPSession();

private:
    friend class MvServerRequest;

    MVCPP_LOCAL void setSessionId(std::string id);
    MVCPP_LOCAL std::string getSessionId() const;

    std::string m_sessionId;
};

}  // namespace Morvenn::Net::MvServerProxy::Client

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_MSPSESSION_H
