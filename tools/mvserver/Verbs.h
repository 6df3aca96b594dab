// The verbs. Each adds its subcommand; chosen, it leaves what it has to do in the context.
#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace Morvenn::Net::MvServerProxy::Tools {

void addSend(CLI::App& app, Context& context);
void addEnv(CLI::App& app, Context& context);
void addSign(CLI::App& app, Context& context);
void addVerify(CLI::App& app, Context& context);
void addShutdown(CLI::App& app, Context& context);
void addDoctor(CLI::App& app, Context& context);
void addCompletion(CLI::App& app, Context& context);
void addVersion(CLI::App& app, Context& context);

}  // namespace Morvenn::Net::MvServerProxy::Tools
