// A signature request as the hub reads it: the items are those of the record, or it is refused.
#include <algorithm>
#include <cctype>

#include "fuzz/Fuzz.h"
#include "hub/Refusal.h"
#include "hub/SigningRecord.h"
#include "tests/reference/Base64.h"

using namespace Morvenn::Net::MvServerProxy;

namespace {

// The hub lets line breaks and blanks stand in the text.
std::string withoutSpace(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](char c) { return std::isspace(static_cast<unsigned char>(c)); }),
               text.end());
    return text;
}

void check(const std::string& base64) {
    try {
        const std::vector<std::string> items = Hub::decodeSigningRequest(base64);
        Fuzz::require(!items.empty() && items.size() <= Hub::kMostItems, "items are limited");
        Fuzz::require(
            Reference::base64Decode(withoutSpace(base64)) == Reference::signatureRequest(items),
            "the items are those of the record");
        const Reference::SignatureAnswer answer =
            Reference::signatureAnswer(Reference::base64Decode(Hub::encodeSigningAnswer(items)));
        Fuzz::require(answer.entries == items, "the answer holds an entry for each item");
    } catch (const Hub::Refusal&) {
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = Fuzz::Input(data, size).rest();
    check(bytes);
    check(Reference::base64Encode(bytes));
    return 0;
}
