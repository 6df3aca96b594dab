// The directory's answer is read in time that grows with its length, whatever it announces.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "testing/FakeProxy.h"
#include "tests/unit/Directory.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

std::string answerOf(int environments) {
    std::string answer;
    for (int i = 0; i < environments; ++i) {
        const std::string number = std::to_string(i);
        answer += "Environment " + number + "\n" + number + "\n3\ntype=web\nhost=server" + number +
                  ".example\nport=8080\n\n";
    }
    return answer;
}

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double secondsToLoad(const std::string& answer, std::size_t expected) {
    FakeProxy proxy;
    proxy.answers(directoryAnswer(answer));
    Admin::EnvironmentInfo info;
    const double start = processorSeconds();
    const std::size_t size = info.getEnvironments().size();
    const double seconds = processorSeconds() - start;
    EXPECT_EQ(size, expected);
    return seconds;
}

double bestOf(int runs, const std::string& answer, std::size_t expected) {
    double best = secondsToLoad(answer, expected);
    for (int i = 1; i < runs; ++i) {
        best = std::min(best, secondsToLoad(answer, expected));
    }
    return best;
}

}  // namespace

// Time that grew with the square of the length would be a hundred times as long.
TEST(EnvironmentSize, TenTimesTheEnvironmentsTakeAboutTenTimesTheTime) {
    const double small = bestOf(5, answerOf(10000), 10000);
    const double large = bestOf(3, answerOf(100000), 100000);
    EXPECT_LT(large / small, 25.0) << small << " s and " << large << " s";
}

TEST(EnvironmentSize, HugePropertyCountEndsAtTheEndOfTheAnswer) {
    for (const char* count : {"2147483647", "2000000000"}) {
        const double seconds = secondsToLoad("A\n1\n" + std::string(count) + "\ntype=t\n", 1);
        EXPECT_LT(seconds, 0.5);
    }
}
