// How anything inside the proxy library fails: one value, thrown, caught at the eight functions
// only.
#ifndef MORVENN_PROXY_FAILURE_H
#define MORVENN_PROXY_FAILURE_H

#include <string>

namespace Morvenn::Net::MvServerProxy::Proxy {

struct Failure {
    int code;          // MV_STATUS_..., always below -1
    std::string text;  // what failed, where, why, what to try; never a secret
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
