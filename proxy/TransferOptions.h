// What libcurl is told before a transfer.
#ifndef MORVENN_PROXY_TRANSFEROPTIONS_H
#define MORVENN_PROXY_TRANSFEROPTIONS_H

#include <curl/curl.h>

#include <memory>
#include <string>
#include <string_view>

#include "Config.h"
#include "TransferPlan.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct ListCleanup {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using CurlList = std::unique_ptr<curl_slist, ListCleanup>;

// Lists that libcurl refers to as long as the transfer runs.
struct OptionLists {
    CurlList headers;
    CurlList addresses;
};

void append(CurlList& list, const std::string& line);

// Options that stay the same for the life of a handle.
void setLastingOptions(CURL* easy, const Config& config);

// Options of one transfer. Every one is set each time, left-over ones to "none": a handle that is
// reset would forget the nonce of a Digest proxy. `body` is borrowed until the transfer ends.
void setTransferOptions(CURL* easy, const TransferPlan& plan, const OptionLists& lists,
                        std::string_view body, long expectTimeoutMs);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
