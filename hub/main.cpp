// mvhub: starts the hub and turns signals into what they ask for.

#include "KeyStore.h"
#include "ListenSocket.h"
#include "Log.h"
#include "Options.h"
#include "PortFile.h"
#include "Router.h"
#include "Server.h"

#include <algorithm>
#include <csignal>
#include <iostream>

#include <unistd.h>

namespace {

using namespace Morvenn::Net::MvServerProxy::Hub;

// SIGTERM and SIGINT stop the hub, SIGHUP reads the directory again. They are blocked in every
// thread and taken one by one here, so nothing ever happens inside a signal handler.
sigset_t takeOverSignals() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// Those that other machines can reach.
std::vector<std::string> foreignAddresses(const Options& options) {
    std::vector<std::string> foreign;
    std::copy_if(options.addresses.begin(), options.addresses.end(), std::back_inserter(foreign),
                 [](const std::string& address) { return !isLoopbackAddress(address); });
    return foreign;
}

ServerSettings serverSettings(const Options& options, KeyStore& keys) {
    ServerSettings settings;
    settings.addresses = options.addresses;
    settings.port = options.port;
    settings.loopbackNamesOnly = foreignAddresses(options).empty();
    settings.faults = options.faults;
    settings.limits = options.limits;
    if (options.tls) {
        settings.tls = TlsPair{keys.pair().key, keys.pair().certificate};
    }
    return settings;
}

std::unique_ptr<KeyStore> openKeys(const Options& options) {
    if (options.keyFile.empty()) {
        return std::make_unique<KeyStore>(options.stateFolder);
    }
    auto keys = std::make_unique<KeyStore>(options.keyFile, options.certificateFile);
    // A pair that does not fit is told now, not at the first signature.
    const Signer tried(keys->pair().key, keys->pair().certificate);
    return keys;
}

std::function<void()> shutDownBySignal(const Options& options) {
    if (!foreignAddresses(options).empty()) {
        return nullptr;
    }
    return [] { ::kill(::getpid(), SIGTERM); };
}

void reload(DirectoryStore& directory) {
    if (!directory.hasFile()) {
        logLine("there is no directory file to read again; start with --environments");
        return;
    }
    try {
        directory.reload();
        logLine("directory read again: " + std::to_string(directory.current()->size()) +
                " environments");
    } catch (const std::exception& error) {
        logLine(std::string(error.what()) + "; the previous directory stays");
    }
}

void serveUntilStopped(const sigset_t& signals, DirectoryStore& directory) {
    for (;;) {
        int number = 0;
        sigwait(&signals, &number);
        if (number != SIGHUP) {
            return;
        }
        reload(directory);
    }
}

int printCa(const Options& options) {
    KeyStore keys(options.stateFolder);
    keys.pair();
    std::cout << keys.caFile() << std::endl;
    return kExitStopped;
}

int run(const Options& options) {
    const sigset_t signals = takeOverSignals();
    DirectoryStore directory(options.environmentsFile);
    const auto keys = openKeys(options);
    Router router(directory, *keys, shutDownBySignal(options));
    Server server(serverSettings(options, *keys),
                  [&router](const Request& request) { return router.route(request); });
    server.start();
    const auto urlAt = [&](const std::string& address) {
        return std::string(options.tls ? "https://" : "http://") +
               urlAuthority(address, server.port());
    };
    const std::string url = urlAt(options.addresses.front());
    if (!directory.hasFile()) {
        directory.replace(ownDirectory(url, MVHUB_VERSION));
    }
    for (std::size_t i = 1; i < options.addresses.size(); ++i) {
        logLine("also listening on " + urlAt(options.addresses[i]));
    }
    for (const std::string& address : foreignAddresses(options)) {
        logLine("warning: every machine that reaches " + address +
                " can use this hub; it is made for development, not for a network");
    }
    const PortFile portFile(options.portFile, server.port());
    std::cout << "mvhub listening on " << url << std::endl;
    serveUntilStopped(signals, directory);
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
        return parsed.options->printCa ? printCa(*parsed.options) : run(*parsed.options);
    } catch (const std::exception& error) {
        logLine(error.what());
        return kExitFailed;
    }
}
