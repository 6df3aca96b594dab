// The directory of environments: its text form, and which environments a client asks for.
//
// The file and the answer share one grammar. Lines end in LF; a CR is dropped wherever it stands.
//
//     directory   = *environment
//     environment = name-line index-line 1*service empty-line
//     service     = count-line, then that many property lines
//     property    = key "=" value
//
// A file may hold more than an answer: lines that begin with "#" where a name, index or count is
// expected are comments, further empty lines may stand before a name, and the last environment may
// end with the file. A property line is never a comment.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {

struct DirectoryService {
    std::vector<std::pair<std::string, std::string>> properties;  // in the order of the file

    // The value of the first property of that key, or null.
    const std::string* property(const std::string& key) const;
};

struct DirectoryEnvironment {
    std::string name;
    int index = 0;
    std::vector<DirectoryService> services;
};

using Directory = std::vector<DirectoryEnvironment>;

// What is wrong with a directory text, and in which line (the first is 1).
class DirectoryError : public std::runtime_error {
public:
    DirectoryError(std::size_t line, const std::string& text)
        : std::runtime_error(text), m_line(line) {}

    std::size_t line() const { return m_line; }

private:
    std::size_t m_line;
};

// Reads a directory file. Throws DirectoryError for everything that a client would read otherwise
// than it is written here: see docs/hub.md for the list.
Directory parseDirectory(const std::string& text);

// The answer for clients.
std::string directoryText(const Directory& directory);

// "All": everything. "mapURLtoEnv::" and a URL: environments with a service whose "url" is that URL
// or a folder above it. Anything else is a version: environments with a service whose "version"
// is exactly that. The order stays.
Directory selectEnvironments(const Directory& directory, const std::string& selector);

}  // namespace Morvenn::Net::MvServerProxy::Hub
