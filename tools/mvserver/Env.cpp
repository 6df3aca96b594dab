// mvserver env: the directory of environments.

#include "Failure.h"
#include "Json.h"
#include "Options.h"
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
                text += name + "\t" + key + "\t" + value + "\n";
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

void addList(CLI::App& env, Context& context) {
    auto options = std::make_shared<ListOptions>();
    CLI::App& verb = *env.add_subcommand("list", "List environments: index, tab, name");
    addOption(verb, "--server-version", options->version, "Only those of a version")
        ->type_name("VERSION");
    verb.callback([options, &context] {
        context.action = [options, &context] {
            EnvironmentInfo info;
            return listed(options->version.empty() ? info.getEnvironments()
                                                   : info.getEnvsForVersion(options->version),
                          context);
        };
    });
}

void addShow(CLI::App& env, Context& context) {
    auto options = std::make_shared<ShowOptions>();
    CLI::App& verb = *env.add_subcommand(
        "show", "Show one environment, and those of its services that are named");
    verb.add_option("name", options->name, "The environment")->type_name("NAME")->required();
    addOption(verb, "--service", options->services,
              "Show a service, too; may be repeated (services cannot be listed)")
        ->type_name("NAME")
        ->expected(1)
        ->take_all();
    addOption(verb, "--property", options->properties,
              "Property to show of each service; may be repeated (default: type, url, version, "
              "description)")
        ->type_name("KEY")
        ->expected(1)
        ->take_all();
    verb.callback([options, &context] {
        context.action = [options, &context] { return show(*options, context); };
    });
}

void addUrl(CLI::App& env, Context& context) {
    auto url = std::make_shared<std::string>();
    CLI::App& verb = *env.add_subcommand("url", "List the environments that serve a URL");
    verb.add_option("url", *url, "The URL, taken byte for byte")->type_name("URL")->required();
    verb.callback([url, &context] {
        context.action = [url, &context] {
            EnvironmentInfo info;
            return listed(info.getEnvironmentsForURL(*url), context);
        };
    });
}

}  // namespace

void addEnv(CLI::App& app, Context& context) {
    CLI::App& verb = *app.add_subcommand("env", "Look into the directory of environments");
    verb.require_subcommand(1);
    addList(verb, context);
    addShow(verb, context);
    addUrl(verb, context);
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
