// The whole response as one string: execute() and what an application would write instead.
#include <iterator>
#include <memory>
#include <sstream>

#include "micro/Works.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "support/Rows.h"
#include "support/Samples.h"
#include "support/ScriptedProxy.h"

namespace Morvenn::Bench {

namespace {

namespace Client = Net::MvServerProxy::Client;

constexpr std::size_t kSize = std::size_t{1} << 20U;

std::string received(Client::MvServerRequest& request) {
    return request.execute();
}

std::string receivedByStringStream(Client::MvServerRequest& request) {
    const std::unique_ptr<std::istream> stream(request.send());
    std::ostringstream out;
    out << stream->rdbuf();
    return out.str();
}

std::string receivedByIterators(Client::MvServerRequest& request) {
    const std::unique_ptr<std::istream> stream(request.send());
    return {std::istreambuf_iterator<char>(*stream), std::istreambuf_iterator<char>()};
}

// What nobody can do who does not know the size beforehand.
std::string receivedAtOnce(Client::MvServerRequest&) {
    std::string text(kSize, '\0');
    char head[MV_PROXY_BLOCK_SIZE];
    MvServerProxy_Receive(head);
    std::size_t size = 0;
    while (size < kSize) {
        size += static_cast<std::size_t>(MvServerProxy_Receive(text.data() + size));
    }
    MvServerProxy_Complete();
    return text;
}

std::function<void(Sink&)> with(const Answer& answer,
                                std::string (*receive)(Client::MvServerRequest&)) {
    return [answer, receive](Sink& sink) {
        setAnswer(answer);
        Client::MSPSession session;
        Client::MvServerRequest request(&session);
        request.setBody("<request/>");
        sink.take(receive(request));
    };
}

}  // namespace

void registerExecution() {
    static const std::string data = xmlSample(kSize);
    const Answer answer = answerOf("ResponseHeaderResponseCode=200\n\n", data);
    registerRows("execute_1_mib", kSize,
                 {{"limit", with(answer, receivedAtOnce)},
                  {"library", with(answer, received)},
                  {"stringstream", with(answer, receivedByStringStream)},
                  {"iterators", with(answer, receivedByIterators)}});
}

}  // namespace Morvenn::Bench
