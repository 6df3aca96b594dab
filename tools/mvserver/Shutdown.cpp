// mvserver shutdown: asks the server to shut down.

#include "Headers.h"
#include "Json.h"
#include "Redact.h"
#include "SessionFile.h"
#include "Verbs.h"

#include <morvenn/net/mvserverproxy/client/MvServerRequest.h>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using namespace Morvenn::Net::MvServerProxy::Client;

struct ShutdownOptions {
    std::vector<std::string> headers;
    std::string session;
};

nlohmann::json shutDown(const ShutdownOptions& options, const Context& context) {
    std::map<std::string, std::string> headers;
    addHeaders(headers, options.headers);
    if (!options.session.empty()) {
        const std::string id = SessionFile(options.session).load();
        if (!id.empty()) {
            addHeader(headers, HeaderKeys::kSessionId, id);
        }
    }
    MvServerRequest::init();
    MSPSession session;
    MvServerRequest request(&session);
    trace(context, 1, std::string("> ") + HeaderKeys::kShutdownServer);
    for (const auto& [name, value] : headers) {
        trace(context, 1, "> " + shownHeader(name, value));
        request.setHeader(name, value);
    }
    request.shutdownServer();
    return {{"shutdown", "requested"}};
}

}  // namespace

void addShutdown(Verb program, Context& context) {
    auto options = std::make_shared<ShutdownOptions>();
    Verb verb = program.verb("shutdown", "Ask the server to shut down");
    verb.texts("-H,--header", options->headers, "NAME=VALUE", "Request header; may be repeated");
    verb.text("--session", options->session, "FILE", "File that holds a session id");
    verb.whenChosen([options, &context] {
        context.action = [options, &context] { return shutDown(*options, context); };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
