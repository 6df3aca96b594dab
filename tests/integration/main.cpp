// All tests of a program share its servers and so one process.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "testing/LogFile.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const Morvenn::Net::MvServerProxy::TestKit::PrivateTemp temp;
    // The folders of the servers lie in there, and servers run as another user.
    const bool passed = ::chmod(temp.path().c_str(), 0755) == 0 && RUN_ALL_TESTS() == 0;
    return passed && testing::UnitTest::GetInstance()->test_to_run_count() > 0 ? 0 : 1;
}
