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
// never released. (SimpleRequest.RetainsOneStringBufferForEveryByteOfTheBody)
std::stringbuf* keepBody(const char* body) {
    const std::size_t size = std::strlen(body) + 1;
    auto* buffers = new std::stringbuf[size];
    buffers->sputn(body, static_cast<std::streamsize>(size));
    return buffers;
}

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
    std::istream body(keepBody(requestBody));
    request.setBody(&body);
    try {
        handOver(request.execute(), response);
        return 0;
    } catch (const MSPException& e) {
        handOver(e.getMessage(), response);
        return -1;
    }
}
