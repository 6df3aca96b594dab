#include "Inspection.h"

#include "Redact.h"
#include "VersionNote.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr const char* kForwardProxy[] = {
    "http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY",
};
constexpr const char* kProxyLibrary[] = {
    "MV_SERVERPROXY_CA_FILE",
    "MV_SERVERPROXY_CONNECT_TIMEOUT_MS",
    "MV_SERVERPROXY_IDLE_TIMEOUT_MS",
    "MV_SERVERPROXY_TOTAL_TIMEOUT_MS",
    "MV_SERVERPROXY_EXPECT_TIMEOUT_MS",
    "MV_SERVERPROXY_SPOOL_LIMIT",
    "MV_SERVERPROXY_TRACE",
};

std::string resolved(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::path target = std::filesystem::canonical(path, ignored);
    return ignored ? path : target.string();
}

std::string versionIn(const std::string& path) {
    constexpr char kMark[] = ".so.";
    const std::size_t at = path.rfind(kMark);
    return at == std::string::npos ? "" : path.substr(at + sizeof kMark - 1);
}

}  // namespace

std::string LoadedFile::shown() const {
    if (!found()) {
        return "not loaded";
    }
    return path + (version.empty() ? "" : ", version " + version);
}

// Asked of the loader, since the address of a function taken here may be that of a stub in this
// program.
LoadedFile fileThatDefines(const char* function) {
    Dl_info info{};
    void* address = ::dlsym(RTLD_DEFAULT, function);
    if (address == nullptr || ::dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string path = resolved(info.dli_fname);
    const std::string version = versionIn(path);
    return {path, version.empty() ? notedVersion(address) : version};
}

std::string ownPath() {
    return resolved("/proc/self/exe");
}

std::string hubUrl() {
    const char* url = std::getenv("MV_SERVERPROXY_HUB");
    return shownUrl(url != nullptr && *url != '\0' ? url : "http://127.0.0.1:16064");
}

std::vector<Setting> forwardProxySettings() {
    std::vector<Setting> settings;
    for (const char* name : kForwardProxy) {
        const char* value = std::getenv(name);
        settings.push_back({name, value != nullptr ? shownUrl(value) : "(not set)"});
    }
    return settings;
}

std::vector<Setting> proxyLibrarySettings() {
    std::vector<Setting> settings;
    for (const char* name : kProxyLibrary) {
        if (const char* value = std::getenv(name)) {
            settings.push_back({name, value});
        }
    }
    return settings;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
