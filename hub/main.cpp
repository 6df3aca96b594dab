// mvhub: starts the hub and turns signals into what they ask for.

#include "ListenSocket.h"
#include "Log.h"
#include "Options.h"
#include "PortFile.h"
#include "Router.h"
#include "Server.h"

#include <csignal>
#include <iostream>

#include <unistd.h>

namespace {

using namespace Morvenn::Net::MvServerProxy::Hub;

// SIGTERM and SIGINT stop the hub, SIGHUP reads the directory again. They are blocked in every
// thread and taken one by one here, so nothing ever happens inside a signal handler.
sigset_t takeOverSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

ServerSettings serverSettings(const Options& options) {
    ServerSettings settings;
    settings.address = options.address;
    settings.port = options.port;
    settings.loopbackNamesOnly = isLoopbackAddress(options.address);
    settings.faults = options.faults;
    settings.limits = options.limits;
    return settings;
}

int run(const Options& options) {
    const sigset_t signals = takeOverSignals();
    Router router([] { ::kill(::getpid(), SIGTERM); });
    Server server(serverSettings(options),
                  [&router](const Request& request) { return router.route(request); });
    server.start();
    const PortFile portFile(options.portFile, server.port());
    std::cout << "mvhub listening on http" << (options.tls ? "s" : "") << "://"
              << urlAuthority(options.address, server.port()) << std::endl;
    for (;;) {
        int number = 0;
        sigwait(&signals, &number);
        if (number != SIGHUP) {
            break;
        }
    }
    server.stop();
    logLine("stopped");
    return kExitStopped;
}

}  // namespace

int main(int argc, char** argv) {
    const ParsedOptions parsed = parseOptions(argc, argv);
    if (!parsed.options) {
        return parsed.exitStatus;
    }
    setQuiet(parsed.options->quiet);
    try {
        return run(*parsed.options);
    } catch (const std::exception& error) {
        logLine(error.what());
        return kExitFailed;
    }
}
