// A forward proxy's challenge, answered through the application.
#include "client/CredentialChallenge.h"
#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/TextConversion.h"

namespace Morvenn::Net::MvServerProxy::Client {

namespace {

using Logger = Util::MvServerCppBindingLogger;
using Util::Internal::SecretText;

constexpr char kNoProvider[] = "No credential Provider available";
constexpr char kInvalidChallenge[] = "Invalid response challenge recieved";
// The leading blank is part of the text.
constexpr char kNotSupplied[] = " Credentials Not supplied by credential Provider";

void logError(const char* text) {
    if (Logger::isError()) {
        Logger::error(text);
    }
}

AuthScope receiveChallenge(ResponseStream& stream) {
    // One byte more than a block, all zero: the byte after the challenge belongs to the parsed
    // text. By design: a last line without a line feed therefore ends in that byte.
    // (CredentialChallenge.LastLineWithoutLineFeedEndsInTheByteAfterTheChallenge)
    char challenge[MV_PROXY_BLOCK_SIZE + 1] = {};
    const int length = stream.read(challenge);
    if (length < 0) {
        logError(kInvalidChallenge);
        throw MSPProtocolException(kInvalidChallenge);
    }
    if (length > MV_PROXY_BLOCK_SIZE) {
        Internal::throwUnexpectedState(length, 0);
    }
    if (Logger::isDebug()) {
        Logger::debug("Credential Callback response");
        Logger::debug(challenge);
    }
    return Internal::parseChallenge({challenge, static_cast<std::size_t>(length) + 1});
}

// By design: a provider that gives null is treated like one that refuses, so the line is logged
// twice and the caller receives the MSPRuntimeException of a refusal.
// (CredentialChallenge.NullCredentialLogsTwiceAndFailsAsRuntimeException)
const Credential& askProvider(const CredentialProvider& provider, AuthScope& scope) {
    try {
        const Credential* credential = provider.getCredential(&scope);
        if (credential == nullptr) {
            logError(kNotSupplied);
            throw CredentialsUnavailableException(kNotSupplied);
        }
        return *credential;
    } catch (const CredentialsUnavailableException& e) {
        logError(kNotSupplied);
        throw MSPRuntimeException(e.getType(), e.getMessage());
    }
}

// The answer in UTF-8 with its terminating zero.
SecretText encodeAnswer(const SecretText& answer) {
    try {
        SecretText encoded = Util::Internal::toUtf8(answer);
        encoded.push_back('\0');
        return encoded;
    } catch (const Utf8ConversionException& e) {
        Internal::throwLocal(
            Internal::kLocalFailure,
            "Exception occurred while converting to UTF-8 bytes." + e.getMessage());
    }
}

}  // namespace

int MvServerRequest::processCredentialRequest() {
    if (Logger::isInfo()) {
        Logger::info("Credential challenge by Forward Proxy. Credential Call back invoked");
    }
    if (m_credentialProvider == nullptr) {
        logError(kNoProvider);
        throw MSPException(kNoProvider);
    }
    auto scope = std::make_unique<AuthScope>(receiveChallenge(exchange()));
    const SecretText answer = Internal::formatAnswer(askProvider(*m_credentialProvider, *scope));
    if (Logger::isDebug()) {
        Logger::debug("Credentials Provided. wont be logged due to security reasons");
    }
    scope.reset();
    const SecretText encoded = encodeAnswer(answer);
    Internal::checked(MvServerProxy_SendNoAck(Internal::checkedText(encoded.data())));
    return waitForMspInstruction();
}

}  // namespace Morvenn::Net::MvServerProxy::Client
