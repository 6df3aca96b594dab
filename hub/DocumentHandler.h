// A handler for work that needs the request body in one piece.
#pragma once

#include "Handler.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class DocumentHandler : public Handler {
public:
    // Receives the whole body; may throw Refusal.
    using Work = std::function<Answer(const std::string& body)>;

    explicit DocumentHandler(Work work);

    // Refuses with 413 beyond kDocumentLimit.
    void take(const char* bytes, std::size_t count) override;
    Answer finish() override;

private:
    const Work m_work;
    std::string m_body;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
