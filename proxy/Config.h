// The settings of the proxy library, read from the environment once, when it is started.
#ifndef MORVENN_PROXY_CONFIG_H
#define MORVENN_PROXY_CONFIG_H

#include <cstdint>
#include <string>

#include "ForwardProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct Config {
    std::string hub = "http://127.0.0.1:16064";  // without a slash at the end
    std::string hubOrigin;                       // of that URL
    std::string caFile;                          // empty: the system's
    std::int64_t connectTimeoutMs = 30000;
    std::int64_t idleTimeoutMs = 300000;
    std::int64_t totalTimeoutMs = 0;  // 0: none
    std::int64_t expectTimeoutMs = 1000;
    std::int64_t spoolLimit = std::int64_t{1} << 30;
    std::int64_t headerLimit = 64 * 1024;
    std::string traceFile;  // empty: no trace
    std::string spoolFolder = "/tmp";
    ForwardProxies forwardProxies;
};

// Throws Failure (-1003) that names the variable, its value and what is expected.
Config readConfig(const Variables& variables);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
