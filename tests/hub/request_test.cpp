// Looking at a request: headers, compression, and what the guard lets in.

#include "Refusal.h"
#include "RequestGuard.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

Request withHeader(const std::string& name, const std::string& value) {
    Request request;
    request.headers = {{name, value}};
    return request;
}

// The status that the guard refuses with, 0 when it lets the request in.
unsigned refusedWith(const Request& request, bool loopbackNamesOnly = true) {
    try {
        checkRequest(request, Limits(), loopbackNamesOnly);
        return 0;
    } catch (const Refusal& refusal) {
        return refusal.status();
    }
}

}  // namespace

TEST(Request, HeaderNamesCompareWithoutCaseAndTheFirstCounts) {
    Request request;
    request.headers = {{"SessionID", "1"}, {"sessionid", "2"}};
    EXPECT_EQ("1", *request.header("SESSIONID"));
    EXPECT_EQ(nullptr, request.header("Session"));
    EXPECT_EQ("", request.headerText("Session"));
}

TEST(Request, GzipIsTakenWhenListedWithAWeight) {
    const struct {
        const char* list;
        bool taken;
    } rows[] = {
        {"gzip", true},
        {"GZIP", true},
        {"x-gzip", true},
        {"deflate, gzip", true},
        {"gzip;q=0.1", true},
        {"gzip ; q=1", true},
        {"", false},
        {"identity", false},
        {"gzip;q=0", false},
        {"gzip;q=0.000", false},
        {"deflate;q=1", false},
        {"gzipped", false},
        {"*", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list);
        EXPECT_EQ(row.taken, acceptsGzip(withHeader("Accept-Encoding", row.list)));
    }
}

TEST(RequestGuard, HostNamesTheLoopback) {
    for (const char* host : {"localhost", "LOCALHOST:80", "127.0.0.1", "127.0.0.1:16064", "[::1]",
                             "[::1]:16064", "localhost:"}) {
        SCOPED_TRACE(host);
        EXPECT_EQ(0u, refusedWith(withHeader("Host", host)));
    }
    for (const char* host : {"", "example.com", "localhost.example.com", "127.0.0.1.example.com",
                             "localhost:80x", "127.0.0.2", "::1", "user@localhost"}) {
        SCOPED_TRACE(host);
        EXPECT_EQ(421u, refusedWith(withHeader("Host", host)));
        EXPECT_EQ(0u, refusedWith(withHeader("Host", host), false));
    }
}

TEST(RequestGuard, RequestsOfWebPagesAreRefused) {
    Request request = withHeader("Host", "localhost");
    request.headers.emplace_back("origin", "http://localhost");
    EXPECT_EQ(403u, refusedWith(request));
}

TEST(RequestGuard, RequestLineAndHeadersHaveALimit) {
    Request request = withHeader("Host", "localhost");  // 4 + 9 + ": " + CR LF = 17
    request.method = "GET";
    request.path = "/";  // "GET / HTTP/1.1" CR LF = 16
    const std::size_t rest = 65536 - 17 - 16 - 5;
    request.headers.emplace_back("X", std::string(rest, 'x'));
    EXPECT_EQ(0u, refusedWith(request));
    request.headers.back().second += 'x';
    EXPECT_EQ(431u, refusedWith(request));
}

TEST(RequestGuard, BodyHasALimitUnlessItIsZero) {
    Limits limits;
    limits.bodyBytes = 10;
    EXPECT_NO_THROW(checkBodySize(10, limits));
    EXPECT_THROW(checkBodySize(11, limits), Refusal);
    limits.bodyBytes = 0;
    EXPECT_NO_THROW(checkBodySize(UINT64_MAX, limits));
}
