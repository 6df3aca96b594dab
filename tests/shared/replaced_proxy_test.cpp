// The shared library asks the functions that the program defines.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/Gzip.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

class ReplacedProxy : public ProxyTest {
protected:
    PrivateTemp temp;
    MSPSession session;
};

}  // namespace

TEST_F(ReplacedProxy, AnswersATextBody) {
    proxy.answers({block("ResponseHeaderResponseCode=200\n\nThe answer"), end()});
    {
        MvServerRequest request(&session);
        request.setBody("body");
        EXPECT_EQ(request.execute(), "The answer");
        EXPECT_EQ(request.getResponseCode(), "200");
    }
    EXPECT_EQ(proxy.calls(), (Calls{init(), send("\r\nbody"), sendEof(), receive(2), complete()}));
    EXPECT_EQ(proxy.allocateGiven(), &std::malloc);
    EXPECT_EQ(proxy.releaseGiven(), &std::free);
}

TEST_F(ReplacedProxy, AnswersAStreamBodyWithACompressedResponse) {
    const std::string answer(100000, 'z');
    proxy.answers({instruction(16), instruction(18),
                   block("ResponseHeaderCompression=true\n\n" + gzip(answer)), end()});
    {
        MvServerRequest request(&session);
        std::istringstream document("<order/>");
        request.setBody(&document);
        EXPECT_EQ(request.execute(), answer);
    }
    EXPECT_EQ(proxy.calls(), (Calls{init(), sendNoAck("\r\n"), sendEof(), receive(),
                                    sendNoAck("<order/>"), sendEof(), receive(3), complete()}));
}

TEST_F(ReplacedProxy, FailuresAreCaughtByTheirClassOutsideTheLibrary) {
    proxy.setLastError("M");
    const struct {
        int code;
        Failure expected;
    } rows[] = {
        {-1001, failure<MSPConnectionException>(0, "M")},
        {-1002, failure<MSPProtocolException>(0, "M")},
        {-1003, failure<MSPRuntimeException>(0, "M")},
        {-42, failure<MSPUnrecognisedException>(0, "M")},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(failureOf([&] { MvServerRequest::throwMvServerCppBindingException(row.code); }),
                  row.expected);
    }
}

TEST_F(ReplacedProxy, FailureInsideTheResponseStreamPassesTheLibrary) {
    proxy.setLastError("M");
    proxy.answers({block("\n"), status(-5005)});
    EXPECT_EQ(failureOf([this] {
                  MvServerRequest request(&session);
                  request.setBody("body");
                  const std::unique_ptr<std::istream> stream(request.send());
                  stream->exceptions(std::ios::badbit);
                  stream->get();
              }),
              failure<MSPConnectionException>(0, "M"));
}

TEST_F(ReplacedProxy, OneLogServesProgramAndLibrary) {
    using Log = Morvenn::Net::MvServerProxy::Util::MvServerCppBindingLogger;
    setLogLevel("DEBUG");
    Log::getInstance();
    EXPECT_TRUE(Log::isDebug());
    MvServerRequest::term();
    Log::info("from the program");
    EXPECT_EQ(logLines(),
              (Lines{" [DEBUG] : MvServerRequest::term()", " [INFO ] : from the program"}));
    EXPECT_EQ(proxy.calls(), (Calls{term()}));
}
