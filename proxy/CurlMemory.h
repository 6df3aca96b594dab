// libcurl's start, and what becomes of the memory it releases.
#ifndef MORVENN_PROXY_CURLMEMORY_H
#define MORVENN_PROXY_CURLMEMORY_H

namespace Morvenn::Net::MvServerProxy::Proxy {

// Once in a process. Throws Failure (-1003).
void startCurl();

// To be called before a user or password is handed to libcurl for the first time: from then on
// everything it releases is overwritten, unless the process has started libcurl by itself before.
// Not so from the beginning, since that would take a tenth of the time of a small exchange.
void wipeCurlMemory();

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
