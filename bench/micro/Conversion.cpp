// Text to UTF-8. The limit is ICU alone in the same pieces; "cached" keeps its converters open from
// call to call, which the library never does: every text passes through freshly opened ones.
#include <iconv.h>
#include <unicode/ucnv.h>

#include <memory>
#include <stdexcept>

#include "micro/Works.h"
#include "support/Rows.h"
#include "support/Samples.h"
#include "util/TextConversion.h"

namespace Morvenn::Bench {

namespace {

constexpr std::size_t kLargeSize = std::size_t{1} << 20U;
constexpr std::size_t kSmallSize = 220;
constexpr std::size_t kUnits = 20480;
constexpr std::size_t kBytes = 30720;

struct Close {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, Close>;

Converter open(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &status));
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("ICU has no converter: ") + u_errorName(status));
    }
    return converter;
}

void appendPivot(UConverter* to, const UChar* begin, const UChar* end, bool isLast,
                 std::string& out) {
    char bytes[kBytes];
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        char* stop = bytes;
        ucnv_fromUnicode(to, &stop, bytes + kBytes, &begin, end, nullptr,
                         static_cast<UBool>(isLast), &status);
        out.append(bytes, static_cast<std::size_t>(stop - bytes));
    }
}

std::string convert(UConverter* from, UConverter* to, const std::string& text) {
    static UChar pivot[kUnits];
    std::string out;
    out.reserve(text.size());
    const char* source = text.data();
    const char* const limit = source + text.size();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (status == U_BUFFER_OVERFLOW_ERROR) {
        status = U_ZERO_ERROR;
        UChar* end = pivot;
        ucnv_toUnicode(from, &end, pivot + kUnits, &source, limit, nullptr, 1, &status);
        appendPivot(to, pivot, end, status != U_BUFFER_OVERFLOW_ERROR, out);
    }
    return out;
}

std::string byIconv(const std::string& text) {
    const iconv_t descriptor = iconv_open("UTF-8", "UTF-8");
    std::string out(text.size() * 2, '\0');
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char* at = out.data();
    std::size_t outLeft = out.size();
    const std::size_t result = iconv(descriptor, &in, &inLeft, &at, &outLeft);
    iconv_close(descriptor);
    if (result == static_cast<std::size_t>(-1)) {
        throw std::runtime_error("iconv cannot convert the sample");
    }
    out.resize(out.size() - outLeft);
    return out;
}

void registerOne(const std::string& work, const std::string& text) {
    const auto cached = [text, from = std::shared_ptr<UConverter>(open(nullptr)),
                         to = std::shared_ptr<UConverter>(open("UTF-8"))](Sink& sink) {
        sink.take(convert(from.get(), to.get(), text));
    };
    const auto fresh = [text](Sink& sink) {
        const Converter from = open(nullptr);
        const Converter to = open("UTF-8");
        sink.take(convert(from.get(), to.get(), text));
    };
    const auto library = [text](Sink& sink) {
        sink.take(Net::MvServerProxy::Util::Internal::toUtf8(text));
    };
    const auto iconvRow = [text](Sink& sink) { sink.take(byIconv(text)); };
    registerRows(work, static_cast<double>(text.size()),
                 {{"limit", fresh}, {"cached", cached}, {"library", library}, {"iconv", iconvRow}});
}

std::string repeated(const char* piece, std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += piece;
    }
    return text;
}

}  // namespace

// ICU's default code page is UTF-8 on this platform whatever the locale says, so all three are.
void registerConversion() {
    registerOne("to_utf8_ascii", xmlSample(kLargeSize));
    registerOne("to_utf8_mixed",
                repeated("Grüße aus Köln, 東京 и Москва: ordinary words. ", kLargeSize));
    registerOne("to_utf8_latin1", repeated("Grüße aus Köln, à bientôt: mots. ", kLargeSize));
    registerOne("to_utf8_220", xmlSample(kSmallSize));
}

}  // namespace Morvenn::Bench
