// Values of the environment that somebody else chose.
#include <dirent.h>

#include <cstdlib>

#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy::TestKit;
using Logger = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;

namespace {

/// The names of what lies in a folder, folders of folders left out.
std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    DIR* directory = opendir(folder.c_str());
    while (const dirent* entry = directory == nullptr ? nullptr : readdir(directory)) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(directory);
    return names;
}

std::string ownName(const std::string& configuration) {
    return "CppBinding_" + std::to_string(getpid()) + "_" + configuration + ".log";
}

}  // namespace

TEST(HostileNames, AreUsedAsTheyAre) {
    for (const std::string name :
         {"%s%n%d", "two\r\nlines", "not UTF-8: \xFF\xFE", " ", "-rf", "$(reboot)", ""}) {
        expectInFreshProcess([&name] {
            const PrivateTemp temp;
            setenv("MVHUB_CONFIG", name.c_str(), 1);
            Logger::error("a line");
            EXPECT_EQ(entriesOf(temp.path()), std::vector<std::string>{ownName(name)});
            EXPECT_EQ(fileText(temp.path() + "/" + ownName(name)), " [ERROR] : a line\n");
        });
    }
}

TEST(HostileNames, WithASlashLeadNowhere) {
    for (const char* name : {"../x", "a/b", "/etc/x", "../../../../tmp/x"}) {
        expectInFreshProcess([name] {
            const PrivateTemp temp;
            setenv("MVHUB_CONFIG", name, 1);
            Logger::error("a line");
            EXPECT_FALSE(Logger::isError()) << "logging is off";
            EXPECT_EQ(entriesOf(temp.path()), std::vector<std::string>{});
        });
    }
}

TEST(HostileNames, OfALevelAreIgnored) {
    for (const char* level : {"%s", "DEBUG\n", "DEBUGDEBUG", "debug", "4", "\xFF"}) {
        expectInFreshProcess([level] {
            const PrivateTemp temp;
            setLogLevel(level);
            Logger::getInstance();
            EXPECT_TRUE(Logger::isWarn());
            EXPECT_FALSE(Logger::isInfo());
        });
    }
}
