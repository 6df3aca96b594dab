// The options that every verb takes, and what they mean to the library and its proxy.
#pragma once

#include "Context.h"
#include "Options.h"

namespace Morvenn::Net::MvServerProxy::Tools {

// Settings of the default proxy library. They travel as its environment variables, so they must be
// in place before the library starts it.
struct ProxySettings {
    std::string hub;
    std::string caFile;
    double timeout = 0;  // seconds
    double connectTimeout = 0;
    double idleTimeout = 0;
};

void addGlobalOptions(Verb program, Context& context, ProxySettings& settings);

// Puts into the environment what was given.
void apply(const ProxySettings& settings, const Context& context);

}  // namespace Morvenn::Net::MvServerProxy::Tools
