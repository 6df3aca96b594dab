#include "CurlMemory.h"

#include <curl/curl.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

std::atomic<bool> s_wiping{false};

void release(void* memory) {
    if (memory != nullptr && s_wiping.load(std::memory_order_relaxed)) {
        ::explicit_bzero(memory, ::malloc_usable_size(memory));
    }
    std::free(memory);
}

// realloc() would leave the old bytes behind when it moves them.
void* resize(void* memory, std::size_t size) {
    if (memory == nullptr || !s_wiping.load(std::memory_order_relaxed)) {
        return std::realloc(memory, size);
    }
    void* larger = std::malloc(size);
    if (larger != nullptr) {
        std::memcpy(larger, memory, std::min(size, ::malloc_usable_size(memory)));
        release(memory);
    }
    return larger;
}

}  // namespace

void startCurl() {
    static std::once_flag once;
    static CURLcode code = CURLE_FAILED_INIT;
    std::call_once(once, [] {
        code = curl_global_init_mem(CURL_GLOBAL_DEFAULT, std::malloc, release, resize, ::strdup,
                                    std::calloc);
    });
    if (code != CURLE_OK) {
        throw Failure{MV_STATUS_RUNTIME,
                      std::string("libcurl cannot be started: ") + curl_easy_strerror(code)};
    }
}

void wipeCurlMemory() {
    s_wiping.store(true, std::memory_order_relaxed);
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
