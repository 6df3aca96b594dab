// The libcurl handles of one thread, made when they are first needed.
//
// They are kept from exchange to exchange, with the connections that are open in them, as long as
// the forward proxy and its credentials stay the same. Any change starts with fresh ones.
#ifndef MORVENN_PROXY_CURLSESSION_H
#define MORVENN_PROXY_CURLSESSION_H

#include <curl/curl.h>

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Proxy {

class CurlSession {
public:
    // Makes fresh handles when there are none or when `key` differs from the last one's.
    // True when they are fresh. Throws Failure (-1003).
    bool prepare(const std::string& key);
    void drop();

    CURL* easy() const { return m_easy.get(); }
    CURLM* multi() const { return m_multi.get(); }

private:
    struct EasyCleanup {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct MultiCleanup {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    std::string m_key;
    std::unique_ptr<CURLM, MultiCleanup> m_multi;
    std::unique_ptr<CURL, EasyCleanup> m_easy;  // goes before the multi handle it was in
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
