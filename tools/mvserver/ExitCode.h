// The exit codes of mvserver. They are part of its interface: scripts branch on them.
#pragma once

#include <array>

namespace Morvenn::Net::MvServerProxy::Tools {

enum class ExitCode {
    Ok = 0,
    Usage = 2,
    Connection = 3,
    Protocol = 4,
    Runtime = 5,
    Credentials = 6,
    Conversion = 7,
    Unrecognised = 8,
    LocalFile = 9,
    ServerFailure = 22,
    Timeout = 28,
    Interrupted = 130,
};

struct ExitCodeRow {
    ExitCode code;
    const char* word;     // "kind" in JSON and at the start of an error line
    const char* meaning;  // for --help
};

inline constexpr std::array<ExitCodeRow, 12> kExitCodes{{
    {ExitCode::Ok, "ok", "done"},
    {ExitCode::Usage, "usage", "wrong options or arguments; nothing was sent"},
    {ExitCode::Connection, "connection", "cannot reach the server, or the connection broke"},
    {ExitCode::Protocol, "protocol",
     "refused by the protocol, or an answer or signature is not valid"},
    {ExitCode::Runtime, "runtime", "a failure inside the proxy or the library"},
    {ExitCode::Credentials, "credentials", "a forward proxy wants credentials that it did not get"},
    {ExitCode::Conversion, "conversion", "text cannot be converted between code pages"},
    {ExitCode::Unrecognised, "unrecognised", "a status of the proxy that nobody knows"},
    {ExitCode::LocalFile, "file", "a local file cannot be read or written"},
    {ExitCode::ServerFailure, "server", "with --fail: the server answered with 400 or above"},
    {ExitCode::Timeout, "timeout", "a time limit ran out"},
    {ExitCode::Interrupted, "interrupted", "ended by SIGINT"},
}};

const char* wordOf(ExitCode code);

}  // namespace Morvenn::Net::MvServerProxy::Tools
