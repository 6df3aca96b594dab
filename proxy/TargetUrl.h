// URLs taken apart: the target of an exchange, and the address of a forward proxy.
#ifndef MORVENN_PROXY_TARGETURL_H
#define MORVENN_PROXY_TARGETURL_H

#include <string>

#include "Secret.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct UrlParts {
    std::string scheme;  // lower case
    Secret user;         // decoded; empty when the URL has none
    Secret password;
    std::string host;  // IPv6 addresses without brackets
    std::string port;  // the scheme's own when the URL names none; empty when that is not known
    std::string path;
};

// Throws Failure (-1002) with `what` as the subject of its text when the URL cannot be read.
UrlParts urlParts(const std::string& url, const std::string& what);

// "host:port", an IPv6 host in brackets.
std::string hostAndPort(const std::string& host, const std::string& port);

struct Target {
    std::string url;    // as it is asked for
    std::string shown;  // the same without user, password, query: for texts and traces
    std::string host;
    std::string port;
    bool tls = false;

    std::string origin() const { return (tls ? "https://" : "http://") + hostAndPort(host, port); }
};

// Throws Failure (-1002) unless the URL is a well-formed http or https one.
Target targetUrl(const std::string& url);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
