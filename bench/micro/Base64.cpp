// The coding of signature records, against OpenSSL's and Poco's.
#include <Poco/Base64Decoder.h>
#include <Poco/Base64Encoder.h>
#include <openssl/evp.h>

#include <sstream>

#include "crypto/Base64.h"
#include "micro/Works.h"
#include "support/Rows.h"
#include "support/Samples.h"

namespace Morvenn::Bench {

namespace {

namespace Internal = Net::MvServerProxy::Crypto::Internal;

constexpr std::size_t kSize = 48 * 1024;  // a multiple of 3: the block functions decode padding

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string opensslEncode(const std::string& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytesOf(bytes),
                                     static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string opensslDecode(const std::string& text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int size = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), bytesOf(text),
                                     static_cast<int>(text.size()));
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

std::string pocoEncode(const std::string& bytes) {
    std::ostringstream out;
    Poco::Base64Encoder encoder(out);
    encoder.rdbuf()->setLineLength(0);
    encoder << bytes;
    encoder.close();
    return out.str();
}

std::string pocoDecode(const std::string& text) {
    std::istringstream in(text);
    Poco::Base64Decoder decoder(in);
    std::ostringstream out;
    out << decoder.rdbuf();
    return out.str();
}

std::function<void(Sink&)> with(const std::string& input,
                                const std::function<std::string(const std::string&)>& code) {
    return [input, code](Sink& sink) { sink.take(code(input)); };
}

}  // namespace

void registerBase64() {
    const std::string bytes = binarySample(kSize);
    const std::string text = Internal::base64Encode(bytes);
    registerRows("base64_encode", kSize,
                 {{"openssl", with(bytes, opensslEncode)},
                  {"library", with(bytes, Internal::base64Encode)},
                  {"poco", with(bytes, pocoEncode)}});
    registerRows("base64_decode", kSize,
                 {{"openssl", with(text, opensslDecode)},
                  {"library", with(text, Internal::base64Decode)},
                  {"poco", with(text, pocoDecode)}});
}

}  // namespace Morvenn::Bench
