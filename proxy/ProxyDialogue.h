// What one exchange does about a forward proxy that demands credentials: use those it has, ask the
// application, or give up.
#ifndef MORVENN_PROXY_PROXYDIALOGUE_H
#define MORVENN_PROXY_PROXYDIALOGUE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CredentialStore.h"
#include "TransferPlan.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

constexpr int kMaxRefusedAnswers = 3;

class ProxyDialogue {
public:
    enum class Step {
        Retry,  // send again with what the store holds now
        Ask,    // give challenge() to the application, then call answered()
    };

    // A new exchange. `canAsk`: the application can be asked, which a request sent as one text
    // cannot.
    void begin(std::shared_ptr<CredentialStore> store, bool canAsk);

    // The forward proxy has refused a transfer. Throws Failure (-1001) when nothing is left to try.
    Step demanded(const TransferPlan& refused, const std::vector<std::string>& challenges);
    const std::string& challenge() const { return m_challenge; }

    // Takes the answer text. Throws Failure (-1002).
    void answered(std::string_view text);

private:
    [[noreturn]] void giveUp(const TransferPlan& refused, const std::string& why) const;

    std::shared_ptr<CredentialStore> m_store;
    bool m_canAsk = false;
    int m_answers = 0;
    int m_retries = 0;
    std::string m_proxy;
    ProxyOffer m_offer;
    std::string m_challenge;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
