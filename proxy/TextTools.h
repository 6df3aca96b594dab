// Small text helpers of the proxy library. ASCII only: what they look at are names and numbers of
// the protocol, which no locale may change.
#ifndef MORVENN_PROXY_TEXTTOOLS_H
#define MORVENN_PROXY_TEXTTOOLS_H

#include <string>
#include <string_view>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy {

std::string lower(std::string_view text);
bool equalIgnoringCase(std::string_view left, std::string_view right);
bool startsWithIgnoringCase(std::string_view text, std::string_view prefix);

// Without blanks and tabs at both ends.
std::string_view trimmed(std::string_view text);

// True for a name as HTTP allows it: one or more of its token characters.
bool isToken(std::string_view text);

// The pieces between any of the separators; empty pieces are left out.
std::vector<std::string_view> pieces(std::string_view text, std::string_view separators);

// Bytes that are not unreserved in a URL become %XX.
std::string percentEncoded(std::string_view text);

// `text` with each byte of `which` as %XX, and the way back for exactly those bytes.
std::string escaped(std::string_view text, std::string_view which);
std::string unescaped(std::string_view text, std::string_view which);

// The text with every byte below 0x20, and 0x7F, as a blank: for texts that end up in a line.
std::string oneLine(std::string_view text);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
