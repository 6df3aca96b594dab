// Seeing what happens: the library's log and the default proxy library's trace.
//
// usage: log_and_trace FOLDER. Usually the variables are set outside of the program.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"

using namespace Morvenn::Net::MvServerProxy;

namespace {

int linesOf(const std::string& path) {
    std::ifstream file(path);
    int lines = 0;
    for (std::string line; std::getline(file, line);) {
        ++lines;
    }
    return lines;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    setenv("TEMP", folder.c_str(), 1);
    setenv("MV_CPPBINDING_LOG_LEVEL", "DEBUG", 1);
    setenv("MV_SERVERPROXY_TRACE", (folder + "/trace.jsonl").c_str(), 1);

    // Reads the level now; otherwise debug lines appear only after the first warning.
    Util::MvServerCppBindingLogger::getInstance();

    try {
        Client::MSPSession session;
        Client::MvServerRequest request(&session);
        request.setHeader(Client::HeaderKeys::kServiceName, "Digest");
        request.setBody("hello");
        request.execute();
        Client::MvServerRequest::term();
    } catch (const Client::MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
    const std::string log = folder + "/CppBinding_" + std::to_string(getpid()) + "_Morvenn.log";
    std::cout << "log: " << (linesOf(log) > 0 ? "written" : "EMPTY") << '\n'
              << "trace: " << (linesOf(folder + "/trace.jsonl") > 0 ? "written" : "EMPTY") << '\n';
}
