// A response's header block: the map is that of a plain parser, however the bytes are cut.
#include <map>
#include <string>

#include "client/HeaderText.h"
#include "fuzz/BlockProxy.h"
#include "fuzz/Fuzz.h"
#include "tests/reference/Headers.h"

using namespace Morvenn::Net::MvServerProxy;

namespace {

std::map<std::string, std::string> readIn(const std::string& text, std::size_t blockSize) {
    Fuzz::BlockProxy::start(Fuzz::blocksOf(text, blockSize));
    std::map<std::string, std::string> headers;
    Client::ResponseStream stream;
    Client::Internal::HeaderReader reader(stream);
    for (std::string_view line; reader.next(line);) {
        const Client::Internal::HeaderLine header = Client::Internal::parseHeaderLine(line);
        headers[std::string(header.key)] = std::string(header.value);
    }
    return headers;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const std::size_t blockSize = 1 + input.byte();
    // Every block ends in time: the reader would ask for ever.
    const std::string text = input.rest() + "\n\n";

    Reference::HeaderMap wanted;
    std::size_t at = 0;
    for (std::size_t end = text.find('\n'); end != at; end = text.find('\n', at)) {
        Reference::enterHeaderLine(wanted, text.substr(at, end - at));
        at = end + 1;
    }
    Fuzz::require(readIn(text, blockSize) == wanted, "the map is that of a plain parser");
    Fuzz::require(readIn(text, 1) == wanted, "one byte a block gives the same");
    Fuzz::require(readIn(text, 16384) == wanted, "whole blocks give the same");
    return 0;
}
