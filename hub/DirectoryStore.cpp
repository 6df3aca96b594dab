#include "DirectoryStore.h"

#include "PrivateFile.h"

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

Directory readDirectory(const std::string& file) {
    try {
        return parseDirectory(readWholeFile(file));
    } catch (const DirectoryError& error) {
        throw std::runtime_error(file + ":" + std::to_string(error.line()) + ": " + error.what());
    }
}

}  // namespace

DirectoryStore::DirectoryStore(std::string file)
    : m_file(std::move(file)), m_current(std::make_shared<Directory>()) {
    reload();
}

void DirectoryStore::reload() {
    if (hasFile()) {
        replace(readDirectory(m_file));
    }
}

void DirectoryStore::replace(Directory directory) {
    auto next = std::make_shared<const Directory>(std::move(directory));
    const std::lock_guard lock(m_mutex);
    m_current = std::move(next);
}

std::shared_ptr<const Directory> DirectoryStore::current() const {
    const std::lock_guard lock(m_mutex);
    return m_current;
}

Directory ownDirectory(const std::string& url, const std::string& version) {
    DirectoryEnvironment hub;
    hub.name = "mvhub";
    hub.index = 1;
    for (const char* path : {"echo", "request"}) {
        hub.services.push_back({{{"type", path}, {"url", url + "/" + path}, {"version", version}}});
    }
    return {hub};
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
