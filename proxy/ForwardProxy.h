// Which forward proxy, if any, leads to a target: the standard *_proxy variables by their usual
// rules.
//
// http_proxy counts for http targets (lower case only: the upper-case form can be set from outside
// in a CGI process), https_proxy or HTTPS_PROXY for https targets, all_proxy or ALL_PROXY for both
// when the one before is unset; no_proxy or NO_PROXY lists the hosts reached without. A lower-case
// name wins over its upper-case form.
#ifndef MORVENN_PROXY_FORWARDPROXY_H
#define MORVENN_PROXY_FORWARDPROXY_H

#include <functional>
#include <optional>
#include <string>

#include "Secret.h"
#include "TargetUrl.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct ForwardProxy {
    std::string scheme;  // http, https, socks4, socks4a, socks5, socks5h
    std::string host;
    std::string port;
    Secret user;  // from the variable's URL; empty when it has none
    Secret password;

    // True for a proxy that speaks HTTP, which is the only kind that sends challenges.
    bool speaksHttp() const { return scheme == "http" || scheme == "https"; }
    std::string name() const { return hostAndPort(host, port); }
    // Without user and password: the library hands those over only after it knows the scheme.
    std::string url() const { return scheme + "://" + name(); }
};

// The value of a variable; nullptr when it is unset.
using Variables = std::function<const char*(const char* name)>;

struct ForwardProxies {
    std::optional<ForwardProxy> forHttp;
    std::optional<ForwardProxy> forHttps;
    std::string noProxy;

    // nullptr when the target is reached without.
    const ForwardProxy* leadingTo(const Target& target) const;
};

// Throws Failure (-1003) that names the variable when one of them cannot be read.
ForwardProxies forwardProxies(const Variables& variables);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
