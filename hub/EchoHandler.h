// Answers with the request's own body and "Content-Type".
//
// The body is kept whole before the answer begins, beyond a small part in a temporary file: a
// client that reads nothing before it has sent everything is served as well as one that does both
// at once.
#pragma once

#include "Handler.h"
#include "Spool.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class EchoHandler : public Handler {
public:
    explicit EchoHandler(const Request& request);

    void take(const char* bytes, std::size_t count) override;
    Answer finish() override;

private:
    const std::string m_contentType;
    std::unique_ptr<Spool> m_spool;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
