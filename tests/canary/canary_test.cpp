// A password leaves no trace: not in the log at debug level, on standard output, in exception
// messages, or in memory that the library gives back. Each case runs in a child process.
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/FreshProcess.h"
#include "testing/LogFile.h"
#include "tests/canary/ReleasedMemory.h"
#include "tests/canary/SilentProxy.h"
#include "tests/unit/IcuInterposer.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Tests;
using Client::Credential;

namespace {

// Its first and last characters, in local text, in UTF-8 and in UTF-16. Nothing here comes from the
// heap but the long password, which is put together in one piece: what the test itself releases is
// not to be found in blocks that are used again.
struct Canary {
    const char* name;
    std::string_view password;
    const char* localCodePage;
    std::vector<std::string_view> traces;
};

std::string_view utf16(std::u16string_view units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

const Canary& ascii() {
    static const Canary canary{
        "ASCII",
        "C4n4ryBegin-in-the-middle-Pa55wordEnd",
        "UTF-8",
        {"C4n4ryBegin", "Pa55wordEnd", utf16(u"C4n4ryBegin"), utf16(u"Pa55wordEnd")}};
    return canary;
}

// "Kanäri" and "Wörter" in ISO-8859-1, so that local text and UTF-8 differ.
const Canary& nonAscii() {
    static const Canary canary{
        "not ASCII",
        "Kan\xE4ri-Begin-in-the-middle-W\xF6rter-End",
        "ISO-8859-1",
        {"Kan\xE4ri-Begin", "W\xF6rter-End", "Kan\xC3\xA4ri-Begin", "W\xC3\xB6rter-End",
         utf16(u"Kan\u00E4ri-Begin"), utf16(u"W\u00F6rter-End")}};
    return canary;
}

// A password beyond every buffer of the conversion.
const Canary& longText() {
    static const std::string password = [] {
        std::string text;
        text.reserve(80000);
        while (text.size() < 70000) {
            text += ascii().password;
        }
        return text;
    }();
    static const Canary canary{"long", password, ascii().localCodePage, ascii().traces};
    return canary;
}

// The application's own credential, never released.
const Credential* s_credential = nullptr;

void setCredential(const Canary& canary) {
    static const std::string password(canary.password);
    static const Credential credential("a-user-name-for-the-gateway", password, "DOMAIN");
    s_credential = &credential;
}

const Credential* give() {
    return s_credential;
}

using Provide = std::function<const Credential*()>;

class Provider final : public Client::CredentialProvider {
public:
    explicit Provider(const Provide& provide) : m_provide(provide) {}
    const Credential* getCredential(Client::AuthScope*) const override { return m_provide(); }

private:
    const Provide& m_provide;
};

bool holds(const std::string& text, const Canary& canary) {
    for (const std::string_view trace : canary.traces) {
        if (text.find(trace) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// The result of the request, or the message of what it threw.
std::string executeWith(const Provide& provide) {
    const Provider provider(provide);
    Client::MSPSession session;
    Client::MvServerRequest request(&session);
    std::istringstream document("<order/>");
    request.setBody(&document);
    request.setCredentialProvider(&provider);
    try {
        return request.execute();
    } catch (const Client::MSPException& e) {
        return e.getMessage();
    } catch (const std::exception& e) {
        return e.what();
    }
}

struct Case {
    SilentProxy::Behaviour proxy;
    Provide provide;
    std::string outcome;  // result or message
    bool answers = true;  // whether an answer is sent
};

std::string runAndLook(const Case& c) {
    ReleasedMemory::look(true);
    std::string outcome = executeWith(c.provide);
    ReleasedMemory::look(false);
    return outcome;
}

// In the child: nothing may be printed that holds the password, so only verdicts are.
int verdict(const Canary& canary, const Case& c) {
    IcuInterposer::settings.localCodePage = canary.localCodePage;
    for (const std::string_view trace : canary.traces) {
        ReleasedMemory::lookFor(trace);
    }
    setCredential(canary);
    SilentProxy::behaviour = c.proxy;
    Util::MvServerCppBindingLogger::getInstance();
    const std::string outcome = runAndLook(c);

    int problems = 0;
    const auto expect = [&problems](bool isGood, const char* what) {
        if (!isGood) {
            ++problems;
            std::cerr << what << '\n';
        }
    };
    expect(!holds(outcome, canary), "the password is in the outcome");
    expect(outcome == c.outcome, "another outcome was expected");
    expect(holds(std::string(SilentProxy::lastSent()), canary) == c.answers,
           "the answer was to be sent, or was not");
    expect(ReleasedMemory::seen() > 10, "the heap was not looked at");
    if (ReleasedMemory::found() > 0) {
        expect(false, "the password is in released memory");
        ReleasedMemory::describeFirst();
    }
    const std::string log = TestKit::fileText(TestKit::logPath());
    expect(log.find("host:gateway") != std::string::npos, "the log is not at debug level");
    expect(!holds(log, canary), "the password is in the log");
    return problems;
}

void expectNoTrace(const Case& c) {
    const TestKit::PrivateTemp temp;
    TestKit::setLogLevel("DEBUG");
    for (const Canary* canary : {&ascii(), &nonAscii(), &longText()}) {
        SCOPED_TRACE(canary->name);
        const TestKit::Outcome child =
            TestKit::statusFromFreshProcess([&] { return verdict(*canary, c); });
        EXPECT_TRUE(child.good()) << child;
        EXPECT_FALSE(holds(child.output, *canary)) << "the password is on standard output";
    }
}

}  // namespace

TEST(PasswordCanary, GoodExchange) {
    expectNoTrace({{}, give, "done"});
}

TEST(PasswordCanary, ChallengedFiveTimes) {
    SilentProxy::Behaviour proxy;
    proxy.challenges = 5;
    expectNoTrace({proxy, give, "done"});
}

TEST(PasswordCanary, AnswerCannotBeSent) {
    SilentProxy::Behaviour proxy;
    proxy.answerResult = -1001;
    expectNoTrace({proxy, give, "the proxy refused"});
}

TEST(PasswordCanary, RequestFailsAfterTheAnswer) {
    SilentProxy::Behaviour proxy;
    proxy.afterAnswer = -1002;
    expectNoTrace({proxy, give, "the proxy refused"});
}

TEST(PasswordCanary, ResponseFailsAfterTheAnswer) {
    SilentProxy::Behaviour proxy;
    proxy.endsInFailure = true;
    expectNoTrace({proxy, give, "the proxy refused"});
}

TEST(PasswordCanary, ProviderThrowsAfterItLookedAtTheCredential) {
    const Provide throwing = []() -> const Credential* {
        give();
        throw std::range_error("no credential today");
    };
    expectNoTrace({{}, throwing, "no credential today", false});
}

TEST(PasswordCanary, ConverterCannotBeOpened) {
    const Provide failing = [] {
        IcuInterposer::settings.failOpen = 1;
        return give();
    };
    expectNoTrace({{},
                   failing,
                   "Exception occurred while converting to UTF-8 bytes.Error opening "
                   "converter U_FILE_ACCESS_ERROR\n",
                   false});
}

TEST(PasswordCanary, ConversionFailsHalfWay) {
    const Provide failing = [] {
        IcuInterposer::settings.fromUnicodeStatus = U_INVALID_STATE_ERROR;
        return give();
    };
    expectNoTrace({{},
                   failing,
                   "Exception occurred while converting to UTF-8 bytes.An error occured "
                   "converting Unicode to " +
                       IcuInterposer::describe("UTF-8") + ".\nU_INVALID_STATE_ERROR\n",
                   false});
}

// Were it blind, everything above would pass.
TEST(ReleasedMemory, BlocksThatHoldTheBytesAreFound) {
    const TestKit::Outcome child = TestKit::statusFromFreshProcess([] {
        ReleasedMemory::lookFor("a text to look for");
        ReleasedMemory::look(true);
        {
            const std::string local =
                std::string(100, 'x') + "a text to look for" + std::string(9, 'x');
        }
        ReleasedMemory::look(false);
        return ReleasedMemory::found() > 0 ? 0 : 1;
    });
    EXPECT_TRUE(child.good()) << child;
}
