// What an exchange does on the network: work towards the next instruction and towards the answer.
#include <utility>

#include "Exchange.h"
#include "ResponseText.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

void Exchange::startTransfer(Upload upload) {
    m_planned.upload = upload;
    if (m_planned.viaHttpProxy()) {
        m_planned.knowledge = m_store->about(m_planned.proxy->url());
    }
    m_transfer.start(m_planned);
}

Upload Exchange::uploadOfWhole() const {
    return m_kind == Kind::Directory ? Upload::None : Upload::Whole;
}

int Exchange::instruct() {
    if (m_lateDemand) {
        m_lateDemand = false;
        moveTo(State::Challenge);
        return MV_INSTRUCTION_CREDENTIAL_CHALLENGE;
    }
    if (!m_data.body.ended()) {
        return awaitInstruction();
    }
    if (awaitAnswer()) {
        return ready();
    }
    moveTo(State::Challenge);
    return MV_INSTRUCTION_CREDENTIAL_CHALLENGE;
}

// Before the body: 16 when it is wanted, 17 when credentials are, 18 when the answer needs no body.
// Without a forward proxy in doubt the body is asked for at once, and its beginning is collected
// before anything is sent.
int Exchange::awaitInstruction() {
    if (m_planned.viaHttpProxy()) {
        m_planned.knowledge = m_store->about(m_planned.proxy->url());
    }
    while (m_transfer.running() || m_planned.unproven()) {
        if (!m_transfer.running()) {
            startTransfer(Upload::Streamed);
        }
        m_transfer.run([&] { return m_transfer.asked() || m_transfer.decided(); });
        if (m_transfer.proxyDemands()) {
            if (dealWithDemand()) {
                continue;
            }
            moveTo(State::Challenge);
            return MV_INSTRUCTION_CREDENTIAL_CHALLENGE;
        }
        if (startsAgain()) {
            continue;
        }
        const bool wantsBody = m_data.head.success() && m_data.head.continued();
        if (m_transfer.answered() && !wantsBody) {
            return ready();
        }
        break;
    }
    moveTo(State::Body);
    return MV_INSTRUCTION_SEND_BODY;
}

// With the body complete: works until the response header is complete. False when the application
// has to be asked for credentials.
bool Exchange::awaitAnswer() {
    for (;;) {
        if (!m_transfer.running()) {
            startTransfer(uploadOfWhole());
        }
        m_transfer.resumeUpload();
        m_transfer.run([&] { return m_transfer.decided(); });
        if (m_transfer.proxyDemands()) {
            if (!dealWithDemand()) {
                return false;
            }
            continue;
        }
        if (!startsAgain()) {
            return true;
        }
    }
}

// True when the transfer has been abandoned to be started again, false when it has an answer.
// A kept connection may die between two exchanges. libcurl repeats the request on its own, but only
// five times in the life of a handle; after that it is repeated from here, once in an exchange.
bool Exchange::startsAgain() {
    const bool refused = m_transfer.refusesExpect();
    const bool failed = m_transfer.failed() && !m_transfer.answered();
    if (!refused && !failed) {
        return false;
    }
    const bool revives = !m_revived && m_transfer.diedUnheard();
    if (!m_data.body.rewindable() || (failed && !revives)) {
        throw m_transfer.failure();
    }
    m_revived = m_revived || revives;
    m_transfer.abandon();
    m_data.body.rewind();
    return true;
}

// True when the transfer is to be started again, false when the application has to be asked.
bool Exchange::dealWithDemand() {
    const TransferPlan refused = m_transfer.plan();
    const std::vector<std::string> challenges = m_data.head.challenges();
    m_transfer.abandon();
    m_planned.knowledge = {};
    if (!m_data.body.rewind()) {
        throw Failure{MV_STATUS_CANNOT_CONNECT,
                      refused.subject() +
                          ": the forward proxy demanded credentials after the body had been sent; "
                          "put them into the URL of the *_proxy variable"};
    }
    return m_dialogue.demanded(refused, challenges) == ProxyDialogue::Step::Retry;
}

// The response can be read: its header block is made here, so that no call that reads it can fail.
int Exchange::ready() {
    if (m_planned.viaHttpProxy()) {
        m_store->admit(m_planned.proxy->url(), m_transfer.plan().knowledge.number);
    }
    m_block = responseText(m_data.head);
    m_blockPos = 0;
    if (!m_data.body.ended()) {
        m_data.body.end();
        m_transfer.stopUpload();
    }
    moveTo(State::Response);
    return MV_INSTRUCTION_RESPONSE_READY;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
