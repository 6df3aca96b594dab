// The one way from a result of the proxy, or a failure found here, to an exception.
#ifndef MORVENN_CLIENT_PROXYERRORS_H
#define MORVENN_CLIENT_PROXYERRORS_H

#include <string>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Client::Internal {

/// Type code of every failure that the library itself finds.
inline constexpr int kLocalFailure = -1;

/// Logs and throws the class that belongs to a status, with the proxy's last error as message.
[[noreturn]] void throwForStatus(int status);

/// Logs and throws MSPRuntimeException(code, message).
[[noreturn]] void throwLocal(int code, std::string_view message);

/// throwLocal for a result of the proxy that cannot be the number of bytes in a block.
[[noreturn]] void throwUnexpectedState(int count, int position);

/// The proxy's text for the last failure, or one that says why there is none.
std::string lastProxyError();

/// @p status, when it is no failure.
int checked(int status);

/// @p text, when it is one: a null pointer raises the status kept for that.
const char* checkedText(const char* text);

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal

#endif  // MORVENN_CLIENT_PROXYERRORS_H
