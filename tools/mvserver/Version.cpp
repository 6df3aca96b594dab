// mvserver version.

#include "Json.h"
#include "Options.h"
#include "OutputFile.h"
#include "Verbs.h"

namespace Morvenn::Net::MvServerProxy::Tools {

void addVersion(CLI::App& app, Context& context) {
    app.set_version_flag("--version", "mvserver " MV_TOOL_VERSION);
    CLI::App& verb = *app.add_subcommand("version", "Print the version");
    verb.callback([&context] {
        context.action = [&context]() -> nlohmann::json {
            if (!context.json) {
                const std::string line = "mvserver " MV_TOOL_VERSION "\n";
                standardOutput()->write(line.data(), line.size());
            }
            return {{"version", MV_TOOL_VERSION}};
        };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
