#include "testing/LogFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

std::string environment(const char* name, const char* fallback) {
    const char* value = std::getenv(name);
    return value == nullptr ? fallback : value;
}

}  // namespace

PrivateTemp::PrivateTemp() {
    std::string pattern = std::filesystem::temp_directory_path() / "mvtestkit-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "PrivateTemp: " + pattern);
    }
    m_path = pattern;
    setenv("TEMP", m_path.c_str(), 1);
    unsetenv("TMP");
    unsetenv("MVHUB_CONFIG");
}

PrivateTemp::~PrivateTemp() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
    unsetenv("TEMP");
}

void setLogLevel(const std::string& level) {
    setenv("MV_CPPBINDING_LOG_LEVEL", level.c_str(), 1);
}

std::string logPath() {
    return environment("TEMP", environment("TMP", ".").c_str()) + "//CppBinding_" +
           std::to_string(getpid()) + "_" + environment("MVHUB_CONFIG", "Morvenn") + ".log";
}

bool fileExists(const std::string& path) {
    struct stat unused {};
    return stat(path.c_str(), &unused) == 0;
}

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::size_t from = 0;
    while (from < text.size()) {
        const std::size_t to = std::min(text.find('\n', from), text.size());
        lines.push_back(text.substr(from, to - from));
        from = to + 1;
    }
    return lines;
}

Lines logLines() {
    return linesOf(fileText(logPath()));
}

Lines errorLines() {
    const std::string label = " [ERROR] : ";
    Lines errors;
    for (const std::string& line : logLines()) {
        if (line.compare(0, label.size(), label) == 0) {
            errors.push_back(line.substr(label.size()));
        }
    }
    return errors;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
