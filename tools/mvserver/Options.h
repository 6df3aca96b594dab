// Options that may also come from the environment.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// The variable of an option: "--log-dir" may come from MV_LOG_DIR. `names` as CLI11 takes them; the
// first long name counts.
std::string variableOf(const std::string& names);

template <class T>
CLI::Option* addOption(CLI::App& app, const std::string& names, T& value, const std::string& help) {
    return app.add_option(names, value, help)->envname(variableOf(names));
}

template <class T>
CLI::Option* addFlag(CLI::App& app, const std::string& names, T& value, const std::string& help) {
    return app.add_flag(names, value, help)->envname(variableOf(names));
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
