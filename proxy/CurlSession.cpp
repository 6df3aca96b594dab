#include "CurlSession.h"

#include "Failure.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

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
