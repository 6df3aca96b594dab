// What a request may ask for, and how a bad wish is refused.

#include "Faults.h"
#include "FaultyGzip.h"
#include "Refusal.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

FaultPlan planOf(const std::string& list) {
    Request request;
    request.headers = {{"Hub-Fault", list}};
    return *requestedFaults(request, true);
}

std::string refusalOf(const std::string& list) {
    try {
        planOf(list);
        return "";
    } catch (const Refusal& refusal) {
        EXPECT_EQ(400u, refusal.status());
        return refusal.what();
    }
}

}  // namespace

TEST(Faults, RequestWithoutAWishHasNone) {
    EXPECT_EQ(std::nullopt, requestedFaults(Request(), true));
    EXPECT_EQ(std::nullopt, requestedFaults(Request(), false));
}

TEST(Faults, HeaderAndQueryArgumentMeanTheSameAndTheHeaderGoesFirst) {
    Request request;
    request.query["fault"] = "delay:5";
    EXPECT_EQ(5u, requestedFaults(request, true)->delayMs);
    request.headers = {{"hub-fault", "delay:6"}};
    EXPECT_EQ(6u, requestedFaults(request, true)->delayMs);
}

TEST(Faults, EveryFaultHasAUsualValue) {
    const FaultPlan plan =
        planOf("early,delay,dribble,cut,reset,close,length,headers,headerline,gzip,redirect");
    EXPECT_EQ(413u, plan.earlyStatus);
    EXPECT_EQ(1000u, plan.delayMs);
    EXPECT_EQ(10u, plan.dribbleMs);
    EXPECT_EQ(0u, plan.cutAfter);
    EXPECT_TRUE(plan.reset);
    EXPECT_EQ(std::nullopt, plan.resetAfter);
    EXPECT_TRUE(plan.close);
    EXPECT_EQ(10, plan.lengthError);
    EXPECT_EQ(20000u, plan.headerBytes);
    EXPECT_EQ(20000u, plan.headerLine);
    EXPECT_EQ("garbage", plan.gzip);
    EXPECT_EQ("/echo", plan.redirectTarget);
}

TEST(Faults, ValueFollowsTheFirstColon) {
    const FaultPlan plan = planOf("reset:7,length:-3,redirect:http://h:1/p,gzip:members");
    EXPECT_FALSE(plan.reset);
    EXPECT_EQ(7u, plan.resetAfter);
    EXPECT_EQ(-3, plan.lengthError);
    EXPECT_EQ("http://h:1/p", plan.redirectTarget);
    EXPECT_EQ("members", plan.gzip);
}

TEST(Faults, BadWishesAreRefusedWithWhatIsExpected) {
    const struct {
        const char* list;
        const char* refusal;
    } rows[] = {
        {"slow",
         "no fault \"slow\"; the hub knows early, delay, dribble, cut, reset, close, "
         "length, headers, headerline, gzip, redirect"},
        {"delay,",
         "no fault \"\"; the hub knows early, delay, dribble, cut, reset, close, "
         "length, headers, headerline, gzip, redirect"},
        {"delay:", "fault \"delay\" takes a number from 0 to 600000, not \"\""},
        {"delay:-1", "fault \"delay\" takes a number from 0 to 600000, not \"-1\""},
        {"delay:600001", "fault \"delay\" takes a number from 0 to 600000, not \"600001\""},
        {"early:200", "fault \"early\" takes a number from 400 to 599, not \"200\""},
        {"headers:0", "fault \"headers\" takes a number from 1 to 1000000, not \"0\""},
        {"gzip:bad",
         "fault \"gzip\" takes garbage or damaged or cut or trailing or empty or "
         "members, not \"bad\""},
        {"redirect:a\r\nX: y",
         "fault \"redirect\" takes a URL without blanks, not "
         "\"a\r\nX: y\""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        EXPECT_EQ(row.refusal, refusalOf(row.list));
    }
}

TEST(Faults, WishIsRefusedWhileFaultsAreOff) {
    Request request;
    request.query["fault"] = "delay";
    try {
        requestedFaults(request, false);
        FAIL() << "the wish was granted";
    } catch (const Refusal& refusal) {
        EXPECT_EQ(403u, refusal.status());
        EXPECT_STREQ("the request asks for a fault; start mvhub with --faults", refusal.what());
    }
}
