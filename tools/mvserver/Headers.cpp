#include "Headers.h"

#include "Failure.h"
#include "Terminal.h"

#include <algorithm>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

bool holdsControl(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\t') || byte == 0x7F;
    });
}

}  // namespace

void addHeader(std::map<std::string, std::string>& headers, const std::string& name,
               const std::string& value) {
    if (name.empty() || holdsControl(name) || holdsControl(value)) {
        throw Failure(
            ExitCode::Usage,
            "header \"" + escaped(name) + "\": a name is needed, and no control characters",
            "write -H name=value");
    }
    if (!headers.emplace(name, value).second) {
        throw Failure(ExitCode::Usage, "header \"" + escaped(name) + "\" is given twice");
    }
}

void addHeaders(std::map<std::string, std::string>& headers,
                const std::vector<std::string>& named) {
    for (const std::string& pair : named) {
        const std::size_t equals = pair.find('=');
        if (equals == std::string::npos) {
            throw Failure(ExitCode::Usage, "no \"=\" in header \"" + escaped(pair) + "\"",
                          "write -H name=value");
        }
        addHeader(headers, pair.substr(0, equals), pair.substr(equals + 1));
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
