#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

#include <cstdlib>
#include <cstring>
#include <istream>
#include <sstream>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

namespace {

using namespace Morvenn::Net::MvServerProxy::Client;

// Up to the first zero byte, in memory of malloc; null when there is none.
char* mallocText(const std::string& text) {
    const std::size_t size = std::strlen(text.c_str()) + 1;
    void* copy = std::malloc(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text.c_str(), size));
}

void handOver(const std::string& text, char** response) {
    if (response != nullptr) {
        *response = mallocText(text);
    }
}

// The body with its terminating zero, to be read through a stream.
// By design: one string buffer for every byte is allocated and the first is used; the array is
// never released, the text is. (SimpleRequest.RetainsOneStringBufferForEveryByteOfTheBody)
class Body {
public:
    explicit Body(const char* text)
        : m_size(std::strlen(text) + 1), m_buffers(new std::stringbuf[m_size]) {
        m_buffers->sputn(text, static_cast<std::streamsize>(m_size));
    }
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    ~Body() { std::stringbuf().swap(*m_buffers); }

    std::stringbuf* buffer() const { return m_buffers; }

private:
    std::size_t m_size;
    std::stringbuf* m_buffers;
};

}  // namespace

int MvServerSimpleRequest(const char* baseFullUrl, const char* requestBody, const char* sessionId,
                          const char* appXml, const char* xmlRpc, char** response) {
    if (response != nullptr) {
        *response = nullptr;
    }
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kUseCompression, "true");
    request.setHeader(HeaderKeys::kUseCallback, "false");
    request.setHeader(HeaderKeys::kSessionId, sessionId);
    request.setHeader(HeaderKeys::kAppXml, appXml);
    request.setHeader(HeaderKeys::kXmlRpcText, xmlRpc);
    request.setHeader(HeaderKeys::kBaseFullUrl, baseFullUrl);
    const Body body(requestBody);
    std::istream stream(body.buffer());
    request.setBody(&stream);
    try {
        handOver(request.execute(), response);
        return 0;
    } catch (const MSPException& e) {
        handOver(e.getMessage(), response);
        return -1;
    }
}
