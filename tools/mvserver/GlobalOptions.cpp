#include "GlobalOptions.h"

#include <cmath>
#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

// Seconds.
constexpr double kShortest = 0.001;
constexpr double kLongest = 1e6;

void put(const char* variable, const std::string& value) {
    if (!value.empty()) {
        ::setenv(variable, value.c_str(), 1);
    }
}

void putMilliseconds(const char* variable, double seconds) {
    if (seconds > 0) {
        put(variable, std::to_string(std::llround(seconds * 1000)));
    }
}

}  // namespace

void addGlobalOptions(Verb program, Context& context, ProxySettings& settings) {
    Option options[] = {
        program.flag("--json", context.json, "Print one JSON object, for results and for errors"),
        program.counter("-v,--verbose", context.verbosity,
                        "Show the exchange on standard error, secrets left out; twice shows more"),
        program.flag("--progress,!--no-progress", context.progress,
                     "Show a progress meter on standard error (default: on a terminal, unless the "
                     "data goes there, too)"),
        program
            .text("--hub", settings.hub, "URL",
                  "Base URL of the communication service; http://127.0.0.1:16064 when not given")
            .variable("MV_SERVERPROXY_HUB"),
        program
            .text("--ca-file", settings.caFile, "FILE",
                  "Certificates that https servers are checked with")
            .variable("MV_SERVERPROXY_CA_FILE"),
        program.number("--timeout", settings.timeout, "SECONDS", "Limit for a whole exchange")
            .between(kShortest, kLongest),
        program
            .number("--connect-timeout", settings.connectTimeout, "SECONDS",
                    "Limit for connecting (30)")
            .between(kShortest, kLongest),
        program
            .number("--idle-timeout", settings.idleTimeout, "SECONDS",
                    "Limit for the time without a byte moving (300)")
            .between(kShortest, kLongest),
        program.text("--log-dir", context.logFolderOption, "DIR",
                     "Folder for the library's log (default: a private temporary one, removed when "
                     "nothing was logged)"),
        program.text("--log-level", context.logLevel, "LEVEL", "Level of the library's log (WARN)")
            .variable("MV_CPPBINDING_LOG_LEVEL")
            .oneOf({"OFF", "ERROR", "WARN", "INFO", "DEBUG"}),
    };
    for (Option& option : options) {
        option.group("Options of every verb");
    }
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
