// What a log line shows of foreign text.

#include "Log.h"
#include "ListenSocket.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

TEST(Log, ControlCharactersAndBackslashesAreEscaped) {
    EXPECT_EQ("a\\x0ab\\x1b[31m\\x5cn\\x7f \xc3\xa4", printable("a\nb\x1b[31m\\n\x7f \xc3\xa4"));
}

TEST(ListenSocket, LoopbackIsTheWholeNet127AndOneIpv6Address) {
    for (const char* address : {"127.0.0.1", "127.255.0.9", "::1"}) {
        EXPECT_TRUE(isLoopbackAddress(address)) << address;
    }
    for (const char* address : {"0.0.0.0", "::", "128.0.0.1", "10.0.0.1", "localhost", ""}) {
        EXPECT_FALSE(isLoopbackAddress(address)) << address;
    }
}

TEST(ListenSocket, Ipv6AddressesStandInBracketsInAUrl) {
    EXPECT_EQ("127.0.0.1:80", urlAuthority("127.0.0.1", 80));
    EXPECT_EQ("[::1]:16064", urlAuthority("::1", 16064));
}
