// mvserver doctor: shows what an exchange would meet on its way, and says what is missing.

#include "Failure.h"
#include "Inspection.h"
#include "Json.h"
#include "OutputFile.h"
#include "Terminal.h"
#include "Verbs.h"

#include <morvenn/net/mvserverproxy/admin/EnvironmentInfo.h>

#include <unicode/ucnv.h>
#include <unicode/uversion.h>

#include <cstdlib>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

struct Check {
    std::string name;
    bool good;
    std::string value;
    std::string hint;
};

using Checks = std::vector<Check>;

std::string variable(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : otherwise;
}

void addLibraries(Checks& checks) {
    const LoadedFile library = fileThatDefines("MvServerSimpleRequest");
    const LoadedFile proxy = fileThatDefines("MvServerProxy_Init");
    checks.push_back({"program", true, "mvserver " MV_TOOL_VERSION ", " + ownPath(), ""});
    checks.push_back({"library", library.found(), library.shown(), "install the library"});
    checks.push_back({"proxy library", proxy.found(), proxy.shown(),
                      "install a libMvServerBindingv16064.so, or name one in LD_PRELOAD"});
}

Check hubCheck(Context& context) {
    const std::string url = hubUrl();
    try {
        Admin::EnvironmentInfo info;
        const std::size_t count = info.getEnvironments().size();
        return {"hub", true, url + ", " + std::to_string(count) + " environments", ""};
    } catch (...) {
        const Failure failure = currentFailure();
        context.exit = failure.code();
        return {"hub", false, url + ": " + failure.message(),
                "start it ('mvhub'), or name another with --hub"};
    }
}

void addSettings(Checks& checks, const Context& context) {
    checks.push_back({"log file", true, context.log->file(), ""});
    checks.push_back({"log level", true, variable("MV_CPPBINDING_LOG_LEVEL", "WARN"), ""});
    for (const Setting& setting : forwardProxySettings()) {
        checks.push_back({setting.name, true, setting.value, ""});
    }
    for (const Setting& setting : proxyLibrarySettings()) {
        checks.push_back({setting.name, true, setting.value, ""});
    }
    checks.push_back(
        {"code page", true, std::string(ucnv_getDefaultName()) + ", ICU " U_ICU_VERSION, ""});
}

void print(const Checks& checks) {
    const std::unique_ptr<Output> output = standardOutput();
    for (const Check& check : checks) {
        std::string name = check.name;
        name.resize(std::max<std::size_t>(name.size(), 34), ' ');
        std::string line = std::string(check.good ? "ok    " : "FAIL  ") + name + " " +
                           escaped(check.value) + "\n";
        if (!check.good) {
            line += "      " + std::string(35, ' ') + "-> " + check.hint + "\n";
        }
        output->write(line.data(), line.size());
    }
    output->commit();
}

nlohmann::json asJson(const Checks& checks) {
    nlohmann::json list = nlohmann::json::array();
    for (const Check& check : checks) {
        list.push_back({{"name", check.name}, {"ok", check.good}, {"value", check.value}});
        if (!check.good) {
            list.back()["hint"] = check.hint;
        }
    }
    return {{"checks", list}};
}

nlohmann::json examine(Context& context) {
    Checks checks;
    addLibraries(checks);
    checks.push_back(hubCheck(context));
    addSettings(checks, context);
    if (!context.json) {
        print(checks);
    }
    return asJson(checks);
}

}  // namespace

void addDoctor(Verb program, Context& context) {
    Verb verb = program.verb(
        "doctor", "Show libraries, settings and log, and whether the hub can be reached");
    verb.whenChosen([&context] { context.action = [&context] { return examine(context); }; });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
