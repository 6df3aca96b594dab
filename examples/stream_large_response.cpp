// A large answer in constant memory: 256 MiB pass through a buffer of 16 KiB.
//
// usage: stream_large_response [BYTES]. The hub's service Pattern answers as many bytes as asked.
#include <sys/resource.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

long peakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServiceName, "Pattern");
    request.setBody(argc > 1 ? argv[1] : "268435456");
    try {
        const std::unique_ptr<std::istream> answer(request.send());
        answer->exceptions(std::ios::badbit);
        std::vector<char> block(ResponseStream::kBlockSize);
        long long total = 0;
        while (answer->read(block.data(), ResponseStream::kBlockSize) || answer->gcount() > 0) {
            total += answer->gcount();  // the place to use the block
        }
        std::cout << total << " bytes, peak memory "
                  << (peakMemoryKiB() < 32 * 1024 ? "below" : "ABOVE") << " 32 MiB\n";
    } catch (const MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
