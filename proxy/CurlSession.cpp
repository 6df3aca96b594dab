#include "CurlSession.h"

#include <malloc.h>

#include <algorithm>

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

void wipeAndFree(void* memory) {
    if (memory != nullptr) {
        ::explicit_bzero(memory, ::malloc_usable_size(memory));
        std::free(memory);
    }
}

void* wipingRealloc(void* memory, std::size_t size) {
    if (memory == nullptr) {
        return std::malloc(size);
    }
    void* larger = std::malloc(size);
    if (larger != nullptr) {
        std::memcpy(larger, memory, std::min(size, ::malloc_usable_size(memory)));
        wipeAndFree(memory);
    }
    return larger;
}

}  // namespace

void startCurl() {
    static std::once_flag once;
    static CURLcode code = CURLE_FAILED_INIT;
    std::call_once(once, [] {
        code = curl_global_init_mem(CURL_GLOBAL_DEFAULT, std::malloc, wipeAndFree, wipingRealloc,
                                    ::strdup, std::calloc);
    });
    if (code != CURLE_OK) {
        throw Failure{MV_STATUS_RUNTIME,
                      std::string("libcurl cannot be started: ") + curl_easy_strerror(code)};
    }
}

bool CurlSession::prepare(const std::string& key) {
    if (m_easy != nullptr && key == m_key) {
        return false;
    }
    drop();
    m_multi.reset(curl_multi_init());
    m_easy.reset(curl_easy_init());
    if (m_multi == nullptr || m_easy == nullptr) {
        drop();
        throw Failure{MV_STATUS_RUNTIME, "libcurl has no memory for another connection"};
    }
    m_key = key;
    return true;
}

void CurlSession::drop() {
    m_easy.reset();
    m_multi.reset();
    m_key.clear();
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
