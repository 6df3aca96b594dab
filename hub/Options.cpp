#include "Options.h"

#include "ListenSocket.h"

#include <CLI/CLI.hpp>

#include <iostream>

#ifndef MVHUB_VERSION
#error "MVHUB_VERSION is defined by the build"
#endif

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr char kDescription[] =
    "mvhub, a local service to develop and test server requests against.\n"
    "Paths: /environments?select=..., /request, /echo, /shutdown. See mvhub(1).";

void declareOptions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "mvhub " MVHUB_VERSION);
    app.add_option("--port", options.port, "TCP port; 0 takes a free one")->capture_default_str();
    app.add_option("--port-file", options.portFile, "write the port to this file while running");
    app.add_option("--listen", options.addresses,
                   "numeric address to listen on, several times for several; one beyond loopback "
                   "requires --tls")
        ->capture_default_str()
        ->allow_extra_args(false);
    app.add_option("--environments", options.environmentsFile,
                   "directory of environments; read again on SIGHUP");
    app.add_flag("--tls", options.tls, "serve https instead of http");
    auto* key = app.add_option("--key", options.keyFile, "private key for TLS and signatures, PEM");
    auto* certificate =
        app.add_option("--cert", options.certificateFile, "its certificate and chain, PEM");
    key->needs(certificate);
    certificate->needs(key);
    app.add_option("--state-dir", options.stateFolder,
                   "private folder for the generated key, certificate and ca.pem");
    app.add_flag("--print-ca", options.printCa,
                 "print the path of the generated ca.pem, making it first if need be, and end");
    app.add_flag("--faults", options.faults, "allow requests to ask for faulty answers");
    app.add_option("--body-limit", options.limits.bodyBytes,
                   "largest request body in bytes; 0 for any size")
        ->capture_default_str();
    app.add_option("--idle-timeout", options.limits.idleSeconds,
                   "seconds without a byte after which a connection is closed")
        ->capture_default_str()
        ->check(CLI::Range(1, 86400));
    app.add_option("--connections", options.limits.connections, "connections served at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 1024));
    app.add_flag("--quiet", options.quiet, "log no line per exchange");
}

// What no single option can tell by itself; empty when all is well.
std::string contradiction(const Options& options) {
    if (options.printCa && !options.keyFile.empty()) {
        return "--print-ca is about the generated certificate; leave --key and --cert away";
    }
    for (const std::string& address : options.addresses) {
        if (!isLoopbackAddress(address) && !options.tls) {
            return "--listen " + address + " is reachable from other machines and requires --tls";
        }
    }
    return "";
}

}  // namespace

ParsedOptions parseOptions(int argc, const char* const* argv) {
    Options options;
    CLI::App app(kDescription, "mvhub");
    declareOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, app.exit(error) == 0 ? kExitStopped : kExitUsage};
    }
    const std::string trouble = contradiction(options);
    if (!trouble.empty()) {
        std::cerr << trouble << "\nRun with --help for more information.\n";
        return {std::nullopt, kExitUsage};
    }
    return {options, kExitStopped};
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
