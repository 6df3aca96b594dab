// A main function that gives every test a process of its own: the library's log file, level and
// initialised flag exist once in a process, and a test must find them untouched.
#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include "testing/FreshProcess.h"
#include "testing/LogFile.h"

namespace Kit = Morvenn::Net::MvServerProxy::TestKit;

namespace {

int listTests() {
    testing::GTEST_FLAG(list_tests) = true;
    return RUN_ALL_TESTS();
}

// The list names each suite on a line, with a full stop at its end, and below it its tests,
// indented; a comment may follow a name.
std::vector<std::string> selectedTests() {
    std::vector<std::string> names;
    std::string suite;
    for (std::string line : Kit::linesOf(Kit::statusFromFreshProcess(listTests).output)) {
        line = line.substr(0, line.find("  #"));
        if (line.compare(0, 2, "  ") != 0) {
            suite = line;
        } else {
            names.push_back(suite + line.substr(2));
        }
    }
    return names;
}

bool passesAlone(const std::string& name) {
    const Kit::Outcome outcome = Kit::statusFromFreshProcess([&name] {
        testing::GTEST_FLAG(filter) = name;
        return RUN_ALL_TESTS();
    });
    if (!outcome.good()) {
        std::cout << name << ": " << outcome << '\n';
    }
    return outcome.good();
}

int runEachAlone() {
    int failed = 0;
    const std::vector<std::string> names = selectedTests();
    std::size_t run = 0;
    for (; run < names.size() && (failed == 0 || !testing::GTEST_FLAG(fail_fast)); ++run) {
        failed += passesAlone(names[run]) ? 0 : 1;
    }
    std::cout << run << " tests, each in a process of its own; " << failed << " failed\n";
    return failed == 0 && !names.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const Kit::PrivateTemp temp;  // no log of a test lands in the folder it was started from
    const std::string filter = testing::GTEST_FLAG(filter);
    const bool namesOneTest = filter.find_first_of("*?:-") == std::string::npos;
    if (namesOneTest || testing::GTEST_FLAG(list_tests)) {
        return RUN_ALL_TESTS();
    }
    return runEachAlone();
}
