#include "Directory.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr char kAll[] = "All";
constexpr char kUrlSelector[] = "mapURLtoEnv::";

std::string withoutEndingSlashes(std::string url) {
    while (!url.empty() && url.back() == '/') {
        url.pop_back();
    }
    return url;
}

bool startsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool serves(const DirectoryService& service, const std::string& url) {
    const std::string* own = service.property("url");
    if (own == nullptr || own->empty()) {
        return false;
    }
    const std::string folder = withoutEndingSlashes(*own);
    return startsWith(url, folder) &&
           (url.size() == folder.size() || url[folder.size()] == '/' || url[folder.size()] == '?');
}

bool hasVersion(const DirectoryService& service, const std::string& version) {
    const std::string* own = service.property("version");
    return own != nullptr && *own == version;
}

template <typename Condition>
Directory withService(const Directory& directory, Condition condition) {
    Directory selected;
    std::copy_if(directory.begin(), directory.end(), std::back_inserter(selected),
                 [condition](const DirectoryEnvironment& environment) {
                     return std::any_of(environment.services.begin(), environment.services.end(),
                                        condition);
                 });
    return selected;
}

}  // namespace

const std::string* DirectoryService::property(const std::string& key) const {
    for (const auto& [name, value] : properties) {
        if (name == key) {
            return &value;
        }
    }
    return nullptr;
}

std::string directoryText(const Directory& directory) {
    std::string text;
    for (const DirectoryEnvironment& environment : directory) {
        text += environment.name + "\n" + std::to_string(environment.index) + "\n";
        for (const DirectoryService& service : environment.services) {
            text += std::to_string(service.properties.size()) + "\n";
            for (const auto& [key, value] : service.properties) {
                text.append(key).append("=").append(value).append("\n");
            }
        }
        text += "\n";
    }
    return text;
}

Directory selectEnvironments(const Directory& directory, const std::string& selector) {
    if (selector == kAll) {
        return directory;
    }
    if (startsWith(selector, kUrlSelector)) {
        const std::string url = selector.substr(sizeof(kUrlSelector) - 1);
        return withService(
            directory, [&url](const DirectoryService& service) { return serves(service, url); });
    }
    return withService(directory, [&selector](const DirectoryService& service) {
        return hasVersion(service, selector);
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
