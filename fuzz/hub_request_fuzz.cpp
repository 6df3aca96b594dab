// The head of a request as the hub judges it: any names and values, no crash, plain answers.
#include "fuzz/Fuzz.h"
#include "hub/Refusal.h"
#include "hub/Request.h"
#include "hub/RequestReader.h"

using namespace Morvenn::Net::MvServerProxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    Hub::Request request;
    request.method = "POST";
    static const char* const kNames[] = {"Accept-Encoding", "use-compression", "Content-Length",
                                         "Host", "SessionID"};
    while (!input.empty()) {
        const unsigned kind = input.byte() % 6;
        const std::string name = kind < 5 ? kNames[kind] : input.take(input.byte() % 16);
        request.headers.emplace_back(name, input.take(input.byte()));
    }
    for (const auto& header : request.headers) {
        const std::string* found = request.header(header.first);
        Fuzz::require(found != nullptr, "a header that is there is found");
        Fuzz::require(request.headerText(header.first) == *found, "by both ways");
    }
    try {
        Hub::acceptsGzip(request);
        Hub::announcedBody(request);
    } catch (const Hub::Refusal& refusal) {
        Fuzz::require(refusal.status() >= 400 && refusal.status() < 500,
                      "it is the client's fault");
    }
    return 0;
}
