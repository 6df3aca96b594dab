// What an HTTP response says before its body, collected line by line.
//
// One transfer can bring several blocks of header lines: the answer of a forward proxy to CONNECT,
// interim answers (100), a 407 that libcurl answers by itself, and the final one. Each status line
// starts a new block; what the earlier ones leave behind is kept in the few fields that say so.
#ifndef MORVENN_PROXY_RESPONSEHEAD_H
#define MORVENN_PROXY_RESPONSEHEAD_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "RequestText.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

constexpr std::size_t kMaxResponseHeaderBytes = 300 * 1024;

class ResponseHead {
public:
    // Forgets everything.
    void clear() { *this = ResponseHead(); }

    // Takes one line, line end included. `ofConnect` says that it belongs to the answer to CONNECT.
    // Throws Failure (-1002) when the blocks grow beyond the limit.
    void line(std::string_view raw, bool ofConnect);

    bool complete() const { return m_complete; }    // the final block has ended
    bool continued() const { return m_continued; }  // a 100 came before it
    int status() const { return m_status; }
    bool success() const { return m_status < 300; }
    const std::string& reason() const { return m_reason; }
    const std::vector<Header>& headers() const { return m_headers; }
    std::string_view value(std::string_view name) const;

    // The Proxy-Authenticate values of the last 407, CONNECT's or not.
    const std::vector<std::string>& challenges() const { return m_challenges; }

private:
    void statusLine(std::string_view text);
    void headerLine(std::string_view text);

    int m_status = 0;
    bool m_ofConnect = false;
    bool m_complete = false;
    bool m_continued = false;
    std::size_t m_bytes = 0;
    std::string m_reason;
    std::vector<Header> m_headers;
    std::vector<std::string> m_challenges;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
