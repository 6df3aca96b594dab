#include "tests/reference/Directory.h"

#include <algorithm>
#include <cstdlib>
#include <istream>
#include <sstream>

#include "tests/reference/Headers.h"

namespace Morvenn::Net::MvServerProxy::Reference {
namespace {

int number(const std::string& text) {
    return std::atoi(trimmed(text).c_str());  // NOLINT(cert-err34-c): its rules are wanted
}

// One "key=value" line into the service; gives the name that the service goes by from here on.
void enterProperty(const std::string& line, Properties& service, std::string& serviceName) {
    if (!line.empty() && line[0] == '=') {
        return;
    }
    const std::vector<std::string> tokens = split(line, '=');
    const std::string key = trimmed(tokens[0]);
    const std::string value = tokens.size() > 1 ? trimmed(tokens[1]) : std::string();
    service.emplace(key, value);
    if (key == "type") {
        serviceName = value;
    }
}

void readService(std::istream& lines, int count, DirectoryEntry& entry) {
    Properties service;
    std::string name;
    // Behind the end of the text every round reads the same empty line.
    for (int i = 0; i < count; ++i) {
        std::string line;
        const bool isLast = !std::getline(lines, line);
        enterProperty(line, service, name);
        if (isLast) {
            break;
        }
    }
    entry.services.emplace(name, service);
}

}  // namespace

std::vector<DirectoryEntry> directory(const std::string& text) {
    std::string plain = text;
    plain.erase(std::remove(plain.begin(), plain.end(), '\r'), plain.end());
    std::istringstream lines(plain);
    std::vector<DirectoryEntry> entries;
    std::string name;
    while (std::getline(lines, name) && !name.empty()) {
        DirectoryEntry entry;
        std::string index;
        std::getline(lines, index);
        std::string count;
        while (std::getline(lines, count) && !count.empty()) {
            readService(lines, number(count), entry);
            entry.name = trimmed(name);
            entry.index = number(index);
        }
        entries.push_back(entry);
    }
    return entries;
}

}  // namespace Morvenn::Net::MvServerProxy::Reference
