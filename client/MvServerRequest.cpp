// The request object: what is set on it, what it answers, how it is copied.
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

#include <cstring>
#include <utility>

#include "client/HeaderText.h"
#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"

namespace Morvenn::Net::MvServerProxy::Client {

using Logger = Util::MvServerCppBindingLogger;

MvServerRequest::MvServerRequest(MSPSession* session)  // NOLINT(*-member-init)
    : m_credentialProvider(nullptr),
      m_session(session),
      m_responseStream(new ResponseStream),
      m_requestStream(nullptr),
      m_used(false) {}

MvServerRequest::MvServerRequest(MvServerRequest& other)  // NOLINT(*-member-init)
    : m_credentialProvider(other.m_credentialProvider),
      m_session(other.m_session),
      m_responseStream(std::move(other.m_responseStream)),
      m_requestStream(other.m_requestStream),
      m_headers(other.m_headers),
      m_body(other.m_body),
      m_responseHeaders(other.m_responseHeaders),
      m_used(other.m_used) {
    std::memcpy(m_instructionBuffer, other.m_instructionBuffer, sizeof m_instructionBuffer);
}

MvServerRequest& MvServerRequest::operator=(MvServerRequest& other) {
    if (this == &other) {
        return *this;
    }
    m_responseStream.reset();  // ends this request's exchange before it takes the other's
    m_responseStream = std::move(other.m_responseStream);
    m_credentialProvider = other.m_credentialProvider;
    m_session = other.m_session;
    std::memcpy(m_instructionBuffer, other.m_instructionBuffer, sizeof m_instructionBuffer);
    m_requestStream = other.m_requestStream;
    m_headers = other.m_headers;
    m_body = other.m_body;
    m_responseHeaders = other.m_responseHeaders;
    m_used = other.m_used;
    return *this;
}

MvServerRequest::~MvServerRequest() {
    try {
        if (Logger::isDebug()) {
            Logger::debug("MvServerRequest::~MvServerRequest()");
        }
    } catch (...) {  // NOLINT(bugprone-empty-catch): a line that cannot be logged is lost
    }
}

void MvServerRequest::setHeader(std::string name, std::string value) {
    m_headers.emplace(std::move(name), std::move(value));
}

void MvServerRequest::setBody(std::istream* stream) {
    m_requestStream = stream;
}

void MvServerRequest::setBody(const char* text) {
    m_body = text;
}

void MvServerRequest::setCredentialProvider(const CredentialProvider* provider) {
    m_credentialProvider = provider;
}

const CredentialProvider* MvServerRequest::getCredentialProvider() const {
    return m_credentialProvider;
}

std::string MvServerRequest::getResponseCode() {
    return m_responseHeaders[HeaderKeys::kResponseCode];
}

std::string MvServerRequest::getResponseText() {
    return m_responseHeaders[HeaderKeys::kResponseText];
}

std::string MvServerRequest::getContentType() {
    return m_responseHeaders[HeaderKeys::kResponseContentType];
}

std::string MvServerRequest::formatHeaders() {
    return Internal::formatHeaders(m_headers);
}

void MvServerRequest::parseHeader(std::string_view line) {
    const Internal::HeaderLine header = Internal::parseHeaderLine(line);
    const auto [entry, isNew] = m_responseHeaders.emplace(header.key, header.value);
    if (!isNew) {
        entry->second = header.value;
    }
}

ResponseStream& MvServerRequest::exchange() {
    if (m_responseStream == nullptr) {
        Internal::throwLocal(
            Internal::kLocalFailure,
            "This MvServerRequest has no exchange any more: it was handed over to a "
            "response or to a copy. Use a new MvServerRequest.");
    }
    return *m_responseStream;
}

}  // namespace Morvenn::Net::MvServerProxy::Client
