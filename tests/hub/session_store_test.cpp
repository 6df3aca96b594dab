// Sessions: ids, counting, and what happens when there are too many.

#include "SessionStore.h"

#include <gmock/gmock.h>

using Morvenn::Net::MvServerProxy::Hub::SessionStore;

TEST(SessionStore, IdIs32HexadecimalDigits) {
    SessionStore sessions;
    EXPECT_THAT(sessions.visit("").id, testing::MatchesRegex("[0-9a-f]{32}"));
}

TEST(SessionStore, EmptyIdStartsAnotherSessionEachTime) {
    SessionStore sessions;
    EXPECT_NE(sessions.visit("").id, sessions.visit("").id);
    EXPECT_EQ(2u, sessions.size());
}

TEST(SessionStore, KnownIdKeepsItsSessionAndCountsItsRequests) {
    SessionStore sessions;
    const std::string id = sessions.visit("").id;
    EXPECT_EQ(2u, sessions.visit(id).requests);
    EXPECT_EQ(3u, sessions.visit(id).requests);
    EXPECT_EQ(id, sessions.visit(id).id);
    EXPECT_EQ(1u, sessions.size());
}

TEST(SessionStore, UnknownIdIsReplacedByANewOne) {
    SessionStore sessions;
    const auto session = sessions.visit("0123456789abcdef0123456789abcdef");
    EXPECT_NE("0123456789abcdef0123456789abcdef", session.id);
    EXPECT_EQ(1u, session.requests);
}

TEST(SessionStore, BeyondTheCapacityTheSessionUsedLongestAgoIsForgotten) {
    SessionStore sessions(2);
    const std::string first = sessions.visit("").id;
    const std::string second = sessions.visit("").id;
    sessions.visit(first);
    sessions.visit("");
    EXPECT_EQ(2u, sessions.size());
    EXPECT_EQ(first, sessions.visit(first).id);
    EXPECT_NE(second, sessions.visit(second).id);
}
