// Host names, resolved on the calling thread.
//
// libcurl would start a thread for each name. The addresses found here are handed to it beforehand,
// and a name that cannot be resolved never reaches it.
#ifndef MORVENN_PROXY_RESOLVER_H
#define MORVENN_PROXY_RESOLVER_H

#include <chrono>
#include <map>
#include <string>

namespace Morvenn::Net::MvServerProxy::Proxy {

class Resolver {
public:
    // The entry for libcurl, "+host:port:address,...", valid for a minute; empty for an address and
    // for "localhost", which libcurl knows by itself. Throws Failure (-1001).
    std::string entry(const std::string& host, const std::string& port);

private:
    struct Known {
        std::string entry;
        std::chrono::steady_clock::time_point until;
    };
    std::map<std::string, Known> m_known;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
