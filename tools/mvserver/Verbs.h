// The verbs. Each adds its subcommand; chosen, it leaves what it has to do in the context.
#pragma once

#include "Context.h"
#include "Options.h"

namespace Morvenn::Net::MvServerProxy::Tools {

void addSend(Verb program, Context& context);
void addEnv(Verb program, Context& context);
void addSign(Verb program, Context& context);
void addVerify(Verb program, Context& context);
void addShutdown(Verb program, Context& context);
void addDoctor(Verb program, Context& context);
void addCompletion(Verb program, Context& context);
void addVersion(Verb program, Context& context);

}  // namespace Morvenn::Net::MvServerProxy::Tools
