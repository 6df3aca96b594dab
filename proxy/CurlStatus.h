// libcurl's results as status codes of the proxy contract, with what to try.
#ifndef MORVENN_PROXY_CURLSTATUS_H
#define MORVENN_PROXY_CURLSTATUS_H

#include <curl/curl.h>

namespace Morvenn::Net::MvServerProxy::Proxy {

struct CurlStatus {
    CURLcode curl;
    int status;          // MV_STATUS_...
    const char* remedy;  // never empty
};

// The row of the table; the row for all others when the code has none.
const CurlStatus& statusOf(CURLcode code);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
