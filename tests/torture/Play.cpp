// The application's side of every scenario, against the library.
#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"
#include "testing/Bytes.h"
#include "tests/torture/ConverterWatch.h"
#include "tests/torture/Run.h"

namespace Torture {
namespace {

namespace Kit = Morvenn::Net::MvServerProxy::TestKit;
namespace Client = Morvenn::Net::MvServerProxy::Client;
namespace Admin = Morvenn::Net::MvServerProxy::Admin;
namespace Crypto = Morvenn::Net::MvServerProxy::Crypto;

class ScenarioProvider : public Client::CredentialProvider {
public:
    explicit ScenarioProvider(Provider kind) : m_kind(kind) {}

    const Client::Credential* getCredential(Client::AuthScope* scope) const override {
        {
            const HeapPause pause;
            m_scopes +=
                "<" + scope->getHost() + "|" + scope->getPort() + "|" + scope->getRealm() + ">";
        }
        switch (m_kind) {
            case Provider::Refuses:
                throw Client::CredentialsUnavailableException(kRefusalType, kRefusal);
            case Provider::Throws:
                throw kRefusalType;
            case Provider::Gives:
                return &m_credential;
            default:
                return nullptr;
        }
    }

    const std::string& scopes() const { return m_scopes; }

private:
    Provider m_kind;
    Client::Credential m_credential{kUser, kPassword, kDomain};
    mutable std::string m_scopes;
};

// Collects what the application sees, on memory of its own.
class Value {
public:
    void add(const std::string& text) {
        const HeapPause pause;
        m_text += text;
    }
    void addNumber(int number) {
        const HeapPause pause;
        m_text += "(" + std::to_string(number) + ")";
    }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

// The body stream is the application's: its allocations are not the library's.
struct Body {
    explicit Body(const std::string& text) : stream(text) {}
    std::istringstream stream;
};

void request(const Scenario& scenario, Client::MSPSession& session,
             const ScenarioProvider& provider, Body& body, Value& value) {
    Client::MvServerRequest request(&session);
    for (const auto& header : scenario.headers) {
        request.setHeader(header.first, header.second);
    }
    if (scenario.hasTextBody) {
        request.setBody(scenario.body.c_str());
    } else {
        request.setBody(&body.stream);
    }
    if (scenario.provider != Provider::None) {
        request.setCredentialProvider(&provider);
    }
    if (scenario.kind != Kind::Send) {
        value.add(request.execute());
        return;
    }
    const std::unique_ptr<std::istream> response(request.send());
    for (int byte = response->get(); byte != EOF; byte = response->get()) {
        value.add(std::string(1, static_cast<char>(byte)));
    }
    value.add(response->bad() ? "|bad" : "|end");
}

void directory(Admin::EnvironmentInfo& info, const Scenario& scenario, Value& value) {
    const std::vector<const Admin::Environment*>& list =
        scenario.kind == Kind::DirectoryVersion ? info.getEnvsForVersion("5.1")
        : scenario.kind == Kind::DirectoryUrl   ? info.getEnvironmentsForURL("http://u/")
                                                : info.getEnvironments();
    const HeapPause pause;
    for (const Admin::Environment* environment : list) {
        value.add("[" + environment->getName() + "|" + std::to_string(environment->getIndex()));
        for (const char* name : {"web", "db", ""}) {
            Admin::Environment copy(*environment);
            Admin::Service service(copy.getService(name));
            for (const char* key : {"type", "url", "flag", "a", ""}) {
                value.add("," + service.getProperty(key));
            }
        }
        value.add("]");
    }
}

void signBatch(Value& value) {
    const char* data[] = {"ab", "xyz"};
    int sizes[] = {2, 3};
    Crypto::PKCS7 pkcs7;
    const std::unique_ptr<std::string[]> signatures(pkcs7.sign(data, 2, sizes));
    // A damaged answer may hold any number of entries; the array's own count stands before it.
    const std::size_t count = reinterpret_cast<const std::size_t*>(signatures.get())[-1];
    for (std::size_t i = 0; i < count; ++i) {
        value.add(signatures[i]);
        value.add(";");
    }
}

void signOne(const Scenario& scenario, Value& value) {
    Crypto::PKCS7 pkcs7;
    std::string item = scenario.body;
    value.add(scenario.kind == Kind::SignText ? pkcs7.sign(item) : pkcs7.sign("item", 4U));
}

void simple(bool isAnswered, Value& value) {
    char* response = nullptr;
    const int result = MvServerSimpleRequest("http://full", "body", "session", "app", "rpc",
                                             isAnswered ? &response : nullptr);
    value.addNumber(result);
    value.add(response == nullptr ? "none" : response);
    std::free(response);
}

void perform(const Scenario& scenario, const ScenarioProvider& provider, Body& body, Value& value) {
    Client::MSPSession session;
    switch (scenario.kind) {
        case Kind::Execute:
        case Kind::Send:
            return request(scenario, session, provider, body, value);
        case Kind::TwoOnSession:
            request(scenario, session, provider, body, value);
            return request(scenario, session, provider, body, value);
        case Kind::Directory:
        case Kind::DirectoryVersion:
        case Kind::DirectoryUrl: {
            Admin::EnvironmentInfo info;
            return directory(info, scenario, value);
        }
        case Kind::DirectoryTwice: {
            Admin::EnvironmentInfo info;
            directory(info, scenario, value);
            return directory(info, scenario, value);
        }
        case Kind::SignBatch:
            return signBatch(value);
        case Kind::SignOne:
        case Kind::SignText:
            return signOne(scenario, value);
        case Kind::Simple:
        case Kind::SimpleUnanswered:
            return simple(scenario.kind == Kind::Simple, value);
        case Kind::Lifecycle:
            Client::MvServerRequest::init();
            return Client::MvServerRequest::term();
        default: {
            Client::MvServerRequest unsent(&session);
            for (const auto& header : scenario.headers) {
                unsent.setHeader(header.first, header.second);
            }
            if (scenario.kind == Kind::Shutdown) {
                unsent.shutdownServer();
            }
            if (scenario.kind == Kind::CompleteText || scenario.kind == Kind::CompleteNull) {
                const bool isNull = scenario.kind == Kind::CompleteNull;
                value.addNumber(unsent.sendCompleteRequest(isNull ? nullptr : "whole text"));
            }
        }
    }
}

std::string nameOf(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    const std::string whole = name.get();
    const std::size_t colon = whole.rfind(':');
    return colon == std::string::npos ? whole : whole.substr(colon + 1);
}

std::string outcomeOf(const Scenario& scenario, const ScenarioProvider& provider, Body& body,
                      Value& value) {
    try {
        perform(scenario, provider, body, value);
    } catch (const Client::Exception& e) {
        const HeapPause pause;
        return nameOf(typeid(e)) + "(" + std::to_string(e.getType()) + ", " +
               Kit::escaped(e.getMessage(), kLongest) + ")";
    } catch (const ProxyEscape&) {
        const HeapPause pause;
        return "escape";
    } catch (const std::bad_alloc&) {
        const HeapPause pause;
        return "bad_alloc";
    } catch (const std::out_of_range&) {
        const HeapPause pause;
        return "out_of_range";
    } catch (int number) {
        const HeapPause pause;
        return "int " + std::to_string(number);
    }
    const HeapPause pause;
    return "value " + Kit::escaped(value.text(), kLongest);
}

}  // namespace

Run play(const Scenario& scenario, const Tape& tape, FailMode mode, std::size_t failAt,
         HeapRecord* record) {
    TapeProxy proxy(tape);
    const ScenarioProvider provider(scenario.provider);
    Body body(scenario.body);
    Value value;
    Run run;
    resetConverterFailures();
    {
        const HeapWatch watch(mode, failAt);
        run.outcome = outcomeOf(scenario, provider, body, value);
        const HeapPause pause;
        run.kept = HeapWatch::live();
        if (record != nullptr) {
            *record = {HeapWatch::allocations(), HeapWatch::failures(), HeapWatch::residues(),
                       converterFailures()};
        }
    }
    run.outcome += provider.scopes();
    run.calls = proxy.calls();
    return run;
}

std::string difference(const Run& expected, const Run& actual) {
    std::string words;
    if (expected.calls != actual.calls) {
        words += "calls: " + Kit::difference(expected.calls, actual.calls) + "\n";
    }
    if (expected.outcome != actual.outcome) {
        words += "outcome: expected " + expected.outcome + "\n         came     " + actual.outcome +
                 "\n";
    }
    if (expected.log != actual.log) {
        words += "log: expected " + Kit::escaped(expected.log, 3000) + "\n     came     " +
                 Kit::escaped(actual.log, 3000) + "\n";
    }
    if (expected.kept != actual.kept) {
        words += "kept blocks: expected " + std::to_string(expected.kept) + ", came " +
                 std::to_string(actual.kept) + "\n";
    }
    return words;
}

}  // namespace Torture
