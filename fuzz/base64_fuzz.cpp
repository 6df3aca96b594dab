// Base64 against a coder that works bit by bit.
#include "crypto/Base64.h"
#include "fuzz/Fuzz.h"
#include "tests/reference/Base64.h"

using namespace Morvenn::Net::MvServerProxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = Fuzz::Input(data, size).rest();
    const std::string text = Crypto::Internal::base64Encode(bytes);
    Fuzz::require(text == Reference::base64Encode(bytes), "encoded as bit by bit");
    Fuzz::require(Crypto::Internal::base64Decode(text) == bytes, "there and back again");
    Fuzz::require(Crypto::Internal::base64Decode(bytes) == Reference::base64Decode(bytes),
                  "any text decodes as bit by bit");
    return 0;
}
