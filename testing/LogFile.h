// The log file that the client library writes, read back line by line, in a directory of its own.
//
//   PrivateTemp temp;                       // TEMP points there; TMP and MVHUB_CONFIG are unset
//   setLogLevel("DEBUG");                   // before the library logs for the first time
//   ...
//   EXPECT_EQ(logLines(), (Lines{" [ERROR] : No error message received"}));
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_LOGFILE_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_LOGFILE_H

#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::TestKit {

using Lines = std::vector<std::string>;

/// A new empty directory to which TEMP points. Its destructor removes the directory with all it
/// holds and unsets TEMP; a log file that the library has open by then stays open and is unseen.
class PrivateTemp {
public:
    /// @throws std::system_error when the directory cannot be made.
    PrivateTemp();
    ~PrivateTemp();
    PrivateTemp(const PrivateTemp&) = delete;
    PrivateTemp& operator=(const PrivateTemp&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// Sets MV_CPPBINDING_LOG_LEVEL. The library reads it once in a process.
void setLogLevel(const std::string& level);

/// Where this process logs: TEMP + "//CppBinding_" + process id + "_" + MVHUB_CONFIG or "Morvenn"
/// + ".log".
std::string logPath();

bool fileExists(const std::string& path);

/// The whole file, byte for byte; empty when there is none.
std::string fileText(const std::string& path);

/// Text cut at every line feed, the line feeds left out. Text behind the last one is a line too.
Lines linesOf(const std::string& text);

/// The lines of logPath() so far.
Lines logLines();

/// Those of logLines() that begin with " [ERROR] : ", without that label.
Lines errorLines();

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
