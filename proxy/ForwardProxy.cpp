#include "ForwardProxy.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "Failure.h"
#include "NoProxy.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

struct Scheme {
    std::string_view name;
    std::string_view port;  // when the URL names none
};
constexpr std::array<Scheme, 6> kSchemes{{{"http", "1080"},
                                          {"https", "443"},
                                          {"socks4", "1080"},
                                          {"socks4a", "1080"},
                                          {"socks5", "1080"},
                                          {"socks5h", "1080"}}};

bool namesAPort(const std::string& url) {
    const auto begin = url.find("://") + 3;
    const auto authority = url.substr(begin, url.find_first_of("/?#", begin) - begin);
    const auto host = authority.substr(authority.rfind('@') + 1);
    const auto colon = host.rfind(':');
    return colon != std::string::npos && host.find(']', colon) == std::string::npos;
}

ForwardProxy readProxy(const std::string& variable, const std::string& value) {
    const std::string url = value.find("://") == std::string::npos ? "http://" + value : value;
    UrlParts parts = [&] {
        try {
            return urlParts(url, "the value of " + variable);
        } catch (const Failure& failure) {
            throw Failure{MV_STATUS_RUNTIME, failure.text};
        }
    }();
    const auto* scheme = std::find_if(kSchemes.begin(), kSchemes.end(),
                                      [&](const Scheme& s) { return s.name == parts.scheme; });
    if (scheme == kSchemes.end()) {
        throw Failure{MV_STATUS_RUNTIME,
                      "the value of " + variable + " names a forward proxy of the kind \"" +
                          parts.scheme + "\"; use http, https, socks4, socks4a, socks5 or socks5h"};
    }
    ForwardProxy proxy;
    proxy.scheme = parts.scheme;
    proxy.host = parts.host;
    proxy.port = namesAPort(url) ? parts.port : std::string(scheme->port);
    proxy.user = std::move(parts.user);
    proxy.password = std::move(parts.password);
    return proxy;
}

std::optional<ForwardProxy> firstOf(const Variables& variables,
                                    std::initializer_list<const char*> names) {
    for (const char* name : names) {
        const char* value = variables(name);
        if (value != nullptr && *value != '\0') {
            return readProxy(name, value);
        }
    }
    return std::nullopt;
}

}  // namespace

const ForwardProxy* ForwardProxies::leadingTo(const Target& target) const {
    const auto& proxy = target.tls ? forHttps : forHttp;
    return proxy && !bypassesProxy(target.host, target.port, noProxy) ? &*proxy : nullptr;
}

ForwardProxies forwardProxies(const Variables& variables) {
    ForwardProxies proxies;
    proxies.forHttp = firstOf(variables, {"http_proxy", "all_proxy", "ALL_PROXY"});
    proxies.forHttps = firstOf(variables, {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"});
    for (const char* name : {"NO_PROXY", "no_proxy"}) {
        const char* value = variables(name);
        proxies.noProxy = value != nullptr ? value : proxies.noProxy;
    }
    return proxies;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
