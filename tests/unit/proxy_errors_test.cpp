// From a status of the proxy, or a finding of the library itself, to the exception and its log
// lines.
#include <climits>

#include "LoggedTest.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;

namespace {

using ProxyErrors = LoggedTest;

Failure failureOfStatus(int status) {
    return failureOf([status] { MvServerRequest::throwMvServerCppBindingException(status); });
}

struct StatusRow {
    int status;
    Failure expected;
};

const StatusRow kStatusTable[] = {
    {-1001, failure<MSPConnectionException>(0, "M")},
    {-5005, failure<MSPConnectionException>(0, "M")},
    {-1002, failure<MSPProtocolException>(0, "M")},
    {-1003, failure<MSPRuntimeException>(0, "M")},
    // Every other code.
    {-5006, failure<MSPUnrecognisedException>(0, "M")},
    {-1, failure<MSPUnrecognisedException>(0, "M")},
    {-2, failure<MSPUnrecognisedException>(0, "M")},
    {-42, failure<MSPUnrecognisedException>(0, "M")},
    {-246, failure<MSPUnrecognisedException>(0, "M")},
    {-1000, failure<MSPUnrecognisedException>(0, "M")},
    {-1004, failure<MSPUnrecognisedException>(0, "M")},
    {-5004, failure<MSPUnrecognisedException>(0, "M")},
    {-5007, failure<MSPUnrecognisedException>(0, "M")},
    {INT_MIN, failure<MSPUnrecognisedException>(0, "M")},
    {0, failure<MSPUnrecognisedException>(0, "M")},
    {1, failure<MSPUnrecognisedException>(0, "M")},
    {1001, failure<MSPUnrecognisedException>(0, "M")},
    {INT_MAX, failure<MSPUnrecognisedException>(0, "M")},
};

}  // namespace

// By design: the type code is 0 whatever the status was.
TEST_F(ProxyErrors, EveryStatusGivesItsClassWithTypeZero) {
    proxy.setLastError("M");
    for (const StatusRow& row : kStatusTable) {
        SCOPED_TRACE(row.status);
        EXPECT_EQ(failureOfStatus(row.status), row.expected);
        EXPECT_EQ(proxy.takeCalls(), (Calls{getLastError()}));
    }
}

TEST_F(ProxyErrors, StatusAndMessageAreLogged) {
    proxy.setLastError("connection refused");
    failureOfStatus(-1001);
    EXPECT_EQ(logLines(), (Lines{" [DEBUG] : MvServerRequest::throwMvServerCppBindingException()",
                                 " [ERROR] :  Exception caught. The error code is :--1001",
                                 " [ERROR] : connection refused"}));
}

TEST_F(ProxyErrors, PositiveStatusIsLoggedWithoutASign) {
    proxy.setLastError("M");
    failureOfStatus(7);
    EXPECT_EQ(errorLines(), (Lines{" Exception caught. The error code is :-7", "M"}));
}

TEST_F(ProxyErrors, MissingMessageIsReplaced) {
    EXPECT_EQ(failureOfStatus(-42),
              failure<MSPUnrecognisedException>(0, "No error message received"));
    EXPECT_EQ(errorLines(),
              (Lines{" Exception caught. The error code is :--42", "No error message received"}));
}

TEST_F(ProxyErrors, FailureToGetTheMessageIsTheMessage) {
    proxy.setLastError(std::nullopt, -5);
    EXPECT_EQ(failureOfStatus(-1003),
              failure<MSPRuntimeException>(0, "Could not retrieve last error message."));
}

TEST_F(ProxyErrors, EmptyTextGivesTheFallbackWithTheCode) {
    proxy.setLastError("dropped", -1);
    const std::string fallback =
        "Received MSP exception with no message string.  The exception code is :-1002";
    EXPECT_EQ(failureOfStatus(-1002), failure<MSPProtocolException>(0, fallback));
    EXPECT_EQ(errorLines(), (Lines{" Exception caught. The error code is :--1002", fallback}));
}

TEST_F(ProxyErrors, EmptyMessageWithGoodStatusGivesTheFallbackToo) {
    proxy.setLastError("", 0);
    EXPECT_EQ(
        failureOfStatus(-1001),
        failure<MSPConnectionException>(
            0, "Received MSP exception with no message string.  The exception code is :-1001"));
}

// --- getLastError -------------------------------------------------------------------------------

TEST_F(ProxyErrors, LastErrorHasFourAnswers) {
    const struct {
        std::optional<std::string> message;
        int status;
        const char* expected;
    } rows[] = {
        {std::nullopt, -1, "Could not retrieve last error message."},
        {std::nullopt, 1, "Could not retrieve last error message."},
        {std::nullopt, 0, "No error message received"},
        {"what failed", 0, "what failed"},
        {"", 0, ""},
        // By design: a message that comes with a failed status is dropped.
        {"dropped", -1, ""},
        {"dropped", 1, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message.value_or("(null)") + " " + std::to_string(row.status));
        proxy.setLastError(row.message, row.status);
        EXPECT_EQ(MvServerRequest::getLastError(), row.expected);
    }
    EXPECT_EQ(logLines(), Lines{}) << "asking writes no log line";
}

// By design: a message that comes with a failed status is dropped.
TEST_F(ProxyErrors, MessageWithAFailedStatusIsDropped) {
    proxy.setLastError("dropped", -1);
    EXPECT_EQ(MvServerRequest::getLastError(), "");
    EXPECT_EQ(proxy.calls(), (Calls{getLastError()}));
}

TEST_F(ProxyErrors, LastErrorIsCopiedUpToItsZeroByte) {
    const std::string message = std::string(65536, 'm') + "\xff\r\n";
    proxy.setLastError(message + std::string("\0 behind", 8));
    const std::string first = MvServerRequest::getLastError();
    EXPECT_EQ(MvServerRequest::getLastError(), message);
    EXPECT_EQ(first, message) << "the proxy's memory has changed since";
}

// --- what the library finds itself --------------------------------------------------------------

TEST_F(ProxyErrors, LocalFailureKeepsItsCodeAndAsksNoProxy) {
    EXPECT_EQ(failureOf([] { MvServerRequest::generateLocalMSPException(-1, "what failed"); }),
              failure<MSPRuntimeException>(-1, "what failed"));
    EXPECT_EQ(logLines(), (Lines{" [ERROR] : what failed", " [ERROR] : -1"}));
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(ProxyErrors, LocalFailureTakesAnyCode) {
    for (const int code : {0, 99, INT_MIN, INT_MAX}) {
        EXPECT_EQ(failureOf([code] { MvServerRequest::generateLocalMSPException(code, ""); }),
                  failure<MSPRuntimeException>(code, ""));
    }
}

// --- without a log ------------------------------------------------------------------------------

TEST(ProxyErrorsUnlogged, ExceptionsAreTheSameWhenTheLogCannotBeWritten) {
    FakeProxy proxy;
    proxy.setLastError("M");
    setenv("TEMP", "/no/such/directory", 1);
    ::testing::internal::CaptureStdout();
    for (const StatusRow& row : kStatusTable) {
        EXPECT_EQ(failureOfStatus(row.status), row.expected);
    }
    EXPECT_EQ(failureOf([] { MvServerRequest::generateLocalMSPException(-1, "m"); }),
              failure<MSPRuntimeException>(-1, "m"));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Could not open the log file:-" + logPath() + " Logging hence will be disabled");
}
