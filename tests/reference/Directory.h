// The directory's answer, read with a line reader.
#ifndef MORVENN_TESTS_REFERENCE_DIRECTORY_H
#define MORVENN_TESTS_REFERENCE_DIRECTORY_H

#include <map>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Reference {

using Properties = std::map<std::string, std::string>;

struct DirectoryEntry {
    std::string name;
    int index = 0;
    std::map<std::string, Properties> services;
};

std::vector<DirectoryEntry> directory(const std::string& text);

}  // namespace Morvenn::Net::MvServerProxy::Reference

#endif
