// The header block with which a response begins on its way to the client: "name=value" lines, each
// ended by LF, and an empty line.
//
// The headers of the server come first, the four synthesised lines last: a later line replaces an
// earlier one at the reader. A server cannot write the synthesised names itself.
#ifndef MORVENN_PROXY_RESPONSETEXT_H
#define MORVENN_PROXY_RESPONSETEXT_H

#include <string>

#include "ResponseHead.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

// True when the body comes in the gzip format.
bool isGzip(const ResponseHead& head);

std::string responseText(const ResponseHead& head);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
