// What is written, and when: levels, labels, and the order in which the level variable takes
// effect.
#include <thread>

#include "LoggerTest.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::Logger;
using Log = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;

namespace {

int levelInForce() {
    return Log::isDebug() ? 4 : Log::isInfo() ? 3 : Log::isWarn() ? 2 : Log::isError() ? 1 : 0;
}

void logAtEveryLevel() {
    Log::error("e");
    Log::warn("w");
    Log::info("i");
    Log::debug("d");
}

}  // namespace

TEST_F(Logger, StartsAtWarn) {
    EXPECT_EQ(levelInForce(), Log::LevelWarn);
    logAtEveryLevel();
    EXPECT_EQ(logLines(), (Lines{" [ERROR] : e", " [WARN ] : w"}));
}

TEST_F(Logger, LevelsAreNumberedInTheOrderOfTheirDetail) {
    EXPECT_EQ(Log::LevelOff, 0);
    EXPECT_EQ(Log::LevelError, 1);
    EXPECT_EQ(Log::LevelWarn, 2);
    EXPECT_EQ(Log::LevelInfo, 3);
    EXPECT_EQ(Log::LevelDebug, 4);
}

TEST_F(Logger, LevelIsTakenFromExactWordsOnly) {
    const struct {
        const char* value;
        int level;
    } rows[] = {
        {"OFF", 0},
        {"ERROR", 1},
        {"WARN", 2},
        {"INFO", 3},
        {"DEBUG", 4},
        // Everything else leaves the built-in level.
        {"", 2},
        {"debug", 2},
        {"Debug", 2},
        {" DEBUG", 2},
        {"DEBUG ", 2},
        {"DEBUGGING", 2},
        {"OF", 2},
        {"4", 2},
        {"0", 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        expectInFreshProcess([&row] {
            setLogLevel(row.value);
            EXPECT_NE(Log::getInstance(), nullptr);
            EXPECT_EQ(levelInForce(), row.level);
        });
    }
}

TEST_F(Logger, EachLevelAdmitsItselfAndTheGraverOnes) {
    const struct {
        const char* level;
        Lines lines;
    } rows[] = {
        {"OFF", {}},
        {"ERROR", {" [ERROR] : e"}},
        {"WARN", {" [ERROR] : e", " [WARN ] : w"}},
        {"INFO", {" [ERROR] : e", " [WARN ] : w", " [INFO ] : i"}},
        {"DEBUG", {" [ERROR] : e", " [WARN ] : w", " [INFO ] : i", " [DEBUG] : d"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.level);
        expectInFreshProcess([&row] {
            setLogLevel(row.level);
            Log::getInstance();
            logAtEveryLevel();
            EXPECT_EQ(logLines(), row.lines);
        });
    }
}

TEST_F(Logger, VariableIsReadOnce) {
    setLogLevel("ERROR");
    Log* const instance = Log::getInstance();
    setLogLevel("DEBUG");
    EXPECT_EQ(Log::getInstance(), instance);
    EXPECT_EQ(levelInForce(), Log::LevelError);
}

TEST_F(Logger, TestsOfTheLevelDoNotReadTheVariable) {
    setLogLevel("DEBUG");
    EXPECT_FALSE(Log::isDebug());
    EXPECT_FALSE(Log::isInfo());
    EXPECT_TRUE(Log::isWarn());
    EXPECT_TRUE(Log::isError());
}

// By design: the variable takes effect with the first message that passes the built-in level.

TEST_F(Logger, DebugIsDroppedUntilTheFirstWarning) {
    setLogLevel("DEBUG");
    Log::debug("dropped");
    Log::info("dropped");
    EXPECT_FALSE(fileExists(logPath()));
    EXPECT_FALSE(Log::isDebug());
    Log::warn("first");
    EXPECT_TRUE(Log::isDebug());
    Log::debug("written");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : first", " [DEBUG] : written"}));
}

TEST_F(Logger, GetInstanceAdmitsDebugFromTheStart) {
    setLogLevel("DEBUG");
    Log::getInstance();
    EXPECT_FALSE(fileExists(logPath()));
    Log::debug("written");
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : written"}));
}

TEST_F(Logger, OffStillWritesTheFirstError) {
    setLogLevel("OFF");
    Log::error("first");
    EXPECT_FALSE(Log::isError());
    Log::error("second");
    EXPECT_EQ(logLines(), (Lines{" [ERROR] : first"}));
}

TEST_F(Logger, OffStillWritesTheFirstWarning) {
    setLogLevel("OFF");
    Log::warn("first");
    Log::error("second");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : first"}));
}

TEST_F(Logger, ErrorStillWritesTheFirstWarning) {
    setLogLevel("ERROR");
    Log::warn("first");
    Log::warn("second");
    Log::error("third");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : first", " [ERROR] : third"}));
}

// --- one line -----------------------------------------------------------------------------------

// By design: the label of LevelOff is one character shorter than the others.
TEST_F(Logger, LabelsAreExact) {
    Log* const log = Log::getInstance();
    log->log(Log::LevelOff, "x");
    log->log(Log::LevelError, "x");
    log->log(Log::LevelWarn, "x");
    log->log(Log::LevelInfo, "x");
    log->log(Log::LevelDebug, "x");
    EXPECT_EQ(fileText(logPath()),
              " [OFF ] : x\n"
              " [ERROR] : x\n"
              " [WARN ] : x\n"
              " [INFO ] : x\n"
              " [DEBUG] : x\n");
}

TEST_F(Logger, EmptyMessageGivesLabelAndLineEnd) {
    Log::error("");
    EXPECT_EQ(fileText(logPath()), " [ERROR] : \n");
}

TEST_F(Logger, TextIsWrittenAsItIs) {
    const std::string text("%s %n\r\nb\0c\xff", 12);
    Log::error(text);
    EXPECT_EQ(fileText(logPath()), " [ERROR] : " + text + "\n");
}

TEST_F(Logger, LongTextIsOneLine) {
    const std::string text(100000, 'x');
    Log::error(text);
    EXPECT_EQ(fileText(logPath()), " [ERROR] : " + text + "\n");
}

TEST_F(Logger, LogDoesNotTestTheLevelNorReadTheVariable) {
    setLogLevel("DEBUG");
    Log own;
    own.log(Log::LevelDebug, "written");
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : written"}));
    EXPECT_FALSE(Log::isDebug());
}

// --- instances ----------------------------------------------------------------------------------

TEST_F(Logger, CopiesShareTheOpenFileAndDestructionLeavesItOpen) {
    Log assigned;
    {
        Log first;
        first.log(Log::LevelWarn, "first");
        const Log copy(first);
        assigned = copy;
    }
    assigned.log(Log::LevelWarn, "second");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : first", " [WARN ] : second"}));
}

TEST_F(Logger, AnotherInstanceOpensTheFileAnew) {
    Log::warn("lost");
    Log own;
    own.log(Log::LevelWarn, "kept");
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : kept"}));
}

TEST_F(Logger, ChildWritesToTheFileOfItsParent) {
    Log::warn("parent");
    const std::string path = logPath();
    EXPECT_TRUE(inFreshProcess([] { Log::warn("child"); }).good());
    Log::warn("parent again");
    EXPECT_EQ(linesOf(fileText(path)),
              (Lines{" [WARN ] : parent", " [WARN ] : child", " [WARN ] : parent again"}));
}

TEST_F(Logger, LinesOfSeveralThreadsStayWhole) {
    Log::warn("warm");
    const auto writeLines = [](char name) {
        for (int i = 0; i < 500; ++i) {
            Log::warn(std::string(100, name));
        }
    };
    std::thread other(writeLines, 'b');
    writeLines('a');
    other.join();

    const Lines lines = logLines();
    ASSERT_EQ(lines.size(), 1001U);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i], " [WARN ] : " + std::string(100, lines[i].back()));
    }
}
