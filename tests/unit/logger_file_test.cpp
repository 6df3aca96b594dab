// Where the log lies, how it is opened, and what happens when it cannot be.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "LoggerTest.h"
#include "SystemInterposer.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::Logger;
using Log = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;

namespace {

std::string pid() {
    return std::to_string(getpid());
}

// What logging one error puts on standard output.
std::string outputOfAnError() {
    ::testing::internal::CaptureStdout();
    Log::error("x");
    return ::testing::internal::GetCapturedStdout();
}

std::string openFailure(const std::string& path) {
    return "Could not open the log file:-" + path + " Logging hence will be disabled";
}

}  // namespace

// By design: two slashes stand between directory and file.
TEST_F(Logger, PathHoldsTwoSlashes) {
    setenv("TEMP", "/no/such/directory", 1);
    EXPECT_EQ(outputOfAnError(),
              openFailure("/no/such/directory//CppBinding_" + pid() + "_Morvenn.log"));
}

TEST_F(Logger, LiesInTempBeforeTmp) {
    setenv("TMP", "/no/such/directory", 1);
    Log::error("x");
    EXPECT_EQ(fileText(temp.path() + "/CppBinding_" + pid() + "_Morvenn.log"), " [ERROR] : x\n");
}

TEST_F(Logger, LiesInTmpWhenTempIsNotSet) {
    unsetenv("TEMP");
    setenv("TMP", temp.path().c_str(), 1);
    Log::error("x");
    EXPECT_EQ(fileText(temp.path() + "/CppBinding_" + pid() + "_Morvenn.log"), " [ERROR] : x\n");
}

TEST_F(Logger, LiesInTheCurrentDirectoryWithoutBoth) {
    unsetenv("TEMP");
    std::filesystem::current_path(temp.path());
    Log::error("x");
    std::filesystem::current_path("/");
    EXPECT_EQ(fileText(temp.path() + "/CppBinding_" + pid() + "_Morvenn.log"), " [ERROR] : x\n");
}

TEST_F(Logger, PathWithoutBothBeginsWithADot) {
    unsetenv("TEMP");
    setenv("MVHUB_CONFIG", "no/such", 1);
    EXPECT_EQ(outputOfAnError(), openFailure(".//CppBinding_" + pid() + "_no/such.log"));
}

TEST_F(Logger, TempSetToAnEmptyValueCountsAsSet) {
    setenv("TEMP", "", 1);
    setenv("TMP", temp.path().c_str(), 1);
    setenv("MVHUB_CONFIG", "no/such", 1);
    EXPECT_EQ(outputOfAnError(), openFailure("//CppBinding_" + pid() + "_no/such.log"));
}

TEST_F(Logger, ConfigurationNamesTheFile) {
    const std::string values[] = {"Prod", "", "..", "%s%n", "a\r\nb", "\xff\xfe", " "};
    for (const std::string& value : values) {
        SCOPED_TRACE(value);
        expectInFreshProcess([&] {
            setenv("MVHUB_CONFIG", value.c_str(), 1);
            Log::error("x");
            EXPECT_EQ(fileText(temp.path() + "/CppBinding_" + pid() + "_" + value + ".log"),
                      " [ERROR] : x\n");
        });
    }
}

TEST_F(Logger, PlaceIsChosenWhenTheFirstLineIsWritten) {
    Log::getInstance();
    setenv("MVHUB_CONFIG", "Later", 1);
    Log::error("x");
    const std::string path = logPath();
    EXPECT_EQ(path, temp.path() + "//CppBinding_" + pid() + "_Later.log");
    setenv("MVHUB_CONFIG", "TooLate", 1);
    Log::error("y");
    EXPECT_EQ(fileText(path), " [ERROR] : x\n [ERROR] : y\n");
    EXPECT_FALSE(fileExists(logPath()));
}

TEST_F(Logger, EarlierFileOfTheSameNameIsTruncated) {
    std::ofstream(logPath()) << "from another process\n";
    Log::error("x");
    EXPECT_EQ(fileText(logPath()), " [ERROR] : x\n");
}

TEST_F(Logger, IsReadableForItsOwnerOnlyAndClosedOnExec) {
    umask(0);
    Log::error("x");
    struct stat file {};
    ASSERT_EQ(stat(logPath().c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777U, 0600U);

    int descriptors = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone).filename() ==
            "CppBinding_" + pid() + "_Morvenn.log") {
            ++descriptors;
            EXPECT_TRUE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
        }
    }
    EXPECT_EQ(descriptors, 1);
}

// --- files that are refused, like any that cannot be opened --------------------------------------

TEST_F(Logger, SymbolicLinkIsRefusedAndItsTargetUntouched) {
    const std::string target = temp.path() + "/target";
    std::ofstream(target) << "precious";
    ASSERT_EQ(symlink(target.c_str(), logPath().c_str()), 0);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
    EXPECT_EQ(fileText(target), "precious");
}

TEST_F(Logger, HardLinkIsRefusedAndItsTargetUntouched) {
    const std::string target = temp.path() + "/target";
    std::ofstream(target) << "precious";
    ASSERT_EQ(link(target.c_str(), logPath().c_str()), 0);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
    EXPECT_EQ(fileText(target), "precious");
}

TEST_F(Logger, PipeIsRefusedWithoutWaitingForAReader) {
    ASSERT_EQ(mkfifo(logPath().c_str(), 0600), 0);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
}

TEST_F(Logger, DirectoryIsRefused) {
    ASSERT_EQ(mkdir(logPath().c_str(), 0700), 0);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
}

TEST_F(Logger, FileOfAnotherUserIsRefusedAndUntouched) {
    const std::string path = logPath();
    std::ofstream(path) << "another's";
    SystemInterposer::settings.isAnotherUser = true;
    EXPECT_EQ(outputOfAnError(), openFailure(path));
    EXPECT_EQ(fileText(path), "another's");
}

TEST_F(Logger, FileThatCannotBeExaminedIsRefused) {
    SystemInterposer::settings.failExamine = true;
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
}

TEST_F(Logger, FileThatCannotBeEmptiedIsRefused) {
    const std::string path = logPath();
    std::ofstream(path) << "from another process\n";
    SystemInterposer::settings.failTruncate = true;
    EXPECT_EQ(outputOfAnError(), openFailure(path));
    EXPECT_EQ(fileText(path), "from another process\n");
}

TEST_F(Logger, NameThatIsTooLongIsRefused) {
    setenv("MVHUB_CONFIG", std::string(5000, 'n').c_str(), 1);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
}

// --- after a refusal -----------------------------------------------------------------------------

TEST_F(Logger, FailureToOpenSwitchesLoggingOff) {
    setenv("TEMP", "/no/such/directory", 1);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
    EXPECT_FALSE(Log::isError());
    EXPECT_EQ(outputOfAnError(), "") << "the failure is told once";
}

TEST_F(Logger, DirectLogTriesAgainAfterAFailureToOpen) {
    const std::string place = temp.path() + "/later";
    setenv("TEMP", place.c_str(), 1);
    EXPECT_EQ(outputOfAnError(), openFailure(logPath()));
    ASSERT_EQ(mkdir(place.c_str(), 0700), 0);
    Log::getInstance()->log(Log::LevelWarn, "y");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : y"}));
    EXPECT_FALSE(Log::isError()) << "the level stays off";
}

TEST_F(Logger, FailureToOpenWithStandardOutputClosedIsSilent) {
    setenv("TEMP", "/no/such/directory", 1);
    const Outcome outcome = statusFromFreshProcess([] {
        close(STDOUT_FILENO);
        Log::error("x");
        return Log::isError() ? 1 : 0;
    });
    EXPECT_TRUE(outcome.good()) << outcome;
}

TEST_F(Logger, FailureToOpenWithAStandardOutputThatThrowsFailsNobody) {
    struct Full : std::streambuf {
    } full;
    setenv("TEMP", "/no/such/directory", 1);
    std::streambuf* const before = std::cout.rdbuf(&full);
    std::cout.exceptions(std::ios::badbit);
    EXPECT_NO_THROW(Log::error("x"));
    EXPECT_TRUE(std::cout.bad()) << "the note was tried";
    EXPECT_FALSE(Log::isError());
    std::cout.exceptions(std::ios::goodbit);
    std::cout.rdbuf(before);
}

TEST_F(Logger, FailedWriteIsIgnored) {
    const Outcome outcome = statusFromFreshProcess([] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        Log::error("x");
        Log::error("y");
        return Log::isError() && fileText(logPath()).empty() ? 0 : 1;
    });
    EXPECT_TRUE(outcome.good()) << outcome;
}
