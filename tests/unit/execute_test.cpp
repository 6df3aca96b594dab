// The whole response as one string, and what ends the exchange.
#include <memory>
#include <new>

#include "RequestTest.h"
#include "ZlibInterposer.h"
#include "testing/Bytes.h"
#include "testing/Gzip.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using Morvenn::Net::MvServerProxy::RequestTest;

namespace {

const std::string kReuse =
    "Attempted reuse of MvServerRequest instance with more than one server requests.";

class Execute : public RequestTest {
protected:
    std::string execute() {
        MvServerRequest request(&session);
        request.setBody("x");
        return request.execute();
    }

    Failure failingExecute() {
        return failureOf([this] { execute(); });
    }
};

const Calls kSent{send("\r\nx"), sendEof()};

Calls sentThen(std::initializer_list<Call> calls) {
    Calls all = kSent;
    for (const Call& call : calls) {
        all.add(call);
    }
    return all;
}

}  // namespace

TEST_F(Execute, ResponsesOfEverySizeArriveWhole) {
    for (const std::size_t size : {0U, 1U, 4096U, 16383U, 16384U, 16385U, 32768U, 32769U, 40000U,
                                   65536U, 65537U, 1000000U}) {
        SCOPED_TRACE(size);
        const std::string body = sampleBytes(size);
        proxy.answers({block("\n"), inBlocksOf(16384, body), end()});
        EXPECT_EQ(execute(), body);
        const std::size_t blocks = (size + 16383) / 16384;
        EXPECT_EQ(proxy.takeCalls(), sentThen({receive(blocks + 2), complete()}));
        EXPECT_EQ(lines().end()[-2], " [DEBUG] : Received the response. The size is :-" +
                                         std::to_string(size) + "bytes");
    }
}

TEST_F(Execute, BlocksOfAnySizeArriveWhole) {
    const std::string body = sampleBytes(40000);
    for (const std::size_t size : {1U, 7U, 4096U, 16383U}) {
        proxy.answers({block("\n"), inBlocksOf(size, body), end()});
        EXPECT_EQ(execute(), body) << size;
    }
}

TEST_F(Execute, ZeroBytesAreBytesLikeOthers) {
    const std::string body(100, '\0');
    proxy.answers({block("\n" + body), end()});
    EXPECT_EQ(execute(), body);
}

// --- compression --------------------------------------------------------------------------------

TEST_F(Execute, CompressionIsOnForExactlyTheWordTrue) {
    const struct {
        const char* line;
        bool compressed;
    } rows[] = {
        {"ResponseHeaderCompression=true\n", true},
        {"ResponseHeaderCompression = true \r\n", true},
        {"ResponseHeaderCompression=true=false\n", true},
        {"ResponseHeaderCompression=TRUE\n", false},
        {"ResponseHeaderCompression=True\n", false},
        {"ResponseHeaderCompression=\"true\"\n", false},
        {"ResponseHeaderCompression=true,\n", false},
        {"ResponseHeaderCompression=1\n", false},
        {"ResponseHeaderCompression=\n", false},
        {"ResponseHeaderCompression\n", false},
        {"RESPONSEHEADERCOMPRESSION=true\n", false},
        {"", false},
    };
    const std::string packed = gzip("The answer");
    for (const auto& row : rows) {
        proxy.answers({block(std::string(row.line) + "\n" + packed), end()});
        EXPECT_EQ(execute(), row.compressed ? "The answer" : packed) << row.line;
    }
}

TEST_F(Execute, InflatedResponseIsTheSizeThatIsLogged) {
    const std::string body(100000, 'z');
    proxy.answers({block("ResponseHeaderCompression=true\n\n" + gzip(body)), end()});
    EXPECT_EQ(execute(), body);
    EXPECT_EQ(proxy.calls(), sentThen({receive(2), complete()}));
    EXPECT_EQ(lines().end()[-2], " [DEBUG] : Received the response. The size is :-100000bytes");
}

// --- failures: the exchange ends once, whatever the way out --------------------------------------

TEST_F(Execute, FailureOfTheProxyWhileReadingPassesUnchanged) {
    proxy.setLastError("M");
    proxy.answers({block("\nsome"), status(-1002)});
    EXPECT_EQ(failingExecute(), failure<MSPProtocolException>(0, "M"));
    EXPECT_EQ(proxy.calls(), sentThen({receive(2), getLastError(), complete()}));
}

TEST_F(Execute, FailureToInflatePassesUnchanged) {
    proxy.answers({block("ResponseHeaderCompression=true\n\nno gzip"), end()});
    EXPECT_EQ(failingExecute(), failure<MSPRuntimeException>(
                                    -1,
                                    " Invalid or incomplete compressed response receieved for Zlib "
                                    "decompression\n"));
    EXPECT_EQ(proxy.calls(), sentThen({receive(2), complete()}));
}

TEST_F(Execute, ZlibThatDoesNotStartIsALocalFailure) {
    ZlibInterposer::settings.initStatus = -4;
    proxy.answers(block("ResponseHeaderCompression=true\n\n"));
    EXPECT_EQ(
        failingExecute(),
        failure<MSPRuntimeException>(
            -1, "Out of memory\n. Decompression buffer for Zlib is smaller than required \n"));
    EXPECT_EQ(proxy.calls(), sentThen({receive(), complete()}));
}

TEST_F(Execute, ForeignExceptionPassesUnchanged) {
    proxy.answers({block("\n"), throwing(Function::Receive, std::bad_alloc())});
    EXPECT_THROW(execute(), std::bad_alloc);
    EXPECT_EQ(proxy.calls(), sentThen({receive(2), complete()}));
}

TEST_F(Execute, EndlessResponseEndsWhenTheProxyStopsIt) {
    struct Enough {};
    const std::string piece = sampleBytes(16384);
    proxy.answers({block("\n"), block(piece).times(1000), throwing(Function::Receive, Enough{})});
    EXPECT_THROW(execute(), Enough);
    EXPECT_EQ(proxy.calls(), sentThen({receive(1002), complete()}));
}

// --- send() --------------------------------------------------------------------------------------

TEST_F(Execute, StreamOfSendEndsTheExchangeWhenItIsDeleted) {
    proxy.answers({block("\nbody"), end()});
    std::unique_ptr<std::istream> stream;
    {
        MvServerRequest request(&session);
        request.setBody("x");
        stream.reset(request.send());
    }
    EXPECT_EQ(proxy.calls(), sentThen({receive()})) << "the request handed the exchange over";
    std::string body;
    *stream >> body;
    EXPECT_EQ(body, "body");
    stream.reset();
    EXPECT_EQ(proxy.calls(), sentThen({receive(2), complete()}));
}

TEST_F(Execute, RequestIsSentOnce) {
    proxy.answers({block("\n"), end()});
    MvServerRequest request(&session);
    request.setBody("x");
    request.execute();
    proxy.takeCalls();
    EXPECT_EQ(failureOf([&] { request.send(); }), failure<MSPRuntimeException>(-1, kReuse));
    EXPECT_EQ(failureOf([&] { request.execute(); }), failure<MSPRuntimeException>(-1, kReuse));
    EXPECT_EQ(proxy.calls(), Calls{});
    EXPECT_EQ(errorLines(), (Lines{kReuse, "-1", kReuse, "-1"}));
}

TEST_F(Execute, ReuseIsFoundBeforeAnInvalidRequest) {
    proxy.answers({block("\n"), end()});
    MvServerRequest request(&session);
    request.setBody("x");
    request.execute();
    request.setHeader("generatePKCS7Signatures", "null");
    EXPECT_EQ(failureOf([&] { request.send(); }), failure<MSPRuntimeException>(-1, kReuse));
}

TEST_F(Execute, RequestThatFailedBeforeItsResponseIsNotMarkedAsSent) {
    MvServerRequest request(&session);
    request.setBody("x");
    proxy.answers(gives(Function::Send, -1001));
    EXPECT_THROW(request.execute(), MSPConnectionException);
    proxy.answers({block("\nbody"), end()});
    EXPECT_EQ(request.execute(), "body");
}

TEST_F(Execute, RequestWhoseExchangeIsGoneSaysSo) {
    ZlibInterposer::settings.initStatus = -4;
    proxy.answers(block("ResponseHeaderCompression=true\n\n"));
    MvServerRequest request(&session);
    request.setBody("x");
    EXPECT_THROW(request.send(), MSPRuntimeException);
    proxy.takeCalls();
    EXPECT_EQ(failureOf([&] { request.send(); }),
              failure<MSPRuntimeException>(
                  -1,
                  "This MvServerRequest has no exchange any more: it was handed over to a response "
                  "or to a copy. Use a new MvServerRequest."));
    EXPECT_EQ(proxy.calls(), Calls{});
}
