#include "DocumentHandler.h"

#include "Limits.h"
#include "Refusal.h"

namespace Morvenn::Net::MvServerProxy::Hub {

DocumentHandler::DocumentHandler(Work work) : m_work(std::move(work)) {}

void DocumentHandler::take(const char* bytes, std::size_t count) {
    if (count > kDocumentLimit - m_body.size()) {
        m_body = std::string();
        throw Refusal(413, "this service takes documents of at most " +
                               std::to_string(kDocumentLimit) + " bytes");
    }
    m_body.append(bytes, count);
}

Answer DocumentHandler::finish() {
    return m_work(m_body);
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
