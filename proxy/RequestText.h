// The text with which an exchange begins, taken apart and checked.
//
//   text      = directory | shutdown | request
//   directory = "getEnv:" selector CRLF CRLF
//   shutdown  = "ShutdownServer" CRLF { header CRLF } CRLF
//   request   = { header CRLF } CRLF [ body ]          a body on the acknowledged form only
//   header    = name "=" value                         value: everything after the first "="
//
// This is where header injection ends. The HTTP side would send a line break inside a value as a
// second header, so names are tokens, values hold no control character, a name comes once, and on
// the unacknowledged form, whose names always come in ascending order, a name out of order is
// refused as well. The texts of refusals never hold a value.
#ifndef MORVENN_PROXY_REQUESTTEXT_H
#define MORVENN_PROXY_REQUESTTEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy {

enum class Form { Acknowledged, Unacknowledged };  // which of the two sending functions brought it
enum class Kind { Stream, Text, Directory, Shutdown };

const char* nameOf(Kind kind);

struct Header {
    std::string name;
    std::string value;
};

struct RequestText {
    Kind kind = Kind::Stream;
    std::string selector;         // Directory
    std::vector<Header> headers;  // all others
    std::string_view body;        // Text: a part of the text given in

    // The value of a header; empty when it is absent.
    std::string_view value(std::string_view name) const;
};

constexpr std::size_t kMaxRequestHeaders = 256;

// Throws Failure (-1002). The result refers to `text` for its body.
RequestText readRequestText(std::string_view text, Form form, std::size_t headerLimit);

// Where the request goes: the first of Base-Full-Url, Server-Url and Base-Server-Url that is
// neither empty nor "null", else a path of the hub.
std::string requestUrl(const RequestText& request, const std::string& hub);

// The header lines as HTTP sends them. An empty value is written "name;", which is how libcurl is
// told to send a header without one.
std::vector<std::string> httpHeaders(const RequestText& request);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
