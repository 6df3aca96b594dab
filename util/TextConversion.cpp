#include "util/TextConversion.h"

#include "util/Utf8Converter.h"

namespace Morvenn::Net::MvServerProxy::Util::Internal {

namespace {

template <class Text>
Text convert(Direction direction, const char* source, int length) {
    Utf8Converter converter(direction, length);
    Text result;
    if (length > 0) {
        result.reserve(static_cast<std::size_t>(length));
    }
    converter.convert(source, length, [&result](const char* piece, std::size_t size) {
        result.insert(result.end(), piece, piece + size);
    });
    return result;
}

}  // namespace

std::string toUtf8(const char* text, int length) {
    return convert<std::string>(Direction::Encode, text, length);
}

std::string toUtf8(const std::string& text) {
    return toUtf8(text.data(), static_cast<int>(text.size()));
}

SecretText toUtf8(const SecretText& text) {
    return convert<SecretText>(Direction::Encode, text.data(), static_cast<int>(text.size()));
}

std::string fromUtf8(const char* bytes, int length) {
    return convert<std::string>(Direction::Decode, bytes, length);
}

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal
