#include "ProxyDialogue.h"

#include <curl/curl.h>

#include <utility>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

// More than one retry without a question happens only while other threads change the credentials.
constexpr int kMaxRetries = 5;

bool speaksNtlm() {
    static const bool speaks =
        (curl_version_info(CURLVERSION_NOW)->features & CURL_VERSION_NTLM) != 0;
    return speaks;
}

}  // namespace

void ProxyDialogue::begin(std::shared_ptr<CredentialStore> store, bool canAsk) {
    m_store = std::move(store);
    m_canAsk = canAsk;
    m_answers = 0;
    m_retries = 0;
    m_challenge.clear();
}

void ProxyDialogue::giveUp(const TransferPlan& refused, const std::string& why) const {
    throw Failure{MV_STATUS_CANNOT_CONNECT, refused.subject() + ": the forward proxy " + why};
}

ProxyDialogue::Step ProxyDialogue::demanded(const TransferPlan& refused,
                                            const std::vector<std::string>& challenges) {
    m_proxy = refused.proxy->url();
    m_offer = strongestOffer(challenges, speaksNtlm());
    if (m_offer.scheme == AuthScheme::Unknown) {
        giveUp(refused, "demands credentials by a scheme that is not spoken here (it offers: " +
                            (m_offer.offered.empty() ? "none" : m_offer.offered) +
                            "); have it offer Digest or Basic, or name another one in the "
                            "*_proxy variables");
    }
    ProxyKnowledge known = m_store->about(m_proxy);
    if (known.credentials.given && known.scheme != m_offer.scheme) {
        m_store->setScheme(m_proxy, m_offer.scheme);
        known = m_store->about(m_proxy);
    }
    const bool sameAsRefused = known.number == refused.knowledge.number;
    if (known.credentials.given && !sameAsRefused && ++m_retries <= kMaxRetries) {
        return Step::Retry;
    }
    m_store->forget(m_proxy, refused.knowledge.number);
    const std::string realm =
        "(realm \"" + oneLine(m_offer.realm) + "\", scheme " + nameOf(m_offer.scheme) + ")";
    if (m_answers >= kMaxRefusedAnswers) {
        giveUp(refused,
               "refused the credentials three times " + realm + "; check user and password");
    }
    if (!m_canAsk) {
        giveUp(refused, std::string(refused.knowledge.usable() ? "refused the stored credentials "
                                                               : "demands credentials ") +
                            realm +
                            "; a request sent as one text cannot be asked for them: put them "
                            "into the URL of the *_proxy variable, or send a request with a "
                            "stream body and a credential provider first");
    }
    m_challenge = challengeText(*refused.proxy, m_offer.realm);
    return Step::Ask;
}

void ProxyDialogue::answered(std::string_view text) {
    ++m_answers;
    m_store->remember(m_proxy, readAnswer(text), m_offer.scheme);
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
