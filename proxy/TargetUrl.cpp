#include "TargetUrl.h"

#include <curl/curl.h>

#include <memory>

#include "CurlMemory.h"
#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

struct UrlCleanup {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct TextCleanup {
    void operator()(char* text) const {
        ::explicit_bzero(text, std::strlen(text));
        curl_free(text);
    }
};

Secret part(CURLU* url, CURLUPart which, unsigned flags) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, flags) != CURLUE_OK) {
        return Secret();
    }
    const std::unique_ptr<char, TextCleanup> owned(text);
    return Secret(text);
}

std::string withoutBrackets(std::string host) {
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        return host.substr(1, host.size() - 2);
    }
    return host;
}

}  // namespace

UrlParts urlParts(const std::string& url, const std::string& what) {
    if (url.find('@') != std::string::npos) {
        wipeCurlMemory();
    }
    const std::unique_ptr<CURLU, UrlCleanup> parsed(curl_url());
    if (parsed == nullptr) {
        throw Failure{MV_STATUS_RUNTIME, "out of memory while reading " + what};
    }
    const CURLUcode code =
        curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME);
    if (code != CURLUE_OK) {
        throw Failure{MV_STATUS_PROTOCOL, what + " is not a URL: " + curl_url_strerror(code) +
                                              "; give it as http://host:port/path"};
    }
    const auto text = [&](CURLUPart which, unsigned flags) {
        return std::string(part(parsed.get(), which, flags).view());
    };
    UrlParts parts;
    parts.scheme = lower(text(CURLUPART_SCHEME, 0));
    parts.user = part(parsed.get(), CURLUPART_USER, CURLU_URLDECODE);
    parts.password = part(parsed.get(), CURLUPART_PASSWORD, CURLU_URLDECODE);
    parts.host = withoutBrackets(text(CURLUPART_HOST, 0));
    parts.port = text(CURLUPART_PORT, CURLU_DEFAULT_PORT);
    parts.path = text(CURLUPART_PATH, 0);
    if (parts.host.empty()) {
        throw Failure{MV_STATUS_PROTOCOL,
                      what + " names no host; give it as http://host:port/path"};
    }
    return parts;
}

std::string hostAndPort(const std::string& host, const std::string& port) {
    const bool address6 = host.find(':') != std::string::npos;
    return (address6 ? "[" + host + "]" : host) + ":" + port;
}

Target targetUrl(const std::string& url) {
    const UrlParts parts = urlParts(url, "the request's URL");
    if (parts.scheme != "http" && parts.scheme != "https") {
        throw Failure{MV_STATUS_PROTOCOL, "the request's URL has the scheme \"" +
                                              oneLine(parts.scheme) +
                                              "\"; only http and https are spoken"};
    }
    Target target;
    target.url = url;
    target.host = parts.host;
    target.port = parts.port;
    target.tls = parts.scheme == "https";
    target.shown = target.origin() + parts.path;
    return target;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
