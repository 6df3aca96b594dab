// From the first byte of the response to the stream or string that the application gets.
#include "client/HeaderText.h"
#include "client/ProxyErrors.h"
#include "client/ResultBuffer.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/TextConversion.h"

namespace Morvenn::Net::MvServerProxy::Client {

using Logger = Util::MvServerCppBindingLogger;

std::istream* MvServerRequest::openResponse() {
    if (Logger::isInfo()) {
        Logger::info("Now receiving the response");
    }
    Internal::HeaderReader reader(exchange());
    for (std::string_view line; reader.next(line);) {
        parseHeader(line);
    }
    // By design: a response without the key empties the session's id.
    // (Session.ResponseWithoutTheKeyEmptiesTheId)
    const std::string_view id =
        Internal::valueOf(m_responseHeaders, HeaderKeys::kResponseSessionId);
    m_session->setSessionId(Util::Internal::fromUtf8(id.data(), static_cast<int>(id.size())));

    const bool compressed =
        Internal::valueOf(m_responseHeaders, HeaderKeys::kResponseCompression) == "true";
    auto buffer = std::make_unique<MSPBufferBase<char>>(std::move(m_responseStream), compressed);
    auto stream = std::make_unique<MSPStream>(buffer.get());
    static_cast<void>(buffer.release());  // the stream's now
    m_used = true;
    return stream.release();
}

std::string MvServerRequest::execute() {
    std::unique_ptr<std::istream> stream(send());
    stream->exceptions(std::ios::badbit);
    Internal::ResultBuffer result;
    while (stream->peek() != std::istream::traits_type::eof()) {
        result.append(*stream->rdbuf());
    }
    if (!stream->eof()) {
        Internal::throwLocal(Internal::kLocalFailure,
                             stream->fail()
                                 ? "Failure occurred while reading from MSP stream"
                                 : "Unexpected condition: no bytes read, no eof and no failure");
    }
    // By design: no blank stands before "bytes". (Execute.ResponsesOfEverySizeArriveWhole)
    if (Logger::isDebug()) {
        Logger::debug("Received the response. The size is :-" + std::to_string(result.length()) +
                      "bytes");
    }
    return result.text();
}

}  // namespace Morvenn::Net::MvServerProxy::Client
