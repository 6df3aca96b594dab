// Speaks HTTP to a hub: whole exchanges through libcurl, single bytes through a raw socket.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace HubTest {

using Headers = std::vector<std::string>;  // "Name: value"; "Name;" for an empty value

struct Reply {
    int curlResult = 0;  // a CURLcode
    long status = 0;
    std::string headerText;  // of the final response, lines ending in CR LF
    std::string body;        // as it came, still compressed

    // The value of the last header of that exact name, "" when there is none.
    std::string header(const std::string& name) const;
};

struct Call {
    std::string method = "POST";
    std::string url;
    Headers headers;
    std::string body;
    bool chunked = false;  // no Content-Length
    std::string caFile;
    long timeoutSeconds = 30;
};

Reply exchange(const Call& call);

Reply post(const std::string& url, const std::string& body, const Headers& headers = {});
Reply get(const std::string& url, const Headers& headers = {});

// All members of a gzip text, inflated; throws std::runtime_error when it is damaged or cut.
std::string gunzipped(const std::string& compressed);

// A TCP connection to 127.0.0.1. Reads wait up to 10 seconds.
class RawConnection {
public:
    explicit RawConnection(std::uint16_t port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void send(const std::string& bytes) const;

    // Everything until the peer closes. `error` receives the errno that ended it, 0 for an
    // orderly end.
    std::string readToEnd(int& error) const;

    // At least until `text` has come or the peer closes.
    std::string readUntil(const std::string& text) const;

private:
    int m_socket;
};

}  // namespace HubTest
