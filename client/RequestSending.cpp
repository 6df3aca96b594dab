// From send() to the point where the response begins.
#include "client/HeaderText.h"
#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/Text.h"
#include "util/TextConversion.h"

namespace Morvenn::Net::MvServerProxy::Client {

using Internal::checked;
using Internal::checkedText;
using Logger = Util::MvServerCppBindingLogger;
using Util::Internal::toText;
using Util::Internal::toUtf8;

namespace {

constexpr int kChunkSize = 4096;
constexpr char kNone[] = "null";

}  // namespace

std::istream* MvServerRequest::send() {
    if (!s_initialized.load(std::memory_order_relaxed)) {
        init();
    }
    if (m_used) {
        Internal::throwLocal(
            Internal::kLocalFailure,
            "Attempted reuse of MvServerRequest instance with more than one server "
            "requests.");
    }
    exchange();
    checkValidity();
    addSessionHeader();
    if (m_body.empty()) {
        sendStreamBody();
    } else {
        sendTextBody();
    }
    return openResponse();
}

void MvServerRequest::checkValidity() const {
    for (const char* name : {HeaderKeys::kEnvName, HeaderKeys::kServerUrl,
                             HeaderKeys::kBaseServerUrl, HeaderKeys::kBaseFullUrl}) {
        const std::string_view value = Internal::valueOf(m_headers, name);
        if (!value.empty() && value != kNone) {
            return;
        }
    }
    // By design: only the literal "null" marks a request as not for signing; an absent or empty
    // value lets it pass. (Validity.OnlyTheLiteralNullIsRefused)
    if (Internal::valueOf(m_headers, HeaderKeys::kGeneratePkcs7Signatures) == kNone) {
        throw MSPProtocolException(
            "Not a signature generation request, and both the environment name and server URL "
            "supplied are empty.");
    }
}

// By design: an id that the application set stays, since the first value set for a name does.
// (Session.IdSetByTheApplicationOutlivesTheSessions)
void MvServerRequest::addSessionHeader() {
    if (m_session == nullptr) {
        Internal::throwLocal(Internal::kLocalFailure,
                             "This MvServerRequest was created without an MSPSession.");
    }
    const std::string id = m_session->getSessionId();
    if (!id.empty()) {
        setHeader(HeaderKeys::kSessionId, id);
    }
}

// By design: this text is not converted to UTF-8, unlike the headers of a stream body.
// (TextBody.HeadersAndBodyGoOutUnconvertedInOneText)
void MvServerRequest::sendTextBody() {
    const std::string text = Internal::formatHeaders(m_headers, m_body);
    checked(MvServerProxy_Send(checkedText(text.c_str())));
    checked(MvServerProxy_SendEOF());
}

// By design: the line in the log and the message of the exception differ.
// (Validity.RequestWithoutABodyIsRefused)
void MvServerRequest::sendStreamBody() {
    if (m_requestStream == nullptr) {
        if (Logger::isError()) {
            Logger::error(
                "Either the requestStream or the requestBody must be set on a MvServerRequest.");
        }
        throw MSPProtocolException("Unsupported request type found.");
    }
    submitRequestHeader();
    checked(followInstructions(checked(waitForMspInstruction())));
}

void MvServerRequest::submitRequestHeader() {
    std::string text;
    try {
        text = toUtf8(formatHeaders());
    } catch (const Utf8ConversionException& e) {
        Internal::throwLocal(
            Internal::kLocalFailure,
            "Exception occurred while converting to UTF-8 bytes." + e.getMessage());
    }
    if (Logger::isDebug()) {
        Logger::debug("Encoded Headers");
        Logger::debug(text);
    }
    checked(MvServerProxy_SendNoAck(checkedText(text.c_str())));
    checked(MvServerProxy_SendEOF());
}

// By design: a 16 that answers a challenge is acted on in the same pass. Any other positive code
// asks nothing of the proxy: the loop keeps testing it, and the reads are volatile so that the wait
// is real in every build. (StreamBody.ChallengeAnsweredWith16SendsBodyInSamePass,
// Spin.UnknownInstructionIsWaitedOnWithoutACall)
int MvServerRequest::followInstructions(int first) {
    volatile int code = first;
    while (code != MV_INSTRUCTION_RESPONSE_READY && code > 0) {
        if (code == MV_INSTRUCTION_CREDENTIAL_CHALLENGE) {
            code = processCredentialRequest();
        }
        if (code == MV_INSTRUCTION_SEND_BODY) {
            code = sendBody();
        }
    }
    return code;
}

int MvServerRequest::sendBody() {
    if (m_requestStream == nullptr) {
        Internal::throwLocal(Internal::kLocalFailure,
                             "MvServerRequest::sendBody: no body stream is set.");
    }
    char chunk[kChunkSize + 1];
    int result = 0;
    std::streamsize size = 0;
    do {
        m_requestStream->read(chunk, kChunkSize);
        size = m_requestStream->gcount();
        if (size > 0) {
            chunk[size] = '\0';
            if (Logger::isDebug()) {
                Logger::debug("Sending a part of Request Body Now");
                Logger::debug("The size of which is :- " + toText(static_cast<int>(size)) +
                              " bytes");
            }
            result = MvServerProxy_SendNoAck(chunk);
        }
        // By design: unlike elsewhere 0 is not success here: the proxy wants no more of the body.
        // (StreamBody.ResultZeroForAChunkEndsTheBodyAndTheExchangeGoesOn)
    } while (!m_requestStream->eof() && size > 0 && result > 0);
    checked(result);
    checked(MvServerProxy_SendEOF());
    const int code = waitForMspInstruction();
    if (Logger::isInfo()) {
        Logger::info("Completed sending the request body!\n");
    }
    return code;
}

int MvServerRequest::waitForMspInstruction() {
    return exchange().read(m_instructionBuffer);
}

int MvServerRequest::sendCompleteRequest(const char* text) {
    checked(MvServerProxy_Send(checkedText(text)));
    return checked(MvServerProxy_SendEOF());
}

void MvServerRequest::shutdownServer() {
    addSessionHeader();
    const std::string text =
        toUtf8(HeaderKeys::kShutdownServer + std::string(Internal::kLineEnd) + formatHeaders());
    // Result unused by design: only the end marker decides whether the text was taken.
    // (Shutdown.ResultOfTheTextIsIgnored)
    static_cast<void>(MvServerProxy_SendNoAck(text.c_str()));
    checked(MvServerProxy_SendEOF());
    static_cast<void>(MvServerProxy_Complete());
}

}  // namespace Morvenn::Net::MvServerProxy::Client
