#include "Exchange.h"

#include <cstring>
#include <utility>

#include "ResponseText.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr int kOk = 200;
constexpr std::size_t kKeptText = 128 * 1024;

}  // namespace

void Exchange::configure(std::shared_ptr<const Config> config,
                         std::shared_ptr<CredentialStore> store) {
    complete();
    m_config = std::move(config);
    m_store = std::move(store);
    m_transfer.configure(m_config);
}

void Exchange::release() {
    complete();
    m_transfer.release();
    m_lastTarget = {};
    m_config.reset();
    m_store.reset();
}

void Exchange::moveTo(State state) {
    if (!isLegalMove(m_state, state)) {
        throw Failure{MV_STATUS_RUNTIME, std::string("the exchange cannot go from ") +
                                             nameOf(m_state) + " to " + nameOf(state)};
    }
    m_state = state;
}

void Exchange::outOfOrder(const char* function) const {
    throw OutOfOrder{{MV_STATUS_PROTOCOL, std::string(function) +
                                              " was called out of order (state " + nameOf(m_state) +
                                              "); begin with a header text"}};
}

int Exchange::send(std::string_view text) {
    return begin(text, Form::Acknowledged);
}

int Exchange::sendNoAck(std::string_view text) {
    if (m_state == State::Body) {
        return takeChunk(text);
    }
    if (m_state == State::Answer && isAnswer(text)) {
        return takeAnswer(text);
    }
    if (m_state == State::Header && m_form == Form::Unacknowledged) {
        m_text.append(text);
        return 1;
    }
    return begin(text, Form::Unacknowledged);
}

// Whatever ran before is over: a request object that failed or was abandoned may still be alive
// when the next one starts.
int Exchange::begin(std::string_view text, Form form) {
    complete();
    moveTo(State::Header);
    m_form = form;
    m_text = text;
    return 1;
}

int Exchange::sendEof() {
    switch (m_state) {
        case State::Header:
            return submit();
        case State::Body:
            return endBody();
        case State::Failed:
            return m_failure.code;
        default:
            outOfOrder("MvServerProxy_SendEOF");
    }
}

int Exchange::receive(char* block) {
    switch (m_state) {
        case State::Waiting:
        case State::BodyEnded:
            return instruct();
        case State::Challenge:
            return giveChallenge(block);
        case State::Response:
            return giveResponse(block);
        case State::Failed:
            return m_failure.code;
        default:
            outOfOrder("MvServerProxy_Receive");
    }
}

void Exchange::complete() {
    m_transfer.abandon();
    m_data.body.clear();
    m_data.head.clear();
    m_data.response.clear();
    m_planned = {};
    if (m_text.capacity() > kKeptText) {
        std::string().swap(m_text);  // a large text body came by; its room is given back
    }
    m_text.clear();
    m_block.clear();
    m_blockPos = 0;
    m_lateDemand = false;
    m_revived = false;
    m_failure = {0, {}};
    moveTo(State::Idle);
}

void Exchange::fail(Failure failure) {
    m_transfer.abandon();
    m_failure = std::move(failure);
    moveTo(State::Failed);
}

void Exchange::note(const OutOfOrder& call) {
    m_failure = call.failure;
}

int Exchange::submit() {
    const auto limit = static_cast<std::size_t>(m_config->headerLimit);
    const RequestText request = readRequestText(m_text, m_form, limit);
    m_kind = request.kind;
    const std::string url = requestUrl(request, m_config->hub);
    if (url != m_lastTarget.url) {
        m_lastTarget = targetUrl(url);
    }
    m_planned = {};
    m_planned.target = m_lastTarget;
    m_planned.headers = httpHeaders(request);
    // The hub is a service of this machine; no forward proxy leads to it.
    const bool toHub = m_planned.target.origin() == m_config->hubOrigin;
    m_planned.proxy = toHub ? nullptr : m_config->forwardProxies.leadingTo(m_planned.target);
    m_transfer.beginExchange();
    m_dialogue.begin(m_store, m_kind == Kind::Stream);
    if (m_kind == Kind::Stream) {
        moveTo(State::Waiting);
        return 0;
    }
    m_data.body.lend(request.body);
    awaitAnswer();
    if (m_kind == Kind::Shutdown) {
        return submitShutdown();
    }
    return m_kind == Kind::Directory ? submitDirectory() : submitText();
}

int Exchange::submitText() {
    ready();
    return 0;
}

int Exchange::submitDirectory() {
    if (m_data.head.status() != kOk || isGzip(m_data.head)) {
        throw Failure{MV_STATUS_PROTOCOL,
                      m_planned.subject() + ": the hub answered the directory " +
                          "request with status " + std::to_string(m_data.head.status()) +
                          "; check that MV_SERVERPROXY_HUB names a hub"};
    }
    moveTo(State::Response);
    return 0;
}

int Exchange::submitShutdown() {
    if (!m_data.head.success()) {
        throw Failure{MV_STATUS_PROTOCOL, m_planned.subject() + ": the hub refused to shut down " +
                                              "with status " +
                                              std::to_string(m_data.head.status()) +
                                              "; check that MV_SERVERPROXY_HUB names a hub"};
    }
    complete();
    return 0;
}

// The server has refused the request while its body was being sent.
bool Exchange::answeredWithoutBody() const {
    return m_transfer.answered() && !m_data.head.success();
}

int Exchange::takeChunk(std::string_view chunk) {
    if (chunk.empty()) {
        return 1;
    }
    BodyWindow& body = m_data.body;
    if (!body.fits(chunk.size())) {
        if (!m_transfer.running()) {
            startTransfer(Upload::Streamed);
        }
        m_transfer.resumeUpload();
        m_transfer.run([&] {
            return body.unread() <= BodyWindow::kCapacity / 2 || answeredWithoutBody() ||
                   m_transfer.proxyDemands() || m_transfer.refusesExpect();
        });
    }
    m_transfer.nudge();
    if (m_transfer.proxyDemands()) {
        body.append(chunk);
        m_lateDemand = !dealWithDemand();
        return m_lateDemand ? 0 : 1;
    }
    if (!startsAgain() && (m_transfer.finished() || answeredWithoutBody())) {
        return 0;
    }
    body.append(chunk);
    return 1;
}

int Exchange::endBody() {
    if (m_lateDemand) {
        moveTo(State::Waiting);
        return 0;
    }
    m_data.body.end();
    moveTo(State::BodyEnded);
    return 0;
}

int Exchange::giveChallenge(char* block) {
    const std::string& text = m_dialogue.challenge();
    std::memcpy(block, text.c_str(), text.size() + 1);  // its reader looks at the byte after it
    moveTo(State::Answer);
    return static_cast<int>(text.size());
}

int Exchange::takeAnswer(std::string_view text) {
    m_dialogue.answered(text);
    moveTo(State::Waiting);
    return 1;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
