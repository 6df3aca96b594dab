// Looking at the process and its surroundings.
#pragma once

#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Tools {

// The file of the process that defines a function.
struct LoadedFile {
    std::string path;     // links followed; empty when nothing defines the function
    std::string version;  // from the file's name, "x.so.1.2.3", else from its note; or empty

    bool found() const { return !path.empty(); }
    std::string shown() const;
};

LoadedFile fileThatDefines(const char* function);

// This program's file.
std::string ownPath();

// Where the default proxy library looks for the hub.
std::string hubUrl();

struct Setting {
    std::string name;
    std::string value;  // redacted; "(not set)"
};

// The variables that select a forward proxy.
std::vector<Setting> forwardProxySettings();
// The settings of the default proxy library that are set.
std::vector<Setting> proxyLibrarySettings();

}  // namespace Morvenn::Net::MvServerProxy::Tools
