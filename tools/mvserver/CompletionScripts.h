// Completion scripts for three shells, written from a description of the verbs.
#pragma once

#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Tools {

struct CompletedOption {
    std::vector<std::string> names;  // with their dashes
    std::string help;
    bool takesValue;
};

struct CompletedVerb {
    std::string path;  // "" for the program itself, "env list" for a verb below a verb
    std::string help;
    std::vector<CompletedOption> options;
};

// Every verb, the program itself first, a verb after the one it is below.
using CompletedVerbs = std::vector<CompletedVerb>;

std::string bashCompletion(const CompletedVerbs& verbs);
std::string zshCompletion(const CompletedVerbs& verbs);
std::string fishCompletion(const CompletedVerbs& verbs);

}  // namespace Morvenn::Net::MvServerProxy::Tools
