#include <Poco/InflatingStream.h>
#include <Poco/Net/Context.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPSClientSession.h>
#include <Poco/URI.h>

#include <algorithm>
#include <stdexcept>

#include "http/Client.h"

namespace Morvenn::Bench {

namespace {

namespace Net = Poco::Net;

std::unique_ptr<Net::HTTPClientSession> connect(const Poco::URI& uri) {
    if (uri.getScheme() == "https") {
        const Net::Context::Ptr context(new Net::Context(
            Net::Context::TLS_CLIENT_USE, authorityFile(), Net::Context::VERIFY_STRICT));
        return std::make_unique<Net::HTTPSClientSession>(uri.getHost(), uri.getPort(), context);
    }
    return std::make_unique<Net::HTTPClientSession>(uri.getHost(), uri.getPort());
}

void sendBody(std::ostream& out, std::uint64_t size) {
    char block[16384];
    fillBody(block, sizeof block);
    while (size > 0) {
        const std::uint64_t piece = std::min<std::uint64_t>(size, sizeof block);
        out.write(block, static_cast<std::streamsize>(piece));
        size -= piece;
    }
}

class PocoClient : public HttpClient {
public:
    std::uint64_t post(const Job& job) override {
        const Poco::URI uri(job.url);
        if (m_session == nullptr) {
            m_session = connect(uri);
            m_session->setKeepAlive(true);
        }
        Net::HTTPRequest request(Net::HTTPRequest::HTTP_POST, uri.getPathAndQuery(),
                                 Net::HTTPMessage::HTTP_1_1);
        request.setContentType("text/plain");
        if (job.bodySize <= kTextLimit) {
            request.setContentLength64(static_cast<Poco::Int64>(job.bodySize));
        } else {
            request.setChunkedTransferEncoding(true);
        }
        if (job.compressed) {
            request.set("Accept-Encoding", "gzip");
        }
        sendBody(m_session->sendRequest(request), job.bodySize);
        Net::HTTPResponse response;
        std::istream& answer = m_session->receiveResponse(response);
        if (response.getStatus() != Net::HTTPResponse::HTTP_OK) {
            throw std::runtime_error("the server answered " + response.getReason());
        }
        if (!job.compressed) {
            return drain(answer);
        }
        Poco::InflatingInputStream inflated(answer, Poco::InflatingStreamBuf::STREAM_GZIP);
        return drain(inflated);
    }

private:
    std::unique_ptr<Net::HTTPClientSession> m_session;
};

}  // namespace

std::unique_ptr<HttpClient> makePocoClient() {
    return std::make_unique<PocoClient>();
}

}  // namespace Morvenn::Bench
