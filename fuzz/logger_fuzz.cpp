// The log with any name, any level and any text: one line with its label, in the place that the
// documentation states, or none when such a file cannot be.
#include <dirent.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "fuzz/Fuzz.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"

using Logger = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;

namespace {

// Made once and removed at the end of the program.
class Folder {
public:
    Folder() {
        Fuzz::require(mkdtemp(m_path) != nullptr, "there is a folder for the log");
        setenv("TEMP", m_path, 1);
    }
    ~Folder() { rmdir(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path() const { return m_path; }

private:
    char m_path[32] = "/tmp/mv-logger-fuzz-XXXXXX";
};

const char* const kLabels[] = {" [OFF ] ", " [ERROR] ", " [WARN ] ", " [INFO ] ", " [DEBUG] "};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    Fuzz::Input input(data, size);
    const auto level = static_cast<Logger::LoggingLevel>(input.byte() % 5);
    const std::string name = input.take(input.byte()).c_str();
    const std::string text = input.rest();
    // The notice of a file that cannot be opened goes to standard output.
    static const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;
    Fuzz::require(isQuiet, "standard output can be silenced");

    setenv("MVHUB_CONFIG", name.c_str(), 1);
    const std::string path =
        folder.path() + "//CppBinding_" + std::to_string(getpid()) + "_" + name + ".log";
    {
        const int before = dup(0);
        close(before);
        Logger logger;
        logger.log(level, text);
        logger.log(level, "");
        close(before);  // the logger leaves its file open: it has the lowest free descriptor
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        const bool canBe = name.find('/') == std::string::npos && name.size() < 200;
        Fuzz::require(!canBe, "a name without a slash gives a file");
        return 0;
    }
    const std::string content((std::istreambuf_iterator<char>(file)),
                              std::istreambuf_iterator<char>());
    const std::string label = kLabels[level];
    Fuzz::require(content == label + ": " + text + "\n" + label + ": \n", "each message is a line");
    unlink(path.c_str());
    return 0;
}
