// What all verbs share: the global options, and the place where a verb leaves what it has to do.
#pragma once

#include "ExitCode.h"
#include "LogFolder.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <optional>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

struct Context {
    bool json = false;
    int verbosity = 0;
    std::optional<bool> progress;  // empty: when it makes sense
    std::string logFolderOption;
    std::string logLevel;

    // Set by the verb on the command line. Runs it and gives the members of its JSON result; what
    // it prints as text it prints itself, and only without `json`.
    std::function<nlohmann::json()> action;

    // For verbs that have a result and a verdict, too.
    ExitCode exit = ExitCode::Ok;

    const LogFolder* log = nullptr;  // there while the action runs
};

// A line about the exchange on standard error when -v was given `level` times or more.
void trace(const Context& context, int level, const std::string& line);

}  // namespace Morvenn::Net::MvServerProxy::Tools
