// The wire text of headers: lines "name=value", then an empty line.
//
//     request   = *( name "=" value CR LF ) CR LF        names ascending, byte by byte; UTF-8
//     response  = *( [ws] name [ws] "=" [ws] value [ws] [ "=" dropped ] LF ) LF
#ifndef MORVENN_CLIENT_HEADERTEXT_H
#define MORVENN_CLIENT_HEADERTEXT_H

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "morvenn/net/mvserverproxy/client/ResponseStream.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

inline constexpr std::string_view kLineEnd = "\r\n";

/// Ordered byte by byte; names are looked up without a copy of them.
using HeaderMap = std::map<std::string, std::string, std::less<>>;

/// The value of @p name, empty when there is none; valid until the header changes.
std::string_view valueOf(const HeaderMap& headers, std::string_view name);

/// The header lines with their empty line, and @p body after them.
std::string formatHeaders(const HeaderMap& headers, std::string_view body = {});

struct HeaderLine {
    std::string_view key;
    std::string_view value;
};

/// Any line has a key and a value, either of which may be empty.
/// By design: text after a second "=" is dropped, so "X=a=b" reads as "a".
/// (ResponseHeaders.TextAfterASecondEqualsSignIsDropped)
HeaderLine parseHeaderLine(std::string_view line);

/// Reads the lines of a response's header block.
/// By design: only a line feed is looked for. Whatever else the proxy answers, no data, the end or
/// a failure, is appended to the line as a byte, and reading goes on.
/// (ResponseHeaders.HeaderBlockWithoutEndKeepsAsking)
class HeaderReader {
public:
    explicit HeaderReader(ResponseStream& stream);

    /// Gives the next line without its line feed, valid until the next call.
    /// False at the empty line that ends the block.
    bool next(std::string_view& line);

private:
    /// Up to the line feed, which is taken too; or all that the block holds. True with a line feed.
    bool takeFromBlock(std::string_view& piece);

    ResponseStream& m_stream;
    std::string m_line;  // what earlier blocks held of the line
};

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal

#endif  // MORVENN_CLIENT_HEADERTEXT_H
