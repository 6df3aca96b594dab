// The command line of mvhub.
#pragma once

#include "Limits.h"

#include <optional>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {

struct Options {
    std::vector<std::string> addresses = {"127.0.0.1"};
    std::uint16_t port = 16064;
    std::string portFile;
    std::string environmentsFile;
    std::string stateFolder;  // empty: the user's own
    std::string keyFile;
    std::string certificateFile;
    bool tls = false;
    bool faults = false;
    bool quiet = false;
    bool printCa = false;
    Limits limits;
};

constexpr int kExitStopped = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// The options, or the exit status when the program is not to run: after --help, --version or a
// usage error, which it has printed.
struct ParsedOptions {
    std::optional<Options> options;
    int exitStatus = kExitStopped;
};

ParsedOptions parseOptions(int argc, const char* const* argv);

}  // namespace Morvenn::Net::MvServerProxy::Hub
