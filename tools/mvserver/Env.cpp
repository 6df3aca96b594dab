// mvserver env: the directory of environments.

#include "Failure.h"
#include "Json.h"
#include "OutputFile.h"
#include "Terminal.h"
#include "Verbs.h"

#include <morvenn/net/mvserverproxy/admin/EnvironmentInfo.h>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using namespace Morvenn::Net::MvServerProxy::Admin;

struct ListOptions {
    std::string version;
};

struct ShowOptions {
    std::string name;
    std::vector<std::string> services;
    std::vector<std::string> properties{"type", "url", "version", "description"};
};

using Environments = std::vector<const Environment*>;

void print(const Context& context, const std::string& text) {
    if (!context.json) {
        const std::unique_ptr<Output> output = standardOutput();
        output->write(text.data(), text.size());
        output->commit();
    }
}

nlohmann::json listed(const Environments& environments, const Context& context) {
    std::string text;
    nlohmann::json list = nlohmann::json::array();
    for (const Environment* environment : environments) {
        const std::string name = environment->getName();
        text += std::to_string(environment->getIndex()) + "\t" + name + "\n";
        list.push_back({{"index", environment->getIndex()}, {"name", name}});
    }
    print(context, text);
    return {{"environments", list}};
}

// A service that the directory knows has its own name as its type.
bool exists(Service& service, const std::string& name) {
    return !name.empty() && service.getProperty("type") == name;
}

nlohmann::json services(Environment environment, const ShowOptions& options, std::string& text) {
    nlohmann::json found = nlohmann::json::object();
    for (const std::string& name : options.services) {
        Service service = environment.getService(name);
        if (!exists(service, name)) {
            throw Failure(ExitCode::Usage, "environment \"" + escaped(options.name) +
                                               "\" has no service \"" + escaped(name) + "\"");
        }
        nlohmann::json& members = found[name] = nlohmann::json::object();
        for (const std::string& key : options.properties) {
            const std::string value = service.getProperty(key);
            if (!value.empty()) {
                members[key] = value;
                text.append(name).append("\t").append(key).append("\t").append(value).append("\n");
            }
        }
    }
    return found;
}

nlohmann::json show(const ShowOptions& options, const Context& context) {
    EnvironmentInfo info;
    const Environment* environment = info.getEnvironment(options.name);
    if (environment == nullptr) {
        throw Failure(ExitCode::Usage, "there is no environment \"" + escaped(options.name) + "\"",
                      "'mvserver env list' names them");
    }
    std::string text = "name\t" + environment->getName() + "\nindex\t" +
                       std::to_string(environment->getIndex()) + "\n";
    const nlohmann::json found = services(*environment, options, text);
    print(context, text);
    return {{"environment",
             {{"name", environment->getName()},
              {"index", environment->getIndex()},
              {"services", found}}}};
}

void addList(Verb env, Context& context) {
    auto options = std::make_shared<ListOptions>();
    Verb verb = env.verb("list", "List environments: index, tab, name");
    verb.text("--server-version", options->version, "VERSION", "Only those of a version");
    verb.whenChosen([options, &context] {
        context.action = [options, &context] {
            EnvironmentInfo info;
            return listed(options->version.empty() ? info.getEnvironments()
                                                   : info.getEnvsForVersion(options->version),
                          context);
        };
    });
}

void addShow(Verb env, Context& context) {
    auto options = std::make_shared<ShowOptions>();
    Verb verb = env.verb("show", "Show one environment, and those of its services that are named");
    verb.argument("name", options->name, "NAME", "The environment");
    verb.texts("--service", options->services, "NAME",
               "Show a service, too; may be repeated (services cannot be listed)");
    verb.texts("--property", options->properties, "KEY",
               "Property to show of each service; may be repeated (default: type, url, version, "
               "description)");
    verb.whenChosen([options, &context] {
        context.action = [options, &context] { return show(*options, context); };
    });
}

void addUrl(Verb env, Context& context) {
    auto url = std::make_shared<std::string>();
    Verb verb = env.verb("url", "List the environments that serve a URL");
    verb.argument("url", *url, "URL", "The URL, taken byte for byte");
    verb.whenChosen([url, &context] {
        context.action = [url, &context] {
            EnvironmentInfo info;
            return listed(info.getEnvironmentsForURL(*url), context);
        };
    });
}

}  // namespace

void addEnv(Verb program, Context& context) {
    Verb verb = program.verb("env", "Look into the directory of environments");
    verb.needsVerb();
    addList(verb, context);
    addShow(verb, context);
    addUrl(verb, context);
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
