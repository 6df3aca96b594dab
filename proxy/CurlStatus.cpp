#include "CurlStatus.h"

#include <algorithm>
#include <array>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr const char* kTryName = "check the name and the name service";
constexpr const char* kTryServer = "check that the server runs there and that nothing blocks it";
constexpr const char* kTryTime = "check the network, or raise MV_SERVERPROXY_CONNECT_TIMEOUT_MS";
constexpr const char* kTryTrust =
    "check the server's certificate; a private authority is named by MV_SERVERPROXY_CA_FILE";
constexpr const char* kTryTls = "check that the server speaks TLS 1.2 or newer on this port";
constexpr const char* kTryProxy = "check the *_proxy variables and the forward proxy";
constexpr const char* kTryAgain = "the server or something on the way closed it; try again";
constexpr const char* kTryPeer = "check that an HTTP/1.1 server answers on this port";
constexpr const char* kTryUrl = "give the URL as http://host:port/path";
constexpr const char* kTryTrace = "set MV_SERVERPROXY_TRACE to see the calls that led here";

constexpr CurlStatus kOthers{CURL_LAST, MV_STATUS_RUNTIME, kTryTrace};

constexpr std::array<CurlStatus, 22> kTable{{
    {CURLE_COULDNT_RESOLVE_PROXY, MV_STATUS_CANNOT_CONNECT, kTryProxy},
    {CURLE_COULDNT_RESOLVE_HOST, MV_STATUS_CANNOT_CONNECT, kTryName},
    {CURLE_COULDNT_CONNECT, MV_STATUS_CANNOT_CONNECT, kTryServer},
    {CURLE_OPERATION_TIMEDOUT, MV_STATUS_CANNOT_CONNECT, kTryTime},
    {CURLE_SSL_CONNECT_ERROR, MV_STATUS_CANNOT_CONNECT, kTryTls},
    {CURLE_PEER_FAILED_VERIFICATION, MV_STATUS_CANNOT_CONNECT, kTryTrust},
    {CURLE_SSL_ISSUER_ERROR, MV_STATUS_CANNOT_CONNECT, kTryTrust},
    {CURLE_SSL_CERTPROBLEM, MV_STATUS_CANNOT_CONNECT, kTryTrust},
    {CURLE_SSL_CIPHER, MV_STATUS_CANNOT_CONNECT, kTryTls},
    {CURLE_SSL_CACERT_BADFILE, MV_STATUS_CANNOT_CONNECT,
     "MV_SERVERPROXY_CA_FILE has to name a readable file of PEM certificates"},
    {CURLE_PROXY, MV_STATUS_CANNOT_CONNECT, kTryProxy},
    {CURLE_PARTIAL_FILE, MV_STATUS_CONNECTION_LOST, kTryAgain},
    {CURLE_GOT_NOTHING, MV_STATUS_CONNECTION_LOST, kTryAgain},
    {CURLE_SEND_ERROR, MV_STATUS_CONNECTION_LOST, kTryAgain},
    {CURLE_RECV_ERROR, MV_STATUS_CONNECTION_LOST, kTryAgain},
    {CURLE_SEND_FAIL_REWIND, MV_STATUS_CONNECTION_LOST, kTryAgain},
    {CURLE_UNSUPPORTED_PROTOCOL, MV_STATUS_PROTOCOL, kTryPeer},
    {CURLE_URL_MALFORMAT, MV_STATUS_PROTOCOL, kTryUrl},
    {CURLE_WEIRD_SERVER_REPLY, MV_STATUS_PROTOCOL, kTryPeer},
    {CURLE_HTTP2, MV_STATUS_PROTOCOL, kTryPeer},
    {CURLE_BAD_CONTENT_ENCODING, MV_STATUS_PROTOCOL, kTryPeer},
    {CURLE_OUT_OF_MEMORY, MV_STATUS_RUNTIME, "free memory, or send less at once"},
}};

}  // namespace

const CurlStatus& statusOf(CURLcode code) {
    const auto* row = std::find_if(kTable.begin(), kTable.end(),
                                   [&](const CurlStatus& s) { return s.curl == code; });
    return row == kTable.end() ? kOthers : *row;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
