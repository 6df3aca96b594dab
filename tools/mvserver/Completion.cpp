// mvserver completion: prints a completion script, made from the options themselves.

#include "CompletionScripts.h"
#include "Json.h"
#include "OutputFile.h"
#include "Verbs.h"

#include <CLI/CLI.hpp>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

void addOptionsOf(const CLI::App& app, CompletedVerb& verb) {
    for (const CLI::Option* option : app.get_options()) {
        CompletedOption completed{{}, option->get_description(), option->get_type_size() > 0};
        for (const std::string& name : option->get_lnames()) {
            completed.names.push_back("--" + name);
        }
        for (const std::string& name : option->get_snames()) {
            completed.names.push_back("-" + name);
        }
        if (!completed.names.empty()) {
            verb.options.push_back(completed);
        }
    }
}

// What the program takes, its verbs take, too; its version flag excepted.
void addVerbs(const CLI::App& app, const CLI::App& program, const std::string& path,
              CompletedVerbs& verbs) {
    CompletedVerb verb{path, app.get_description(), {}};
    addOptionsOf(app, verb);
    if (&app != &program) {
        for (const CompletedOption& option : verbs.front().options) {
            if (option.names.front() != "--help" && option.names.front() != "--version") {
                verb.options.push_back(option);
            }
        }
    }
    verbs.push_back(verb);
    for (const CLI::App* child : app.get_subcommands({})) {
        addVerbs(*child, program, path.empty() ? child->get_name() : path + " " + child->get_name(),
                 verbs);
    }
}

constexpr struct {
    const char* shell;
    std::string (*write)(const CompletedVerbs&);
} kShells[] = {{"bash", bashCompletion}, {"zsh", zshCompletion}, {"fish", fishCompletion}};

nlohmann::json complete(const CLI::App& app, const std::string& shell, const Context& context) {
    CompletedVerbs verbs;
    addVerbs(app, app, "", verbs);
    std::string script;
    for (const auto& row : kShells) {
        if (shell == row.shell) {
            script = row.write(verbs);
        }
    }
    if (!context.json) {
        standardOutput()->write(script.data(), script.size());
    }
    return {{"shell", shell}, {"script", script}};
}

}  // namespace

void addCompletion(Verb program, Context& context) {
    auto shell = std::make_shared<std::string>();
    Verb verb = program.verb("completion", "Print a completion script for a shell");
    verb.argument("shell", *shell, "SHELL", "bash, zsh or fish").oneOf({"bash", "zsh", "fish"});
    const CLI::App& app = program.app();
    verb.whenChosen([shell, &app, &context] {
        context.action = [shell, &app, &context] { return complete(app, *shell, context); };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
