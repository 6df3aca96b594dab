// A file as the body, read while it is sent: it is never in memory as a whole.
//
// usage: stream_body_from_file FILE. The hub's service Digest answers size and SHA-256.
//
// A stream body of text is what the wire carries: of each piece of 4096 bytes, what follows a zero
// byte is lost. Binary files are encoded first, in base64 for example.
#include <fstream>
#include <iostream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: stream_body_from_file FILE\n";
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    if (!file) {
        std::cerr << argv[1] << " cannot be read\n";
        return 2;
    }
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServiceName, "Digest");
    request.setBody(&file);  // borrowed: the stream outlives the exchange
    try {
        std::cout << request.execute();
    } catch (const MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
    if (file.bad()) {
        std::cerr << argv[1] << ": reading it failed, what was sent is not whole\n";
        return 1;
    }
}
