#include "Exchange.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "DirectoryBlock.h"
#include "ResponseText.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr int kFirstNotSuccess = 300;
constexpr int kOk = 200;

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
    m_planned = {};
    m_planned.target = targetUrl(requestUrl(request, m_config->hub));
    m_planned.headers = httpHeaders(request);
    // The hub is a service of this machine; no forward proxy leads to it.
    const bool toHub = m_planned.target.origin() == targetUrl(m_config->hub).origin();
    m_planned.proxy = toHub ? nullptr : m_config->forwardProxies.leadingTo(m_planned.target);
    m_transfer.beginExchange();
    m_dialogue.begin(m_store, m_kind == Kind::Stream);
    if (m_kind == Kind::Stream) {
        moveTo(State::Waiting);
        return 0;
    }
    m_data.body.append(request.body);
    m_data.body.end();
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
    if (m_data.head.status() >= kFirstNotSuccess) {
        throw Failure{MV_STATUS_PROTOCOL, m_planned.subject() + ": the hub refused to shut down " +
                                              "with status " +
                                              std::to_string(m_data.head.status()) +
                                              "; check that MV_SERVERPROXY_HUB names a hub"};
    }
    complete();
    return 0;
}

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
        const bool wantsBody = m_data.head.status() < kFirstNotSuccess && m_data.head.continued();
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

// The server has refused the request while its body was being sent.
bool Exchange::answeredWithoutBody() const {
    return m_transfer.answered() && m_data.head.status() >= kFirstNotSuccess;
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

int Exchange::giveResponse(char* block) {
    const std::size_t count =
        std::min<std::size_t>(m_block.size() - m_blockPos, MV_PROXY_BLOCK_SIZE);
    if (count == 0) {
        return m_kind == Kind::Directory ? giveDirectory(block) : giveBody(block);
    }
    std::memcpy(block, m_block.data() + m_blockPos, count);
    m_blockPos += count;
    return static_cast<int>(count);
}

int Exchange::giveBody(char* block) {
    ResponseBuffer& response = m_data.response;
    std::size_t count = response.take(block, MV_PROXY_BLOCK_SIZE);
    if (count == 0) {
        response.openBlock(block, MV_PROXY_BLOCK_SIZE);
        m_transfer.resumeDownload();
        m_transfer.run([&] { return response.inBlock() > 0; });
        count = response.closeBlock();
    }
    return count > 0 ? static_cast<int>(count) : endOfResponse();
}

int Exchange::giveDirectory(char* block) {
    ResponseBuffer& response = m_data.response;
    if (response.buffered() < MV_PROXY_BLOCK_SIZE) {
        m_transfer.resumeDownload();
        m_transfer.run([&] { return response.buffered() >= MV_PROXY_BLOCK_SIZE; });
    }
    const std::size_t count =
        directoryBlock(response.front(), MV_PROXY_BLOCK_SIZE, m_transfer.finished());
    return count > 0 ? static_cast<int>(response.take(block, count)) : endOfResponse();
}

int Exchange::endOfResponse() const {
    if (const auto failure = m_transfer.bodyFailure()) {
        throw *failure;
    }
    return MV_STATUS_END_OF_RESPONSE;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
