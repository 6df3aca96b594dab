// A line of the log, and a message whose level is off.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "micro/Works.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "support/Rows.h"

namespace Morvenn::Bench {

namespace {

using Logger = Net::MvServerProxy::Util::MvServerCppBindingLogger;

constexpr char kText[] = "The proxy lost its connection to the server during the exchange.";
constexpr char kLine[] =
    " [ERROR] : The proxy lost its connection to the server during the exchange.\n";
constexpr int kDisabledMessages = 1000;

// A folder of its own for the log, gone when the program ends.
class LogFolder {
public:
    LogFolder() : m_path(std::filesystem::temp_directory_path() / "mv-bench-XXXXXX") {
        std::string name = m_path.string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no folder for the log can be made beside " + name);
        }
        m_path = name;
        ::setenv("TEMP", name.c_str(), 1);
    }
    LogFolder(const LogFolder&) = delete;
    LogFolder& operator=(const LogFolder&) = delete;
    ~LogFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    int createPlainFile() const {
        return ::open((m_path / "plain").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    }
    std::string lastLine() const {
        for (const auto& entry : std::filesystem::directory_iterator(m_path)) {
            if (entry.path().extension() == ".log") {
                std::ifstream in(entry.path());
                std::string line;
                while (std::getline(in, line) && in.peek() != std::ifstream::traits_type::eof()) {
                }
                return line + "\n";
            }
        }
        return "";
    }

private:
    std::filesystem::path m_path;
};

}  // namespace

void registerLog() {
    static const LogFolder folder;
    static const std::string text = kText;
    Logger::error(text);
    if (folder.lastLine() != kLine) {
        throw std::runtime_error("log_line: the library wrote '" + folder.lastLine() + "'");
    }
    const int file = folder.createPlainFile();
    registerRows("log_line", 1,
                 {{"limit",
                   [file](Sink&) {
                       const auto size = ::write(file, kLine, sizeof kLine - 1);
                       benchmark::DoNotOptimize(size);
                   }},
                  {"library", [](Sink&) { Logger::error(text); }}});
    registerRows("disabled_message", kDisabledMessages,
                 {{"library", [](Sink&) {
                       for (int i = 0; i < kDisabledMessages; ++i) {
                           if (Logger::isDebug()) {
                               Logger::debug("number " + std::to_string(i));
                           }
                       }
                   }}});
}

}  // namespace Morvenn::Bench
