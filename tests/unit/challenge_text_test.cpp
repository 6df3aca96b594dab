// What a challenge text says about who asks: lines "key:value", each ended by a line feed. The text
// has at least one byte, the one after the challenge.
#include "client/CredentialChallenge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/Bytes.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace std::string_literals;
using Morvenn::Net::MvServerProxy::TestKit::escaped;

namespace {

struct Row {
    std::string challenge;
    std::string host, port, realm;
};

void expectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(escaped(row.challenge));
        const AuthScope scope = Internal::parseChallenge(row.challenge);
        EXPECT_EQ(scope.getHost(), row.host);
        EXPECT_EQ(scope.getPort(), row.port);
        EXPECT_EQ(scope.getRealm(), row.realm);
    }
}

}  // namespace

TEST(ChallengeText, ThreeLinesGiveHostPortAndRealm) {
    expectRows({
        {"host:gateway\nport:3128\nrealm:corp\n", "gateway", "3128", "corp"},
        {"realm:corp\nport:3128\nhost:gateway\n", "gateway", "3128", "corp"},  // in any order
        {"host:gateway\nport:3128\nrealm:corp", "gateway", "3128", "corp"},
    });
}

TEST(ChallengeText, WhatIsNotSaidStaysEmpty) {
    expectRows({
        {"\0"s, "", "", ""},
        {"\n\n\n", "", "", ""},
        {"port:3128\n", "", "3128", ""},
        {"host:\n", "", "", ""},
    });
}

TEST(ChallengeText, OnlyTheThreeKeysInLowerCaseCount) {
    expectRows({
        {"HOST:a\nPort:1\nrealM:r\n", "", "", ""},
        {"hos:a\nhosts:b\n host:c\nhost :d\n", "", "", ""},
        {":a\n::\n", "", "", ""},
        {"scheme:basic\nhost:a\nnonce:1\n", "a", "", ""},
    });
}

TEST(ChallengeText, LinesWithoutColonAreSkipped) {
    expectRows({
        {"host\nport:1\n", "", "1", ""},
        {"host=a\nrealm:r\n", "", "", "r"},
    });
}

// By design
TEST(ChallengeText, TextAfterTheSecondColonIsDropped) {
    expectRows({
        {"host:a:b\n", "a", "", ""},
        {"host::b\n", "", "", ""},
        {"realm:http://r:80/\n", "", "", "http"},
        {"host:[::1]\n", "[", "", ""},
    });
}

TEST(ChallengeText, LaterLineWithTheSameKeyOverwrites) {
    expectRows({
        {"host:a\nhost:b\n", "b", "", ""},
        {"host:a\nhost:\n", "", "", ""},
        {"host:a\nhost\n", "a", "", ""},  // not a line of a key
    });
}

TEST(ChallengeText, NothingIsTrimmed) {
    expectRows({
        {"host:gateway\r\nport:3128\r\nrealm:corp\r\n", "gateway\r", "3128\r", "corp\r"},
        {"host: a \nrealm:\tr\n", " a ", "", "\tr"},
        {"host:a\rport:1\n", "a\rport", "", ""},  // a lone carriage return ends no line
    });
}

TEST(ChallengeText, ZeroBytesAreOrdinaryBytes) {
    expectRows({
        {"host:a\0b\nport:1\n"s, "a\0b"s, "1", ""},
        {"host:a\n\0"s, "a", "", ""},
        {"host:a\nrealm:corp\0"s, "a", "", "corp\0"s},
    });
}

TEST(ChallengeText, LongValuesAreKeptWhole) {
    const std::string realm(16000, 'r');
    expectRows({{"host:a\nrealm:" + realm + "\n", "a", "", realm}});
}
