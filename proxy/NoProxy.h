// The no_proxy list: which hosts are reached without a forward proxy.
//
//   list  = entry { ("," | blank) entry }
//   entry = "*"                          every host
//         | ["." | "*."] name [":" port]   that host and every host below it
//         | address                        that IPv4 or IPv6 address
//         | v4address ":" port             that address, on that port only
//         | "[" v6address "]" [":" port]
//         | address "/" bits               every address of that network
#ifndef MORVENN_PROXY_NOPROXY_H
#define MORVENN_PROXY_NOPROXY_H

#include <string_view>

namespace Morvenn::Net::MvServerProxy::Proxy {

// True when `host` (a name, or an address without brackets) is on the list, for that port or for
// all.
bool bypassesProxy(std::string_view host, std::string_view port, std::string_view list);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
