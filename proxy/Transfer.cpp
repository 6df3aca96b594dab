#include "Transfer.h"

#include <algorithm>
#include <utility>

#include "CurlStatus.h"
#include "TextTools.h"
#include "TransferCallbacks.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr int kProxyDemands = 407;
constexpr int kExpectationFailed = 417;
// A forward proxy that has to ask a helper before it refuses a password takes its time. A shorter
// wait would have the body sent before the challenge arrives.
constexpr std::int64_t kUnprovenExpectMs = 5000;

long info(CURL* easy, CURLINFO which) {
    long value = 0;
    curl_easy_getinfo(easy, which, &value);
    return value;
}

curl_off_t infoOffset(CURL* easy, CURLINFO which) {
    curl_off_t value = 0;
    curl_easy_getinfo(easy, which, &value);
    return value;
}

void check(CURLMcode code) {
    if (code != CURLM_OK) {
        throw Failure{MV_STATUS_RUNTIME,
                      std::string("libcurl cannot go on: ") + curl_multi_strerror(code)};
    }
}

}  // namespace

void Transfer::release() {
    abandon();
    m_session.drop();
    m_plan = {};
    m_config.reset();
}

void Transfer::configure(std::shared_ptr<const Config> config) {
    release();
    m_config = std::move(config);
    m_data.response.spool().configure(m_config->spoolFolder, m_config->spoolLimit);
}

void Transfer::start(TransferPlan plan) {
    abandon();
    m_plan = std::move(plan);
    m_data.head.clear();
    m_data.response.clear();
    m_data.joiner.reset();
    std::string key;
    if (m_plan.proxy != nullptr) {
        key = m_plan.proxy->url() + " " + std::to_string(m_plan.knowledge.number);
    }
    if (m_session.prepare(key)) {
        setLastingOptions(m_session.easy(), *m_config);
        setCallbacks();
    }
    setOptions();
    check(curl_multi_add_handle(m_session.multi(), m_session.easy()));
    m_running = true;
}

void Transfer::abandon() {
    if (m_running && refusesExpect()) {
        doWithoutExpect();
    }
    const bool interrupted = m_running && !m_finished;
    // A handle that was interrupted would send its body again.
    const bool unusable = interrupted || (m_running && mayHaveLeftBody());
    if (interrupted) {
        curl_multi_remove_handle(m_session.multi(), m_session.easy());
    }
    if (unusable) {
        m_session.drop();
        m_plan.knowledge = {};  // a refused password stays nowhere
    }
    m_errorText[0] = '\0';
    m_thrown.reset();
    m_result = CURLE_OK;
    m_running = m_finished = m_asked = m_bodyBegan = false;
    m_uploadStopped = m_readPaused = m_writePaused = false;
}

void Transfer::setCallbacks() {
    CURL* easy = m_session.easy();
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, TransferCallbacks::readBody);
    curl_easy_setopt(easy, CURLOPT_READDATA, this);
    curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, TransferCallbacks::seekBody);
    curl_easy_setopt(easy, CURLOPT_SEEKDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, TransferCallbacks::takeHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, TransferCallbacks::takeBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
}

void Transfer::setOptions() {
    OptionLists lists;
    for (const std::string& line : m_plan.headers) {
        append(lists.headers, line);
    }
    m_expecting = m_plan.upload != Upload::None && m_withoutExpect.count(way()) == 0;
    if (m_plan.upload != Upload::None && !m_expecting) {
        append(lists.headers, "Expect:");
    }
    const bool resolvesTarget = m_plan.proxy == nullptr || m_plan.proxy->scheme == "socks4" ||
                                m_plan.proxy->scheme == "socks5";
    std::string entry;
    if (m_plan.proxy != nullptr) {
        entry = m_resolver.entry(m_plan.proxy->host, m_plan.proxy->port);
    }
    if (!entry.empty()) {
        append(lists.addresses, entry);
    }
    entry = resolvesTarget ? m_resolver.entry(m_plan.target.host, m_plan.target.port) : "";
    if (!entry.empty()) {
        append(lists.addresses, entry);
    }
    const std::int64_t expectMs = m_plan.unproven()
                                      ? std::max(kUnprovenExpectMs, m_config->expectTimeoutMs)
                                      : m_config->expectTimeoutMs;
    const auto body = m_plan.upload == Upload::Whole ? m_data.body.whole() : std::string_view();
    setTransferOptions(m_session.easy(), m_plan, lists, body, static_cast<long>(expectMs));
    m_lists = std::move(lists);
}

bool Transfer::ofConnect() const {
    return m_plan.viaHttpProxy() && m_plan.target.tls &&
           info(m_session.easy(), CURLINFO_RESPONSE_CODE) == 0;
}

bool Transfer::ofProxyDemand() const {
    return m_plan.viaHttpProxy() && !m_plan.target.tls && m_data.head.status() == kProxyDemands;
}

bool Transfer::refusesExpect() const {
    return m_expecting && !m_asked && m_data.head.complete() &&
           m_data.head.status() == kExpectationFailed;
}

bool Transfer::proxyDemands() const {
    if (ofProxyDemand()) {
        return m_data.head.complete() && (m_bodyBegan || m_finished);
    }
    return failed() && m_plan.viaHttpProxy() && m_plan.target.tls &&
           info(m_session.easy(), CURLINFO_HTTP_CONNECTCODE) == kProxyDemands;
}

// A forward proxy that refuses need not have read the body: it would take the rest for the
// beginning of what follows on the same connection, or wait for ever.
bool Transfer::mayHaveLeftBody() const {
    constexpr int kFirstRefusal = 300;
    const bool refusedOpenly = m_plan.viaHttpProxy() && !m_plan.target.tls &&
                               m_plan.upload != Upload::None &&
                               m_data.head.status() >= kFirstRefusal;
    return refusedOpenly || proxyDemands();
}

void Transfer::perform() {
    m_clocks.worked();
    int running = 0;
    check(curl_multi_perform(m_session.multi(), &running));
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_session.multi(), &left)) {
        finish(message->data.result);
    }
    if (m_thrown) {
        const Failure thrown = *std::exchange(m_thrown, std::nullopt);
        throw Failure{thrown.code, m_plan.subject() + ": " + thrown.text};
    }
    noticeExpiredWait();
}

void Transfer::finish(CURLcode result) {
    m_result = result;
    m_finished = true;
    curl_multi_remove_handle(m_session.multi(), m_session.easy());
    if (m_data.joiner != nullptr) {
        m_data.response.put(m_data.joiner->finish(), false);
        m_data.joiner.reset();
    }
}

std::string Transfer::way() const {
    return m_plan.target.origin() + (m_plan.proxy == nullptr ? "" : " " + m_plan.proxy->name());
}

void Transfer::doWithoutExpect() {
    constexpr std::size_t kMostWays = 256;
    if (m_withoutExpect.size() >= kMostWays) {
        m_withoutExpect.clear();
    }
    m_withoutExpect.insert(way());
}

// A server that lets the wait for its 100 expire will do so the next time. With a forward proxy the
// wait stays: it is what lets a challenge come before the body.
void Transfer::noticeExpiredWait() {
    if (m_expecting && m_asked) {
        m_expecting = false;
        if (m_plan.proxy == nullptr && m_plan.upload == Upload::Streamed &&
            !m_data.head.continued()) {
            doWithoutExpect();
        }
    }
}

void Transfer::run(const std::function<bool()>& ready) {
    m_clocks.beginWaiting();
    while (!m_finished && !ready()) {
        perform();
        if (m_finished || ready()) {
            return;
        }
        check(curl_multi_poll(m_session.multi(), nullptr, 0, m_clocks.waitMs(m_plan.subject()),
                              nullptr));
    }
}

void Transfer::nudge() {
    constexpr std::chrono::milliseconds kOften{200};
    if (m_running && !m_finished && m_clocks.sinceLastWork() > kOften) {
        resumeUpload();
        perform();
    }
}

void Transfer::resumeUpload() {
    if (m_readPaused && !m_finished) {
        m_readPaused = false;
        curl_easy_pause(m_session.easy(), m_writePaused ? CURLPAUSE_RECV : CURLPAUSE_CONT);
    }
}

// Out of a callback. libcurl would go on reading as long as there is something to read, and what
// the caller's block cannot take would be copied twice.
void Transfer::pauseDownload() {
    m_writePaused = true;
    curl_easy_pause(m_session.easy(), m_readPaused ? CURLPAUSE_ALL : CURLPAUSE_RECV);
}

void Transfer::resumeDownload() {
    if (m_writePaused && !m_finished) {
        m_writePaused = false;
        curl_easy_pause(m_session.easy(), m_readPaused ? CURLPAUSE_SEND : CURLPAUSE_CONT);
    }
}

void Transfer::stopUpload() {
    m_uploadStopped = true;
    resumeUpload();
}

bool Transfer::diedUnheard() const {
    const bool died = m_result == CURLE_SEND_ERROR || m_result == CURLE_RECV_ERROR ||
                      m_result == CURLE_GOT_NOTHING;
    return m_finished && died && m_data.head.status() == 0 &&
           info(m_session.easy(), CURLINFO_NUM_CONNECTS) == 0;
}

Failure Transfer::failure() const {
    const auto subject = m_plan.subject() + ": ";
    const long connect = info(m_session.easy(), CURLINFO_HTTP_CONNECTCODE);
    if (m_result == CURLE_RECV_ERROR && connect >= 300) {
        return {MV_STATUS_CANNOT_CONNECT, subject + "the forward proxy refused the way to " +
                                              hostAndPort(m_plan.target.host, m_plan.target.port) +
                                              " with status " + std::to_string(connect) +
                                              "; check that it allows this host and port"};
    }
    if (m_result == CURLE_OUT_OF_MEMORY && !m_data.head.complete()) {
        return {MV_STATUS_PROTOCOL,
                subject +
                    "a line of the response header is longer than 100 KB (curl 27); "
                    "check that an HTTP/1.1 server answers on this port"};
    }
    const CurlStatus& status = statusOf(m_result);
    const std::string why =
        m_errorText[0] != '\0' ? m_errorText.data() : curl_easy_strerror(m_result);
    return {status.status,
            subject + oneLine(why) + " (curl " + std::to_string(m_result) + "); " + status.remedy};
}

std::optional<Failure> Transfer::bodyFailure() const {
    if (!failed()) {
        return std::nullopt;
    }
    // A server that has answered may close while the request is still being sent. Its answer stands
    // as long as all of it is there.
    CURL* easy = m_session.easy();
    const curl_off_t length = infoOffset(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
    if (m_result == CURLE_SEND_ERROR && length >= 0 &&
        length == infoOffset(easy, CURLINFO_SIZE_DOWNLOAD_T)) {
        return std::nullopt;
    }
    return failure();
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
