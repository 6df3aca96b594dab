#include "EchoHandler.h"

namespace Morvenn::Net::MvServerProxy::Hub {

EchoHandler::EchoHandler(const Request& request)
    : m_contentType(request.headerText("Content-Type")), m_spool(std::make_unique<Spool>()) {}

void EchoHandler::take(const char* bytes, std::size_t count) {
    m_spool->write(bytes, count);
}

Answer EchoHandler::finish() {
    Answer answer;
    answer.headers.emplace_back("Content-Type",
                                m_contentType.empty() ? "application/octet-stream" : m_contentType);
    answer.body = std::move(m_spool);
    return answer;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
