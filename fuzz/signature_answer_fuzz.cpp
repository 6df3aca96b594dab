// A server's answer to a signature request: the record as it is, and its base64 text as it is.
#include <memory>
#include <new>
#include <stdexcept>

#include "fuzz/BlockProxy.h"
#include "fuzz/Fuzz.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"
#include "tests/reference/Base64.h"

using namespace Morvenn::Net::MvServerProxy;

namespace {

/// Arrays of more strings than this are the machine's affair.
constexpr std::size_t kMostEntries = 1U << 16U;

std::size_t announced(const std::string& record) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < 4 && i < record.size(); ++i) {
        count = count << 8U | static_cast<unsigned char>(record[i]);
    }
    return count;
}

void check(const std::string& text) {
    const std::string record = Reference::base64Decode(text);
    const bool isNegative = announced(record) > 0x7FFFFFFFU;
    if (!isNegative && announced(record) > kMostEntries) {
        return;
    }
    if (isNegative && Fuzz::kIsSanitized) {
        return;  // the sanitizer ends a program that asks for so much
    }
    const Reference::SignatureAnswer wanted = Reference::signatureAnswer(record);
    std::vector<std::string> blocks = {std::string(18, '.'), "\n"};
    for (const std::string& block : Fuzz::blocksOf(text, 16384)) {
        blocks.push_back(block);
    }
    Fuzz::BlockProxy::start(blocks);
    const char* data[] = {"item"};
    int sizes[] = {4};
    try {
        const std::unique_ptr<std::string[]> signatures(Crypto::PKCS7().sign(data, 1, sizes));
        Fuzz::require(!wanted.outOfRange && !wanted.badAllocation, "a bad answer does not pass");
        for (std::size_t i = 0; i < wanted.entries.size(); ++i) {
            Fuzz::require(signatures[i] == wanted.entries[i], "the entry is the same");
        }
    } catch (const std::out_of_range&) {
        Fuzz::require(wanted.outOfRange, "out of range only outside the data");
    } catch (const std::bad_alloc&) {
        Fuzz::require(wanted.badAllocation, "out of memory only for a negative count");
    }
    Fuzz::require(Fuzz::BlockProxy::completes() == 1, "the exchange is completed once");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = Fuzz::Input(data, size).rest();
    check(bytes);
    check(Reference::base64Encode(bytes));
    return 0;
}
