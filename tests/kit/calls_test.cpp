#include "testing/Calls.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

template <typename T>
std::string printed(const T& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

}  // namespace

TEST(Calls, EqualCallsInARowAreOneEntry) {
    const Calls counted{receive(3), complete()};
    EXPECT_EQ(counted, (Calls{receive(), receive(2), complete()}));
    EXPECT_EQ(counted.entries().size(), 2U);
    EXPECT_EQ(counted.size(), 4U);
    EXPECT_EQ(counted.count(Function::Receive), 3U);
}

TEST(Calls, DifferInFunctionTextCountAndOrder) {
    EXPECT_NE((Calls{send("a")}), (Calls{sendNoAck("a")}));
    EXPECT_NE((Calls{send("a")}), (Calls{send("b")}));
    EXPECT_NE((Calls{receive(1)}), (Calls{receive(2)}));
    EXPECT_NE((Calls{init(), term()}), (Calls{term(), init()}));
}

TEST(Calls, EntryThatCountsNoCallIsNoEntry) {
    EXPECT_EQ((Calls{receive(0)}), Calls{});
}

TEST(Calls, PrintAsALineEach) {
    EXPECT_EQ(printed(Calls{}), "no calls");
    EXPECT_EQ(printed(Calls{sendNoAck("A=1\r\n"), sendEof(), receive(2)}),
              "\n    SendNoAck(\"A=1\\r\\n\")\n    SendEOF\n    Receive x 2");
}

TEST(Calls, DifferenceIsEmptyForEqualLists) {
    EXPECT_EQ(difference({init(), term()}, {init(), term()}), "");
}

TEST(Calls, DifferenceNamesTheFirstEntryAndTheFirstByte) {
    EXPECT_EQ(difference({init(), send("abc")}, {init(), send("abX")}),
              "entry 2: expected Send(\"abc\"), came Send(\"abX\")\n"
              "  the texts differ from byte 2 on:\n"
              "    expected \"c\"\n"
              "    actual   \"X\"");
    EXPECT_EQ(difference({init()}, {}), "entry 1: expected Init, came nothing");
    EXPECT_EQ(difference({}, {receive(2)}), "entry 1: expected nothing, came Receive x 2");
}
