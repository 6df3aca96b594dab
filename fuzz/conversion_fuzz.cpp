// Both conversions against ICU in one call, also across the seams of the library's buffers.
#include <unicode/ucnv.h>

#include <algorithm>

#include "fuzz/Fuzz.h"
#include "util/TextConversion.h"

using namespace Morvenn::Net::MvServerProxy::Util::Internal;

namespace {

std::string inOneCall(const char* to, const char* from, const std::string& text) {
    std::string out(text.size() * 3 + 16, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size =
        ucnv_convert(to, from, out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                     static_cast<std::int32_t>(text.size()), &status);
    Fuzz::require(U_SUCCESS(status), "ICU converts in one call");
    out.resize(static_cast<std::size_t>(size));
    return out;
}

// A conversion of more than 20480 bytes does not tell its source converter that the text has ended
// when it ends within the first buffer: a sequence cut short by the end is then dropped, not
// substituted.
bool isConverted(const std::string& came, const char* to, const char* from, std::string text) {
    constexpr std::size_t kBuffer = 20480;
    constexpr int kLongestCut = 3;
    if (came == inOneCall(to, from, text)) {
        return true;
    }
    const bool isLong = text.size() > kBuffer;
    for (int cut = 0; isLong && cut < kLongestCut; ++cut) {
        text.pop_back();
        if (came == inOneCall(to, from, text)) {
            return true;
        }
    }
    return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    // Plain text in front moves the rest across a seam: buffers hold 20480 units.
    const std::size_t front = (input.byte() % 4) * 10239 + input.byte() % 8;
    std::string text = std::string(front, 'x') + input.rest();
    const bool holdsZero = text.find('\0') != std::string::npos;

    const std::string utf8 = toUtf8(text);
    const std::string local = fromUtf8(text.data(), static_cast<int>(text.size()));
    if (holdsZero) {
        return 0;  // cut at the zero, piece by piece: pinned by unit tests
    }
    const std::string name = ucnv_getDefaultName();
    Fuzz::require(isConverted(utf8, "UTF-8", name.c_str(), text), "toUtf8 is one conversion");
    Fuzz::require(isConverted(local, name.c_str(), "UTF-8", text), "fromUtf8 is one conversion");
    Fuzz::require(fromUtf8(utf8.data(), static_cast<int>(utf8.size())) == local,
                  "there and back again is the same");
    return 0;
}
