#include "Exchange.h"

#include "Failure.h"

namespace Morvenn::Net::MvServerProxy::Tools {

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

// A stream over the body whose failures reach the caller of send() as what they are.
class BodyStream : public std::istream {
public:
    BodyStream(Body& body, Progress& progress)
        : std::istream(nullptr), m_source(body.stream(progress)) {
        rdbuf(m_source.get());
        exceptions(std::ios::badbit);
    }
    ~BodyStream() override { exceptions(std::ios::goodbit); }

private:
    std::unique_ptr<std::streambuf> m_source;
};

std::string wholeText(Body& body, Progress& progress) {
    std::string text = body.whole(progress);
    if (text.empty()) {
        throw Failure(ExitCode::Usage, "an empty body cannot be sent with --text",
                      "leave --text out");
    }
    return text;
}

}  // namespace

Response openResponse(MSPSession& session, const CredentialProvider& credentials, const Plan& plan,
                      Body& body, Progress& progress) {
    Response response;
    response.request = std::make_unique<MvServerRequest>(&session);
    MvServerRequest& request = *response.request;
    for (const auto& [name, value] : plan.headers) {
        request.setHeader(name, value);
    }
    request.setCredentialProvider(&credentials);
    BodyStream stream(body, progress);
    if (plan.asText) {
        request.setBody(wholeText(body, progress).c_str());
    } else {
        request.setBody(&stream);
    }
    response.body.reset(request.send());
    response.code = request.getResponseCode();
    response.text = request.getResponseText();
    response.contentType = request.getContentType();
    return response;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
