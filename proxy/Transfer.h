// One HTTP transfer, driven inside the calls of the application: no thread, no callback to it.
//
// libcurl reads the request body from a BodyWindow and leaves the response in a ResponseHead and a
// ResponseBuffer. It pauses when the window runs dry or the buffer is full, and goes on in run().
#ifndef MORVENN_PROXY_TRANSFER_H
#define MORVENN_PROXY_TRANSFER_H

#include <curl/curl.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "BodyWindow.h"
#include "Clocks.h"
#include "Config.h"
#include "CurlSession.h"
#include "Failure.h"
#include "GzipJoiner.h"
#include "Resolver.h"
#include "ResponseBuffer.h"
#include "ResponseHead.h"
#include "TransferOptions.h"
#include "TransferPlan.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct TransferData {
    BodyWindow body;
    ResponseHead head;
    ResponseBuffer response;
    std::unique_ptr<GzipJoiner> joiner;  // while the body of a response comes in the gzip format
};

class Transfer {
public:
    explicit Transfer(TransferData& data) : m_data(data) {}
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() { abandon(); }

    // The settings hold from the next transfer on; connections made with others are closed.
    void configure(std::shared_ptr<const Config> config);
    // Closes all connections and forgets every credential.
    void release();
    void beginExchange() { m_clocks.beginExchange(*m_config); }

    void start(TransferPlan plan);
    // Ends a running transfer and forgets the outcome of a finished one.
    void abandon();

    bool running() const { return m_running; }
    bool finished() const { return m_finished; }
    bool failed() const { return m_finished && m_result != CURLE_OK; }
    const TransferPlan& plan() const { return m_plan; }

    bool asked() const { return m_asked; }  // libcurl has asked for the body
    // A final response header is complete, and it is for the application.
    bool answered() const { return m_data.head.complete() && !ofProxyDemand() && !refusesExpect(); }
    // The answer is a 417 to "Expect": started again, the transfer does without.
    bool refusesExpect() const;
    // The forward proxy demands credentials, and libcurl has given up on that.
    bool proxyDemands() const;
    bool decided() const { return answered() || proxyDemands() || refusesExpect(); }

    // Works until `ready`, the end of the transfer, or a time limit (Failure -1001).
    void run(const std::function<bool()>& ready);
    // Does what can be done without waiting, when that has not been done for a while: for an
    // application that produces its body slowly.
    void nudge();
    // More of the body is in the window, or its end is known.
    void resumeUpload();
    // The buffer has room again.
    void resumeDownload();
    // Nothing more of the body will be asked for.
    void stopUpload();

    // The kept connection it was sent on turned out to be dead: nothing of an answer has come.
    bool diedUnheard() const;
    // What went wrong. Requires: failed().
    Failure failure() const;
    // The same for a response whose header was complete; nothing when its body is complete too.
    std::optional<Failure> bodyFailure() const;

private:
    friend struct TransferCallbacks;

    bool ofProxyDemand() const;
    bool mayHaveLeftBody() const;
    std::string way() const;
    void doWithoutExpect();
    bool ofConnect() const;
    void pauseDownload();
    void setCallbacks();
    void setOptions();
    void perform();
    void noticeExpiredWait();
    void finish(CURLcode result);

    TransferData& m_data;
    std::shared_ptr<const Config> m_config;
    CurlSession m_session;
    Resolver m_resolver;
    Clocks m_clocks;
    TransferPlan m_plan;
    OptionLists m_lists;
    std::set<std::string> m_withoutExpect;  // ways on which "Expect" leads to nothing
    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    std::optional<Failure> m_thrown;  // inside a callback, on its way to the caller
    CURLcode m_result = CURLE_OK;
    bool m_running = false;
    bool m_finished = false;
    bool m_expecting = false;
    bool m_asked = false;
    bool m_bodyBegan = false;
    bool m_uploadStopped = false;
    bool m_readPaused = false;
    bool m_writePaused = false;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
