#include "TransferOptions.h"

#include "CurlMemory.h"
#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr long kReceiveRoom = 64 * 1024;  // the system is called once for four blocks of the caller
constexpr long kSendRoom = 128 * 1024;    // takes a full window with what makes a chunk of it

template <typename Value>
void set(CURL* easy, CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(easy, option, value);
    if (code != CURLE_OK) {
        throw Failure{MV_STATUS_RUNTIME, "libcurl refused option " + std::to_string(option) + ": " +
                                             curl_easy_strerror(code)};
    }
}

long curlScheme(AuthScheme scheme) {
    switch (scheme) {
        case AuthScheme::Basic:
            return static_cast<long>(CURLAUTH_BASIC);
        case AuthScheme::Digest:
            return static_cast<long>(CURLAUTH_DIGEST);
        case AuthScheme::Ntlm:
            return static_cast<long>(CURLAUTH_NTLM);
        case AuthScheme::Unknown:
            break;
    }
    return static_cast<long>(CURLAUTH_NONE);
}

void setVerification(CURL* easy, const Config& config) {
    set(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    set(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    set(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(easy, CURLOPT_PROXY_SSL_VERIFYPEER, 1L);
    set(easy, CURLOPT_PROXY_SSL_VERIFYHOST, 2L);
    set(easy, CURLOPT_PROXY_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (!config.caFile.empty()) {
        set(easy, CURLOPT_CAINFO, config.caFile.c_str());
        set(easy, CURLOPT_PROXY_CAINFO, config.caFile.c_str());
    }
}

void setProxy(CURL* easy, const TransferPlan& plan) {
    const bool authenticated = plan.viaHttpProxy() && plan.knowledge.usable();
    const Credentials& credentials = plan.knowledge.credentials;
    // The empty text means "none" and keeps libcurl from reading the environment itself.
    set(easy, CURLOPT_PROXY, plan.proxy == nullptr ? "" : plan.proxy->url().c_str());
    set(easy, CURLOPT_PROXYAUTH, authenticated ? curlScheme(plan.knowledge.scheme) : 0L);
    const char* user = authenticated ? credentials.user.c_str() : nullptr;
    const char* password = authenticated ? credentials.password.c_str() : nullptr;
    if (plan.proxy != nullptr && !plan.proxy->speaksHttp() && !plan.proxy->user.empty()) {
        user = plan.proxy->user.c_str();
        password = plan.proxy->password.c_str();
    }
    if (user != nullptr) {
        wipeCurlMemory();
    }
    set(easy, CURLOPT_PROXYUSERNAME, user);
    set(easy, CURLOPT_PROXYPASSWORD, password);
}

void setBody(CURL* easy, Upload upload, std::string_view body) {
    if (upload == Upload::None) {
        set(easy, CURLOPT_HTTPGET, 1L);
        return;
    }
    const bool whole = upload == Upload::Whole;
    set(easy, CURLOPT_POST, 1L);
    set(easy, CURLOPT_POSTFIELDS, whole ? (body.empty() ? "" : body.data()) : nullptr);
    set(easy, CURLOPT_POSTFIELDSIZE_LARGE,
        static_cast<curl_off_t>(whole ? static_cast<curl_off_t>(body.size()) : -1));
}

}  // namespace

void append(CurlList& list, const std::string& line) {
    curl_slist* longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) {
        throw Failure{MV_STATUS_RUNTIME, "libcurl has no memory for the request's header"};
    }
    static_cast<void>(list.release());
    list.reset(longer);
}

void setLastingOptions(CURL* easy, const Config& config) {
    set(easy, CURLOPT_NOSIGNAL, 1L);
    set(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    set(easy, CURLOPT_FOLLOWLOCATION, 0L);
    set(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(easy, CURLOPT_HTTP09_ALLOWED, 0L);
    set(easy, CURLOPT_ACCEPT_ENCODING, nullptr);
    set(easy, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    set(easy, CURLOPT_HEADEROPT, static_cast<long>(CURLHEADER_SEPARATE));
    set(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 0L);  // a challenge of the proxy is in them
    set(easy, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    set(easy, CURLOPT_UNRESTRICTED_AUTH, 0L);
    set(easy, CURLOPT_NOPROXY, "");
    set(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(config.connectTimeoutMs));
    set(easy, CURLOPT_DNS_CACHE_TIMEOUT, -1L);  // addresses come with every transfer
    set(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    set(easy, CURLOPT_BUFFERSIZE, kReceiveRoom);
    set(easy, CURLOPT_UPLOAD_BUFFERSIZE, kSendRoom);
    setVerification(easy, config);
}

void setTransferOptions(CURL* easy, const TransferPlan& plan, const OptionLists& lists,
                        std::string_view body, long expectTimeoutMs) {
    set(easy, CURLOPT_URL, plan.target.url.c_str());
    set(easy, CURLOPT_HTTPHEADER, lists.headers.get());
    set(easy, CURLOPT_RESOLVE, lists.addresses.get());
    set(easy, CURLOPT_EXPECT_100_TIMEOUT_MS, expectTimeoutMs);
    setBody(easy, plan.upload, body);
    setProxy(easy, plan);
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
