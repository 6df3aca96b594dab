// Everything one transfer needs to know before it starts.
#ifndef MORVENN_PROXY_TRANSFERPLAN_H
#define MORVENN_PROXY_TRANSFERPLAN_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "CredentialStore.h"
#include "ForwardProxy.h"
#include "TargetUrl.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

enum class Upload {
    None,      // GET
    Whole,     // POST, the body is in the window and its length is sent
    Streamed,  // POST, the body is read from the window as it comes, in chunks
};

struct TransferPlan {
    Target target;
    std::vector<std::string> headers;
    Upload upload = Upload::None;
    const ForwardProxy* proxy = nullptr;  // of the settings; nullptr: direct
    ProxyKnowledge knowledge;             // of that proxy

    bool viaHttpProxy() const { return proxy != nullptr && proxy->speaksHttp(); }
    // True when a challenge may come: the forward proxy has not let anything through yet.
    bool unproven() const { return viaHttpProxy() && !knowledge.admitted; }

    // "cannot exchange with <target> [through forward proxy <host:port>]": how error texts begin.
    std::string subject() const {
        return "cannot exchange with " + target.shown +
               (proxy == nullptr ? "" : " through forward proxy " + proxy->name());
    }
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
