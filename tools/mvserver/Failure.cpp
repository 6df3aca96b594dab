#include "Failure.h"

#include "CredentialPrompt.h"

#include <morvenn/net/mvserverproxy/client/Exceptions.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using namespace Morvenn::Net::MvServerProxy::Client;

bool holdsAny(const std::string& text, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&text](const char* word) { return text.find(word) != std::string::npos; });
}

// The library's classes do not tell a time limit or refused credentials from other failures to
// connect. The texts of the default proxy do: each names the setting of the limit that ran out.
Failure connectionFailure(const std::string& message) {
    if (holdsAny(message, {"_TIMEOUT_MS", "timed out"})) {
        return {ExitCode::Timeout, message, "raise --timeout, --connect-timeout or --idle-timeout"};
    }
    if (holdsAny(message, {"credential"})) {
        return {ExitCode::Credentials, message,
                "send the body as a stream (--stream) with --user and --password-file, or put the "
                "credentials into the forward proxy's URL"};
    }
    return {ExitCode::Connection, message, "run 'mvserver doctor' to see which part is missing"};
}

Failure runtimeFailure(const MSPRuntimeException& e) {
    if (e.getType() == kNoCredentials) {
        return {ExitCode::Credentials, e.getMessage(), "give --user and --password-file"};
    }
    return {ExitCode::Runtime, e.getMessage()};
}

}  // namespace

void throwFileFailure(const std::string& what, const std::string& path) {
    throw Failure(ExitCode::LocalFile, what + " " + path + ": " + std::strerror(errno));
}

Failure currentFailure() {
    try {
        throw;
    } catch (const Failure& e) {
        return e;
    } catch (const MSPConnectionException& e) {
        return connectionFailure(e.getMessage());
    } catch (const MSPProtocolException& e) {
        return {ExitCode::Protocol, e.getMessage()};
    } catch (const MSPRuntimeException& e) {
        return runtimeFailure(e);
    } catch (const CredentialsUnavailableException& e) {
        return {ExitCode::Credentials, e.getMessage()};
    } catch (const Utf8ConversionException& e) {
        return {ExitCode::Conversion, e.getMessage()};
    } catch (const MSPUnrecognisedException& e) {
        return {ExitCode::Unrecognised, e.getMessage()};
    } catch (const MSPException& e) {
        return {ExitCode::Runtime, e.getMessage()};
    } catch (const std::out_of_range&) {
        return {ExitCode::Protocol, "the server's answer ends before what it announces"};
    } catch (const std::bad_alloc&) {
        return {ExitCode::Runtime, "out of memory", "send large bodies with --stream and -o FILE"};
    } catch (const std::exception& e) {
        return {ExitCode::Runtime, e.what()};
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
