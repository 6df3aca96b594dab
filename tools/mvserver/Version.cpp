// mvserver version.

#include "Json.h"
#include "OutputFile.h"
#include "Verbs.h"

namespace Morvenn::Net::MvServerProxy::Tools {

void addVersion(Verb program, Context& context) {
    Verb verb = program.verb("version", "Print the version");
    verb.whenChosen([&context] {
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
