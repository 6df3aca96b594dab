// mvserver: the library's exchanges on the command line.

#include "Cleanup.h"
#include "Failure.h"
#include "GlobalOptions.h"
#include "Json.h"
#include "OutputFile.h"
#include "Terminal.h"
#include "Verbs.h"

#include <morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h>
#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sstream>

namespace Morvenn::Net::MvServerProxy::Tools {

namespace {

std::string footer() {
    std::string text = "Exit codes:\n";
    for (const ExitCodeRow& row : kExitCodes) {
        const std::string code = std::to_string(static_cast<int>(row.code));
        text += "  " + code + std::string(6 - code.size(), ' ') + row.meaning + "\n";
    }
    return text +
           "\nEvery option can be set by the environment variable named beside it. mvserver(1) "
           "tells the rest.\n";
}

void print(const std::string& text) {
    standardOutput()->write(text.data(), text.size());
}

// False when standard output does not take it.
bool printed(const std::string& text) {
    try {
        print(text);
        return true;
    } catch (const Failure&) {
        return false;
    }
}

void report(const Failure& failure, const Context& context) {
    const bool logged = context.log != nullptr && context.log->written();
    if (context.json) {
        nlohmann::json error = {{"exit", static_cast<int>(failure.code())},
                                {"kind", wordOf(failure.code())},
                                {"message", failure.message()}};
        if (!failure.hint().empty()) {
            error["hint"] = failure.hint();
        }
        if (logged) {
            error["log"] = context.log->file();
        }
        if (printed(jsonLine({{"ok", false}, {"error", error}}))) {
            return;
        }
    }
    note(inRed("mvserver: ") + wordOf(failure.code()) + ": " + escaped(failure.message()));
    if (!failure.hint().empty()) {
        note("  try: " + failure.hint());
    }
    if (logged) {
        note("  log: " + escaped(context.log->file()));
    }
}

bool wantsJson(int argc, char** argv) {
    const char* variable = std::getenv("MV_JSON");
    const bool byVariable =
        variable != nullptr && (std::string(variable) == "1" || std::string(variable) == "true");
    return byVariable || std::any_of(argv, argv + argc, [](const char* argument) {
               return std::string(argument) == "--json";
           });
}

// With a level of one's own the log starts at once; otherwise the library starts it with the first
// warning.
void startLog(const Context& context) {
    if (!context.logLevel.empty()) {
        Util::MvServerCppBindingLogger::getInstance();
    }
}

int perform(Context& context, const ProxySettings& settings) {
    try {
        const LogFolder log(context.logFolderOption);
        context.log = &log;
        try {
            apply(settings, context);
            startLog(context);
            nlohmann::json result = context.action();
            if (context.json) {
                result["ok"] = context.exit == ExitCode::Ok;
                print(jsonLine(result));
            }
        } catch (...) {
            const Failure failure = currentFailure();
            report(failure, context);
            context.exit = failure.code();
        }
        context.log = nullptr;
    } catch (const Failure& failure) {  // no folder for the log
        report(failure, context);
        context.exit = failure.code();
    }
    return static_cast<int>(context.exit);
}

int usageFailure(const std::string& message, const Context& context) {
    report({ExitCode::Usage, message,
            "mvserver --help, or mvserver VERB --help; values may also come from MV_... variables"},
           context);
    return static_cast<int>(ExitCode::Usage);
}

int help(const CLI::App& app, const CLI::Success& asked, const Context& context) {
    std::ostringstream text;
    app.exit(asked, text, text);
    try {
        print(text.str());
        return static_cast<int>(ExitCode::Ok);
    } catch (const Failure& failure) {
        report(failure, context);
        return static_cast<int>(failure.code());
    }
}

// The parser misses what is required before it looks at the words that it does not know.
std::string usageMessage(const CLI::App& app, const CLI::ParseError& failure) {
    const std::vector<std::string> unknown = app.remaining(true);
    const bool hidden = dynamic_cast<const CLI::RequiredError*>(&failure) != nullptr;
    std::string message = failure.what();
    if (hidden && !unknown.empty()) {
        message += ", and \"" + unknown.front() + "\" is not known";
    }
    return message;
}

// What the program opens must not take the number of a standard stream that was closed: what is
// meant for the stream would go there. The stand-ins fail where the closed stream would have.
void occupyStandardDescriptors() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(number, F_GETFD) < 0) {
            ::open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

int run(int argc, char** argv) {
    occupyStandardDescriptors();
    installSignalHandlers();
    Context context;
    ProxySettings settings;
    CLI::App app("Exchanges requests and responses with an application server.", "mvserver");
    app.require_subcommand(1);
    app.fallthrough();
    app.get_formatter()->column_width(36);
    app.set_version_flag("--version", "mvserver " MV_TOOL_VERSION);
    addGlobalOptions(Verb(app), context, settings);
    for (auto* add :
         {addSend, addEnv, addSign, addVerify, addShutdown, addDoctor, addCompletion, addVersion}) {
        add(Verb(app), context);
    }
    app.footer(footer());  // last: verbs made earlier do not take it over
    context.json = wantsJson(argc, argv);
    if (context.json) {
        reportInterruptsAsJson();
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& asked) {
        return help(app, asked, context);
    } catch (const CLI::ParseError& e) {
        return usageFailure(usageMessage(app, e), context);
    } catch (const Failure& e) {
        report(e, context);
        return static_cast<int>(e.code());
    }
    return perform(context, settings);
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Tools

int main(int argc, char** argv) {
    using namespace Morvenn::Net::MvServerProxy::Tools;
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {  // no memory, not even to report it in full
        static_cast<void>(std::fprintf(stderr, "mvserver: %s\n", e.what()));
        return static_cast<int>(ExitCode::Runtime);
    }
}
