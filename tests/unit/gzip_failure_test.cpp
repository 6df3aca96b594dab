// Every status that zlib can give, at its start, while it inflates, and at its end.
#include <memory>

#include "LoggedTest.h"
#include "ZlibInterposer.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "testing/Gzip.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::LoggedTest;

namespace {

// These texts are part of the interface, blanks, line ends and spelling included.
const struct {
    int status;
    const char* message;
} kZlibTable[] = {
    {-1, " Invalid I/p or O/p Stream set for Zlib decompression"},
    {-2, "Invalid compression level set in Zlib for decompressing compressed response \n"},
    {-3, " Invalid or incomplete compressed response receieved for Zlib decompression\n"},
    {-4, "Out of memory\n. Decompression buffer for Zlib is smaller than required \n"},
    {-5, "Buffer is either invalid or is not large enough"},
    {-6, "Zlib version mismatch!\n"},
    // Any other status has an empty message.
    {2, ""},
    {7, ""},
    {-7, ""},
    {-99, ""},
};

using GzipFailure = LoggedTest;

std::unique_ptr<MSPStream> openBody() {
    auto stream = std::make_unique<MSPStream>(
        new MSPBufferBase<char>(std::make_unique<ResponseStream>(), true));
    stream->exceptions(std::ios::badbit);
    return stream;
}

std::string logOf(const char* message) {
    return std::string(" [ERROR] : ") + message + "\n [ERROR] : -1\n";
}

}  // namespace

TEST_F(GzipFailure, StartThatFailsLeavesTheConstructorAndEndsTheExchange) {
    std::string log;
    for (const auto& row : kZlibTable) {
        SCOPED_TRACE(row.status);
        ZlibInterposer::settings.initStatus = row.status;
        EXPECT_EQ(failureOf([] { openBody(); }), failure<MSPRuntimeException>(-1, row.message));
        EXPECT_EQ(proxy.takeCalls(), (Calls{complete()}));
        log += logOf(row.message);
    }
    EXPECT_EQ(fileText(logPath()), log);
    EXPECT_EQ(ZlibInterposer::record.ends, 0) << "what was not started is not ended";
}

TEST_F(GzipFailure, StatusWithoutOutputIsRaisedAfterTheRestWasRead) {
    for (const auto& row : kZlibTable) {
        SCOPED_TRACE(row.status);
        ZlibInterposer::settings.failAt = 1;
        ZlibInterposer::settings.inflateStatus = row.status;
        proxy.answers({block(gzip("The answer")), block("more"), end()});
        {
            const auto stream = openBody();
            EXPECT_EQ(failureOf([&] { stream->get(); }),
                      failure<MSPRuntimeException>(-1, row.message));
        }
        EXPECT_EQ(proxy.takeCalls(), (Calls{receive(3), complete()}));
    }
    EXPECT_EQ(ZlibInterposer::record.inflates, 10) << "not called again after a failure";
}

TEST_F(GzipFailure, StatusOfALaterCallComesAfterTheBytesBeforeIt) {
    const std::string packed = gzip("The answer");
    ZlibInterposer::settings.failAt = 2;
    ZlibInterposer::settings.inflateStatus = -5;
    proxy.answers({block(packed.substr(0, packed.size() - 8)),
                   block(packed.substr(packed.size() - 8)), end()});
    const auto stream = openBody();
    char bytes[10];
    stream->read(bytes, sizeof bytes);
    EXPECT_EQ(std::string(bytes, 10), "The answer");
    EXPECT_EQ(failureOf([&] { stream->get(); }),
              failure<MSPRuntimeException>(-1, "Buffer is either invalid or is not large enough"));
}

TEST_F(GzipFailure, FailureOfTheProxyWhileTheRestIsReadComesFirst) {
    proxy.setLastError("M");
    proxy.answers({block("no gzip"), status(-1002)});
    const auto stream = openBody();
    EXPECT_EQ(failureOf([&] { stream->get(); }), failure<MSPProtocolException>(0, "M"));
}

// By design: a destructor lets no failure out; the log has it.
TEST_F(GzipFailure, EveryFailureOfTheCleanUpIsLogged) {
    std::string log;
    for (const auto& row : kZlibTable) {
        SCOPED_TRACE(row.status);
        ZlibInterposer::settings.endStatus = row.status;
        EXPECT_EQ(failureOf([] { openBody(); }), Failure{});
        EXPECT_EQ(proxy.takeCalls(), (Calls{complete()}));
        log += logOf(row.message);
    }
    EXPECT_EQ(fileText(logPath()), log);
}

using GzipStream = LoggedTest;

// By design: a destructor lets no failure out; the log has it.
TEST_F(GzipStream, CleanUpFailureIsLoggedAndSwallowed) {
    ZlibInterposer::settings.endStatus = -2;
    proxy.answers(block(gzip("The answer")));
    {
        const auto stream = openBody();
        std::string word;
        *stream >> word;
        EXPECT_EQ(word, "The");
    }
    EXPECT_EQ(proxy.calls(), (Calls{receive(), complete()}));
    EXPECT_EQ(fileText(logPath()),
              logOf("Invalid compression level set in Zlib for decompressing compressed "
                    "response \n"));
}
