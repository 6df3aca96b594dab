#include "tests/torture/Model.h"

#include "testing/Bytes.h"
#include "tests/reference/Base64.h"
#include "tests/reference/Directory.h"

namespace Torture {
namespace {

namespace Kit = Morvenn::Net::MvServerProxy::TestKit;

constexpr char kGone[] = "MvServerRequest::~MvServerRequest()";

class Model {
public:
    Model(const Scenario& scenario, const Tape& tape, bool logs, bool initialised)
        : m_scenario(scenario), m_base(tape, logs), m_initialised(initialised) {}

    Run predict();

private:
    void perform();
    void request();
    std::string exchange(ModelRequest& request);
    void load(const std::string& selector, std::vector<Reference::DirectoryEntry>& list);
    void directory();
    void show(const std::vector<Reference::DirectoryEntry>& list);
    void sign();
    void simple();
    void withoutResponse();
    void shutdown(const Reference::HeaderMap& headers);

    const Scenario& m_scenario;
    ModelBase m_base;
    bool m_initialised;
    std::string m_session;
    std::string m_scopes;
    std::string m_value;
};

Run Model::predict() {
    Run& run = m_base.run;
    try {
        perform();
        run.outcome = "value " + Kit::escaped(m_value, kLongest);
    } catch (const Thrown& thrown) {
        run.outcome = thrown.outcome;
    } catch (const ProxyEscape&) {
        run.outcome = "escape";
    } catch (const Spinning&) {
        run.spins = true;
    }
    run.outcome += m_scopes;
    return run;
}

void Model::perform() {
    switch (m_scenario.kind) {
        case Kind::Execute:
        case Kind::Send:
            return request();
        case Kind::TwoOnSession:
            request();
            return request();
        case Kind::Directory:
        case Kind::DirectoryTwice:
        case Kind::DirectoryVersion:
        case Kind::DirectoryUrl:
            return directory();
        case Kind::SignBatch:
        case Kind::SignOne:
        case Kind::SignText:
            return sign();
        case Kind::Simple:
        case Kind::SimpleUnanswered:
            return simple();
        case Kind::Lifecycle:
            m_base.init();
            return m_base.term();
        default:
            return withoutResponse();
    }
}

// The exchange of a request that is destroyed behind it: completed once, on every way out.
std::string Model::exchange(ModelRequest& request) {
    const auto end = [&] {
        m_scopes += request.scopes();
        m_base.debug(kGone);
        m_base.call(Function::Complete);
    };
    try {
        std::string response = request.run(m_session, m_initialised);
        m_initialised = true;
        end();
        return response;
    } catch (const Spinning&) {
        m_scopes += request.scopes();
        throw;
    } catch (...) {
        end();
        throw;
    }
}

void Model::request() {
    ModelRequest request(m_base, m_scenario);
    request.headers = m_scenario.headers;
    request.hasTextBody = m_scenario.hasTextBody;
    request.body = m_scenario.body;
    request.reading = m_scenario.kind == Kind::Send ? Reading::Stream : Reading::Execute;
    m_value += exchange(request);
}

void Model::load(const std::string& selector, std::vector<Reference::DirectoryEntry>& list) {
    const std::string text = "getEnv:" + selector + "\r\n\r\n";
    m_base.debug("The request for fetching env info from MVHUB is:-" + text);
    m_base.call(Function::SendNoAck, text);
    m_base.checked(Function::SendEOF);
    try {
        std::string answer;
        for (Answer block = m_base.receive(); block.result != -1; block = m_base.receive()) {
            if (block.result < -1) {
                m_base.failStatus(block.result);
            }
            if (block.result > kBlockSize) {
                m_base.failTooLong(block.result);
            }
            answer += decoded(block.block().substr(0, static_cast<std::size_t>(block.result)));
        }
        if (!answer.empty()) {
            m_base.debug("EnvironmentInfo::processEnvironment()");
            m_base.debug("The Environment info received is:-" + answer);
            list = Reference::directory(answer);
        }
        m_base.call(Function::Complete);
    } catch (...) {
        m_base.call(Function::Complete);
        throw;
    }
    m_base.call(Function::Complete);
    for (const Reference::DirectoryEntry& entry : list) {
        m_base.run.kept += 1 + blocksOf(entry.name);
        for (const auto& service : entry.services) {
            m_base.run.kept += 1 + blocksOf(service.first);
            for (const auto& property : service.second) {
                m_base.run.kept += 1 + blocksOf(property.first) + blocksOf(property.second);
            }
        }
    }
}

void Model::directory() {
    struct Lookup {
        Kind kind;
        const char* line;
        const char* selector;
    };
    static constexpr Lookup kLookups[] = {
        {Kind::Directory, "EnvironmentInfo::getEnvironments()", "All"},
        {Kind::DirectoryTwice, "EnvironmentInfo::getEnvironments()", "All"},
        {Kind::DirectoryVersion, "EnvironmentInfo::getEnvsForVersion(5.1)", "5.1"},
        {Kind::DirectoryUrl, "EnvironmentInfo::getEnvironmentsForURL(http://u/)",
         "mapURLtoEnv::http://u/"}};
    m_base.init();
    std::vector<Reference::DirectoryEntry> list;
    const int times = m_scenario.kind == Kind::DirectoryTwice ? 2 : 1;
    for (int i = 0; i < times; ++i) {
        for (const Lookup& lookup : kLookups) {
            if (lookup.kind == m_scenario.kind) {
                m_base.debug(lookup.line);
                if (list.empty()) {
                    load(lookup.selector, list);
                }
            }
        }
        show(list);
    }
}

void Model::show(const std::vector<Reference::DirectoryEntry>& list) {
    for (const Reference::DirectoryEntry& entry : list) {
        m_value += "[" + entry.name + "|" + std::to_string(entry.index);
        for (const char* name : {"web", "db", ""}) {
            const auto service = entry.services.find(name);
            for (const char* key : {"type", "url", "flag", "a", ""}) {
                m_value += ",";
                if (service != entry.services.end() && service->second.count(key) != 0) {
                    m_value += service->second.at(key);
                }
            }
        }
        m_value += "]";
    }
}

// A failed exchange keeps session and request: neither is destroyed, so nothing completes an
// exchange whose response had not begun.
void Model::sign() {
    ModelRequest request(m_base, m_scenario);
    request.headers = {{"generatePKCS7Signatures", ""}};
    const bool isBatch = m_scenario.kind == Kind::SignBatch;
    request.body = Reference::base64Encode(Reference::signatureRequest(
        isBatch ? std::vector<std::string>{"ab", "xyz"} : std::vector<std::string>{"item"}));
    try {
        m_base.init();
    } catch (...) {
        m_base.debug(kGone);
        m_base.call(Function::Complete);
        throw;
    }
    std::string response;
    try {
        response = request.run(m_session, true);
    } catch (const Spinning&) {
        throw;
    } catch (...) {
        long& kept = m_base.run.kept;
        kept += 2 + blocksOf(m_session);
        if (request.handedOver()) {
            m_base.call(Function::Complete);
        } else {
            ++kept;
        }
        for (const auto& headers : {request.headers, request.responseHeaders()}) {
            for (const auto& header : headers) {
                kept += 1 + blocksOf(header.first) + blocksOf(header.second);
            }
        }
        throw;
    }
    m_base.debug(kGone);
    m_base.call(Function::Complete);
    const Reference::SignatureAnswer answer =
        Reference::signatureAnswer(Reference::base64Decode(response));
    m_base.run.hoards = answer.badAllocation || answer.count > kMostSignatures;
    if (answer.outOfRange) {
        throw Thrown{"out_of_range", {}, false};
    }
    if (isBatch) {
        for (const std::string& entry : answer.entries) {
            m_value += entry + ";";
        }
        return;
    }
    if (answer.entries.empty()) {
        m_base.failLocal("The answer to the signature request holds no signature.");
    }
    m_value = answer.entries[0];
    m_base.run.kept += 1;
    for (const std::string& entry : answer.entries) {
        m_base.run.kept += blocksOf(entry);
    }
}

void Model::simple() {
    ModelRequest request(m_base, m_scenario);
    request.headers = {{"Use-Compression", "true"}, {"Use-Callback", "false"},
                       {"SessionID", "session"},    {"App-Xml", "app"},
                       {"XmlRpc", "rpc"},           {"Base-Full-Url", "http://full"}};
    request.body = std::string("body", 5);
    m_base.run.kept =
        1;  // the array of string buffers; the first holds so short a body within itself
    std::string text;
    int result = 0;
    try {
        text = exchange(request).c_str();
    } catch (const Thrown& thrown) {
        if (!thrown.isFamily) {
            throw;
        }
        text = thrown.message.c_str();
        result = -1;
    }
    m_value = "(" + std::to_string(result) + ")" +
              (m_scenario.kind == Kind::SimpleUnanswered ? "none" : text);
}

void Model::withoutResponse() {
    try {
        if (m_scenario.kind == Kind::Shutdown) {
            shutdown(m_scenario.headers);
        }
        if (m_scenario.kind == Kind::CompleteNull) {
            m_base.failStatus(-5006);
        }
        if (m_scenario.kind == Kind::CompleteText) {
            m_base.checked(Function::Send, "whole text");
            m_value = "(" + std::to_string(m_base.checked(Function::SendEOF)) + ")";
        }
    } catch (...) {
        m_base.debug(kGone);
        m_base.call(Function::Complete);
        throw;
    }
    m_base.debug(kGone);
    m_base.call(Function::Complete);
}

void Model::shutdown(const Reference::HeaderMap& headers) {
    m_base.call(Function::SendNoAck, "ShutdownServer\r\n" + Reference::headerText(headers));
    m_base.checked(Function::SendEOF);
    m_base.call(Function::Complete);
}

}  // namespace

Run predict(const Scenario& scenario, const Tape& tape, bool logs, bool initialised) {
    return Model(scenario, tape, logs, initialised).predict();
}

}  // namespace Torture
