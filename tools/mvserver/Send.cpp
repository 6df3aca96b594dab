// mvserver send: one or several exchanges in one session.

#include "CredentialPrompt.h"
#include "Exchange.h"
#include "Failure.h"
#include "Headers.h"
#include "Json.h"
#include "OutputFile.h"
#include "Redact.h"
#include "SessionFile.h"
#include "Terminal.h"
#include "Verbs.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using namespace Morvenn::Net::MvServerProxy::Client;

struct SendOptions {
    std::vector<std::string> headers;
    std::string url;
    std::string environment;
    std::vector<std::string> data;
    std::vector<std::string> outputs;
    bool stream = false;
    bool text = false;
    bool compressed = false;
    bool fail = false;
    std::string session;
    CredentialOptions credentials;
};

constexpr std::size_t kBlock = 16384;
constexpr std::size_t kShownOfFailure = 300;
constexpr int kMostDescriptors = 1 << 20;

// Collects a body for the JSON result.
class TextOutput : public Output {
public:
    void write(const char* bytes, std::size_t count) override { m_text.append(bytes, count); }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

// Hands on what is there instead of waiting for a full block, so that a slow response shows at
// once.
void copy(std::istream& from, Output& to, Progress& progress) {
    std::streambuf& source = *from.rdbuf();
    char block[kBlock];
    while (source.sgetc() != std::streambuf::traits_type::eof()) {
        const auto ready = std::min<std::streamsize>(source.in_avail(), kBlock);
        const auto count = static_cast<std::size_t>(source.sgetn(block, ready));
        progress.received(count);
        to.write(block, count);
    }
    to.commit();
}

std::string beginning(std::istream& from) {
    std::streambuf& source = *from.rdbuf();
    char block[kShownOfFailure];
    const std::streamsize count = source.sgetn(block, sizeof block);
    return escaped(
        std::string(block, static_cast<std::size_t>(std::max<std::streamsize>(count, 0))));
}

void failOnBadCode(const Response& response) {
    if (std::strtol(response.code.c_str(), nullptr, 10) < 400) {
        return;
    }
    const std::string status = escaped(response.code + " " + response.text);
    const std::string text = beginning(*response.body);
    throw Failure(ExitCode::ServerFailure,
                  "the server answered " + status + (text.empty() ? "" : ": " + text));
}

Plan planFor(const SendOptions& options) {
    Plan plan;
    plan.asText = options.text;
    addHeaders(plan.headers, options.headers);
    if (!options.url.empty()) {
        addHeader(plan.headers, HeaderKeys::kBaseFullUrl, options.url);
    }
    if (!options.environment.empty()) {
        addHeader(plan.headers, HeaderKeys::kEnvName, options.environment);
    }
    if (options.compressed) {
        addHeader(plan.headers, HeaderKeys::kUseCompression, "true");
    }
    if (!options.session.empty() && plan.headers.count(HeaderKeys::kSessionId) > 0) {
        throw Failure(ExitCode::Usage, "--session and a SessionID header exclude each other");
    }
    return plan;
}

// The exchanges of one call of the verb.
class Sender {
public:
    Sender(const SendOptions& options, const Context& context)
        : m_options(options),
          m_context(context),
          m_plan(planFor(options)),
          m_credentials(options.credentials),
          m_sessionFile(options.session),
          m_progress(meterWanted()) {
        for (const std::string& named : options.data) {
            m_bodies.emplace_back(named);
        }
    }

    nlohmann::json run() {
        nlohmann::json exchanges = nlohmann::json::array();
        for (std::size_t i = 0; i < m_bodies.size(); ++i) {
            exchanges.push_back(
                one(m_bodies[i], i < m_options.outputs.size() ? m_options.outputs[i] : ""));
        }
        return {{"exchanges", exchanges}};
    }

private:
    bool meterWanted() const {
        const bool dataElsewhere = !m_options.outputs.empty() || !isTerminal(STDOUT_FILENO);
        return m_context.progress.value_or(isTerminal(STDERR_FILENO) && dataElsewhere &&
                                           !m_context.json);
    }

    std::unique_ptr<Output> openOutput(const std::string& file) const {
        if (!file.empty() && file != "-") {
            return openOutputFile(file);
        }
        if (m_context.json) {
            return std::make_unique<TextOutput>();
        }
        return standardOutput();
    }

    Response open(Body& body) {
        if (m_options.session.empty()) {
            return openResponse(m_session, m_credentials, m_plan, body, m_progress);
        }
        std::string id = m_sessionFile.load();
        Response response = openResponse(id, m_plan, body, m_progress);
        m_sessionFile.store(id);
        return response;
    }

    nlohmann::json one(Body& body, const std::string& file) {
        const std::unique_ptr<Output> output = openOutput(file);
        m_progress.start(body.size());
        traceRequest();
        const Response response = open(body);
        const double waited = m_progress.seconds();
        m_progress.clear();
        traceResponse(response, waited);
        if (m_options.fail) {
            failOnBadCode(response);
        }
        copy(*response.body, *output, m_progress);
        m_progress.clear();
        trace(m_context, 1,
              "  sent " + std::to_string(m_progress.bytesSent()) + " bytes, received " +
                  std::to_string(m_progress.bytesReceived()) + " bytes");
        return result(response, *output, file);
    }

    nlohmann::json result(const Response& response, const Output& output,
                          const std::string& file) const {
        nlohmann::json members = {
            {"code", response.code},
            {"text", response.text},
            {"contentType", response.contentType},
            {"bytesSent", m_progress.bytesSent()},
            {"bytesReceived", m_progress.bytesReceived()},
            {"seconds", m_progress.seconds()},
        };
        if (const auto* text = dynamic_cast<const TextOutput*>(&output)) {
            addText(members, "body", text->text());
        } else {
            members["file"] = file;
        }
        return members;
    }

    void traceRequest() const {
        for (const auto& [name, value] : m_plan.headers) {
            trace(m_context, 1, "> " + shownHeader(name, value));
        }
        trace(m_context, 1,
              std::string("> body as a ") + (m_plan.asText ? "text in one piece" : "stream"));
    }

    void traceResponse(const Response& response, double waited) const {
        trace(m_context, 1, "< " + escaped(response.code + " " + response.text));
        trace(m_context, 1, "< " + shownHeader(HeaderKeys::kContentType, response.contentType));
        trace(m_context, 2, "  headers of the response after " + std::to_string(waited) + " s");
    }

    const SendOptions& m_options;
    const Context& m_context;
    const Plan m_plan;
    const CredentialPrompt m_credentials;
    const SessionFile m_sessionFile;
    Progress m_progress;
    MSPSession m_session;
    std::vector<Body> m_bodies;
};

void check(const SendOptions& options) {
    if (!options.outputs.empty() && options.outputs.size() != options.data.size()) {
        throw Failure(ExitCode::Usage, "give one -o for each -d, or none");
    }
    if (std::count(options.data.begin(), options.data.end(), "-") > 1) {
        throw Failure(ExitCode::Usage, "standard input can be one body only");
    }
}

void addCredentialOptions(Verb verb, CredentialOptions& credentials) {
    Option file = verb.text("--password-file", credentials.passwordFile, "FILE",
                            "File whose first line is the password");
    Option options[] = {
        verb.text("--user", credentials.user, "NAME", "User name"),
        verb.text("--domain", credentials.domain, "NAME", "Domain of the user"),
        file,
        verb.number("--password-fd", credentials.passwordDescriptor, "N",
                    "Open descriptor whose first line is the password")
            .between(0, kMostDescriptors)
            .excludes(file),
    };
    for (Option& option : options) {
        option.group("A forward proxy's credentials (asked for on the terminal otherwise)");
    }
}

}  // namespace

void addSend(Verb program, Context& context) {
    auto options = std::make_shared<SendOptions>();
    Verb verb = program.verb("send", "Send a request and print the response's body");
    verb.texts("-H,--header", options->headers, "NAME=VALUE", "Request header; may be repeated");
    verb.text("--url", options->url, "URL", "Server to call (header Base-Full-Url)");
    verb.text("--env", options->environment, "NAME", "Environment to call (header Env-Name)");
    verb.texts("-d,--data", options->data, "TEXT|@FILE|-",
               "Body: a text, @FILE, or - for standard input; repeated, one exchange for each, all "
               "in one session")
        .required();
    verb.texts("-o,--output", options->outputs, "FILE",
               "File for the response's body, there only when it is complete; one for each -d")
        .notEmpty();
    const Option stream =
        verb.flag("--stream", options->stream, "Send the body piece by piece (default)");
    verb.flag("--text", options->text, "Send the body in one piece").excludes(stream);
    verb.flag("--compressed", options->compressed, "Ask for a compressed response");
    verb.flag("--fail", options->fail, "Exit with 22 when the server answers 400 or above");
    verb.text("--session", options->session, "FILE",
              "File that keeps the session id between calls; made when missing");
    addCredentialOptions(verb, options->credentials);
    verb.whenChosen([options, &context] {
        check(*options);
        context.action = [options, &context] { return Sender(*options, context).run(); };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
