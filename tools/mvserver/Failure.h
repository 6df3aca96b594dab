// What went wrong, as mvserver reports it: what, and what to do next.
#pragma once

#include "ExitCode.h"

#include <stdexcept>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message, std::string hint = "")
        : std::runtime_error(message), m_code(code), m_hint(std::move(hint)) {}

    ExitCode code() const { return m_code; }
    std::string message() const { return what(); }
    const std::string& hint() const { return m_hint; }

private:
    ExitCode m_code;
    std::string m_hint;
};

// "<what> <path>: <the system's text for errno>", exit code LocalFile.
[[noreturn]] void throwFileFailure(const std::string& what, const std::string& path);

// The failure that the exception in flight stands for. Call it inside a catch block only.
Failure currentFailure();

}  // namespace Morvenn::Net::MvServerProxy::Tools
