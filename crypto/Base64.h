// Base64 as of RFC 4648, section 4: the alphabet A-Z a-z 0-9 + /, "=" as padding, no line breaks.
#ifndef MORVENN_CRYPTO_BASE64_H
#define MORVENN_CRYPTO_BASE64_H

#include <string>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Crypto::Internal {

std::string base64Encode(std::string_view bytes);

/// Takes characters four at a time and stops, without failure, at the first that is not of the
/// alphabet, padding included. What is left gives one byte for two characters, two for three, and
/// nothing for one.
std::string base64Decode(std::string_view text);

}  // namespace Morvenn::Net::MvServerProxy::Crypto::Internal

#endif  // MORVENN_CRYPTO_BASE64_H
