#include "client/ProxyErrors.h"

#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

namespace {

using Logger = Util::MvServerCppBindingLogger;
using Util::Internal::toText;

template <class ExceptionType>
[[noreturn]] void raise(const std::string& message) {
    throw ExceptionType(message);
}

struct StatusClass {
    int status;
    void (*raise)(const std::string& message);
};

constexpr StatusClass kStatusClasses[] = {
    {MV_STATUS_CONNECTION_LOST, raise<MSPConnectionException>},
    {MV_STATUS_RUNTIME, raise<MSPRuntimeException>},
    {MV_STATUS_PROTOCOL, raise<MSPProtocolException>},
    {MV_STATUS_CANNOT_CONNECT, raise<MSPConnectionException>},
};

void logError(const std::string& text) {
    if (Logger::isError()) {
        Logger::error(text);
    }
}

}  // namespace

void throwForStatus(int status) {
    if (Logger::isDebug()) {
        Logger::debug("MvServerRequest::throwMvServerCppBindingException()");
    }
    if (Logger::isError()) {
        Logger::error(" Exception caught. The error code is :-" + toText(status));
    }
    std::string message = lastProxyError();
    if (message.empty()) {
        message = "Received MSP exception with no message string.  The exception code is :" +
                  toText(status);
    }
    logError(message);
    for (const StatusClass& row : kStatusClasses) {
        if (row.status == status) {
            row.raise(message);
        }
    }
    raise<MSPUnrecognisedException>(message);
}

void throwLocal(int code, std::string_view message) {
    const std::string text(message);
    logError(text);
    if (Logger::isError()) {
        Logger::error(toText(code));
    }
    throw MSPRuntimeException(code, text);
}

void throwUnexpectedState(int count, int position) {
    throwLocal(kLocalFailure,
               "Unexpected state.  count = " + toText(count) + " pos = " + toText(position));
}

std::string lastProxyError() {
    char* message = nullptr;
    const bool failed = MvServerProxy_GetLastError(&message) != 0;
    if (message == nullptr) {
        return failed ? "Could not retrieve last error message." : "No error message received";
    }
    // By design: a message that comes with a failed status is dropped.
    // (ProxyErrors.MessageWithAFailedStatusIsDropped)
    return failed ? std::string() : std::string(message);
}

int checked(int status) {
    if (status < 0) {
        throwForStatus(status);
    }
    return status;
}

const char* checkedText(const char* text) {
    if (text == nullptr) {
        throwForStatus(MV_STATUS_NULL_TEXT);
    }
    return text;
}

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal
