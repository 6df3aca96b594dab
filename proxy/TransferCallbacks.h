// The functions libcurl calls during a transfer. No exception leaves them: it is kept in the
// transfer, which throws it again once libcurl has returned.
#ifndef MORVENN_PROXY_TRANSFERCALLBACKS_H
#define MORVENN_PROXY_TRANSFERCALLBACKS_H

#include <curl/curl.h>

#include <cstddef>

namespace Morvenn::Net::MvServerProxy::Proxy {

struct TransferCallbacks {
    static std::size_t readBody(char* out, std::size_t size, std::size_t count, void* transfer);
    static int seekBody(void* transfer, curl_off_t offset, int origin);
    static std::size_t takeHeader(char* line, std::size_t size, std::size_t count, void* transfer);
    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* transfer);
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
