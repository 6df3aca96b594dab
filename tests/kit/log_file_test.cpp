#include "testing/LogFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

using namespace Morvenn::Net::MvServerProxy::TestKit;

TEST(LogFile, LiesInThePrivateDirectoryUnderTheNameOfTheProcess) {
    PrivateTemp temp;
    EXPECT_EQ(logPath(), temp.path() + "//CppBinding_" + std::to_string(getpid()) + "_Morvenn.log");
    unsetenv("TEMP");
    setenv("TMP", "/elsewhere", 1);
    setenv("MVHUB_CONFIG", "Prod", 1);
    EXPECT_EQ(logPath(), "/elsewhere//CppBinding_" + std::to_string(getpid()) + "_Prod.log");
}

TEST(LogFile, LinesAndErrorsOfAFile) {
    PrivateTemp temp;
    EXPECT_EQ(logLines(), Lines{});
    std::ofstream(logPath()) << " [WARN ] : w\n [ERROR] : e\n [ERROR] :  led by a blank\n";
    EXPECT_EQ(logLines(), (Lines{" [WARN ] : w", " [ERROR] : e", " [ERROR] :  led by a blank"}));
    EXPECT_EQ(errorLines(), (Lines{"e", " led by a blank"}));
}

TEST(LogFile, TextBehindTheLastLineFeedIsALine) {
    EXPECT_EQ(linesOf("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(linesOf("a\n"), (Lines{"a"}));
    EXPECT_EQ(linesOf(""), Lines{});
}

TEST(LogFile, PrivateDirectoryIsRemovedWithAllItHolds) {
    std::string path;
    {
        PrivateTemp temp;
        path = temp.path();
        std::ofstream(path + "/file") << "x";
        EXPECT_TRUE(fileExists(path + "/file"));
    }
    EXPECT_FALSE(fileExists(path));
}
