#include "GlobalOptions.h"

#include "Options.h"

#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr char kGroup[] = "Options of every verb";

void put(const char* variable, const std::string& value) {
    if (!value.empty()) {
        ::setenv(variable, value.c_str(), 1);
    }
}

void putMilliseconds(const char* variable, double seconds) {
    if (seconds > 0) {
        put(variable, std::to_string(static_cast<long long>(seconds * 1000 + 0.5)));
    }
}

void addSeconds(CLI::App& app, const char* name, double& value, const char* help) {
    addOption(app, name, value, help)
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 1e6))
        ->group(kGroup);
}

}  // namespace

void addGlobalOptions(CLI::App& app, Context& context, ProxySettings& settings) {
    addFlag(app, "--json", context.json, "Print one JSON object, for results and for errors")
        ->group(kGroup);
    addFlag(app, "-v,--verbose", context.verbosity,
            "Show the exchange on standard error, secrets left out; twice shows more")
        ->group(kGroup);
    addFlag(app, "--progress,!--no-progress", context.progress,
            "Show a progress meter on standard error (default: on a terminal, unless the data goes "
            "there, too)")
        ->group(kGroup);
    addOption(app, "--hub", settings.hub,
              "Base URL of the communication service; http://127.0.0.1:16064 when not given")
        ->type_name("URL")
        ->envname("MV_SERVERPROXY_HUB")
        ->group(kGroup);
    addOption(app, "--ca-file", settings.caFile, "Certificates that https servers are checked with")
        ->type_name("FILE")
        ->envname("MV_SERVERPROXY_CA_FILE")
        ->group(kGroup);
    addSeconds(app, "--timeout", settings.timeout, "Limit for a whole exchange");
    addSeconds(app, "--connect-timeout", settings.connectTimeout, "Limit for connecting (30)");
    addSeconds(app, "--idle-timeout", settings.idleTimeout,
               "Limit for the time without a byte moving (300)");
    addOption(
        app, "--log-dir", context.logFolderOption,
        "Folder for the library's log (default: a private temporary one, removed when nothing "
        "was logged)")
        ->type_name("DIR")
        ->group(kGroup);
    addOption(app, "--log-level", context.logLevel, "Level of the library's log (WARN)")
        ->type_name("LEVEL")
        ->envname("MV_CPPBINDING_LOG_LEVEL")
        ->check(CLI::IsMember({"OFF", "ERROR", "WARN", "INFO", "DEBUG"}))
        ->group(kGroup);
}

void apply(const ProxySettings& settings, const Context& context) {
    put("MV_SERVERPROXY_HUB", settings.hub);
    put("MV_SERVERPROXY_CA_FILE", settings.caFile);
    putMilliseconds("MV_SERVERPROXY_TOTAL_TIMEOUT_MS", settings.timeout);
    putMilliseconds("MV_SERVERPROXY_CONNECT_TIMEOUT_MS", settings.connectTimeout);
    putMilliseconds("MV_SERVERPROXY_IDLE_TIMEOUT_MS", settings.idleTimeout);
    put("MV_CPPBINDING_LOG_LEVEL", context.logLevel);
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
