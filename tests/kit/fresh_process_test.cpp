#include "testing/FreshProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>

using namespace Morvenn::Net::MvServerProxy::TestKit;

TEST(FreshProcess, BringsBackStatusAndOutput) {
    const Outcome outcome = statusFromFreshProcess([] {
        std::cout << "out ";
        std::cout.flush();
        std::cerr << "err";
        return 7;
    });
    EXPECT_EQ(outcome.status, 7);
    EXPECT_EQ(outcome.signal, 0);
    EXPECT_EQ(outcome.output, "out err");
    EXPECT_FALSE(outcome.good());
}

TEST(FreshProcess, NamesTheSignalThatEndedTheChild) {
    const Outcome outcome = inFreshProcess([] { raise(SIGKILL); });
    EXPECT_EQ(outcome.signal, SIGKILL);
    EXPECT_FALSE(outcome.good());
}

TEST(FreshProcess, TellsOfAnExceptionThatLeftTheWork) {
    const Outcome known = inFreshProcess([] { throw std::runtime_error("what it says"); });
    EXPECT_EQ(known.status, kLeftByException);
    EXPECT_EQ(known.output, "left by an exception: what it says\n");
    const Outcome unknown = inFreshProcess([] { throw 1; });
    EXPECT_EQ(unknown.status, kLeftByException);
    EXPECT_EQ(unknown.output, "left by an exception that is not a std::exception\n");
}

TEST(FreshProcess, WhatTheChildChangesStaysInTheChild) {
    int value = 1;
    EXPECT_TRUE(inFreshProcess([&value] { value = 2; }).good());
    EXPECT_EQ(value, 1);
}

TEST(FreshProcess, OutcomePrintsForPeople) {
    std::ostringstream out;
    out << Outcome{3, 0, "text"} << '|' << Outcome{0, 9, ""};
    EXPECT_EQ(out.str(), "exit status 3; output:\ntext|ended by signal 9; output:\n");
}
