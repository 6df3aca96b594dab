// An exchange from the library's building blocks: sendCompleteRequest() or submitRequestHeader()
// and sendBody() to send, ResponseStream and MSPStream to receive.

#include "Exchange.h"

#include "Failure.h"

#include <morvenn/net/mvserverproxy/proxy/MvServerProxy.h>

namespace Morvenn::Net::MvServerProxy::Tools {

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

using Headers = std::map<std::string, std::string>;

constexpr std::size_t kLongestHeaderBlock = 1 << 20;

std::string headerText(const Headers& headers) {
    std::string text;
    for (const auto& [name, value] : headers) {
        text.append(name).append("=").append(value).append("\r\n");
    }
    return text + "\r\n";
}

void sendText(MvServerRequest& request, const Headers& headers, Body& body, Progress& progress) {
    const std::string text = headerText(headers) + body.whole(progress);
    request.sendCompleteRequest(text.c_str());
}

void follow(int instruction) {
    if (instruction < 0) {
        MvServerRequest::throwMvServerCppBindingException(instruction);
    }
    if (instruction == MV_INSTRUCTION_CREDENTIAL_CHALLENGE) {
        throw Failure(ExitCode::Credentials,
                      "a forward proxy asks for credentials, which --session FILE cannot answer",
                      "put the credentials into the forward proxy's URL, or send several bodies in "
                      "one call: they share a session");
    }
}

void sendStream(MvServerRequest& request, const Headers& headers, Body& body, Progress& progress) {
    const std::unique_ptr<std::streambuf> source = body.stream(progress);
    std::istream stream(source.get());
    stream.exceptions(std::ios::badbit);
    for (const auto& [name, value] : headers) {
        request.setHeader(name, value);
    }
    request.setBody(&stream);
    request.submitRequestHeader();
    int instruction = request.waitForMspInstruction();
    follow(instruction);
    if (instruction == MV_INSTRUCTION_SEND_BODY) {
        instruction = request.sendBody();
        follow(instruction);
    }
}

std::string trimmed(const std::string& text) {
    constexpr char kWhite[] = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kWhite);
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

std::string readLine(ResponseStream& stream, std::size_t& room) {
    std::string line;
    for (int byte = stream.read(); byte != '\n'; byte = stream.read()) {
        if (byte == MV_STATUS_END_OF_RESPONSE || room-- == 0) {
            throw Failure(ExitCode::Protocol, "the response's headers do not end");
        }
        if (byte < 0) {
            MvServerRequest::throwMvServerCppBindingException(byte);
        }
        line += static_cast<char>(byte);
    }
    return line;
}

Headers readHeaders(ResponseStream& stream) {
    Headers headers;
    std::size_t room = kLongestHeaderBlock;
    for (std::string line = readLine(stream, room); !trimmed(line).empty();
         line = readLine(stream, room)) {
        const std::size_t equals = line.find('=');
        const std::string value = equals == std::string::npos ? "" : line.substr(equals + 1);
        headers[trimmed(line.substr(0, equals))] = trimmed(value);
    }
    return headers;
}

}  // namespace

Response openResponse(std::string& sessionId, const Plan& plan, Body& body, Progress& progress) {
    Headers headers = plan.headers;
    if (!sessionId.empty()) {
        headers[HeaderKeys::kSessionId] = sessionId;
    }
    MSPSession unused;
    MvServerRequest::init();
    Response response;
    response.request = std::make_unique<MvServerRequest>(&unused);
    (plan.asText ? sendText : sendStream)(*response.request, headers, body, progress);

    auto stream = std::make_unique<ResponseStream>();
    Headers received = readHeaders(*stream);
    sessionId = received[HeaderKeys::kResponseSessionId];
    response.code = received[HeaderKeys::kResponseCode];
    response.text = received[HeaderKeys::kResponseText];
    response.contentType = received[HeaderKeys::kResponseContentType];
    const bool compressed = received[HeaderKeys::kResponseCompression] == "true";
    response.body =
        std::make_unique<MSPStream>(new MSPBufferBase<char>(std::move(stream), compressed));
    return response;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
