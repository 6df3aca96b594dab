// Memory that runs out in the directory, in signing and in the one-call entry.
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/retained/Memory.h"
#include "tests/unit/Directory.h"
#include "tests/unit/Signing.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

class AllocationFailure : public ProxyTest {
protected:
    PrivateTemp temp;
};

class Environment : public AllocationFailure {};

const char kServiceFailure[] = "Environment Info could not be retieved correctly";

// Names too long for the string object itself, so that every one of them is a request for memory.
const std::string kLong = "-a-text-that-does-not-fit-into-the-string-object-itself";
const std::string kTwo = "First" + kLong + "\n1\n2\ntype=web" + kLong + "\nkey" + kLong + "=v" +
                         kLong + "\n\nSecond" + kLong + "\n2\n1\ntype=mail" + kLong + "\n\n";

// An item that the library must not look at before it has the memory for the whole record.
const char* const kUnread[] = {"a", "b"};

std::string outcomeOf(const std::function<void()>& load) {
    try {
        load();
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    } catch (const Client::MSPException& e) {
        return e.getMessage();
    }
    return "loaded";
}

}  // namespace

TEST_F(Environment, FailedConversionIsLoggedAndGives99999) {
    Admin::Environment environment;
    environment.setName("Prod");
    environment.setIndex("5");
    const std::string index = "7" + std::string(100, ' ') + "and no further digits";
    Memory::failRequest(1);
    environment.setIndex(index);
    EXPECT_TRUE(Memory::hasFailed());
    EXPECT_EQ(environment.getIndex(), 99999);
    EXPECT_EQ(logLines(), (Lines{" [ERROR] : Invalid display index for Environment : Prod"}));

    environment.setIndex(index);
    EXPECT_EQ(environment.getIndex(), 7) << "the next one is read again";
}

TEST_F(Environment, FailedConversionGives99999EvenWithoutMemoryForItsLogLine) {
    Admin::Environment environment;
    environment.setName("Prod");
    const std::string index = "7" + std::string(100, ' ') + "and no further digits";
    Memory::limitRequests(0);
    environment.setIndex(index);
    Memory::limitRequests(SIZE_MAX);
    EXPECT_EQ(environment.getIndex(), 99999);
    EXPECT_EQ(logLines(), Lines{});
}

// Every single request for memory that follows the reading of the answer fails once.
TEST_F(AllocationFailure, InAServiceBlockIsAnMspExceptionAndKeepsWhatWasComplete) {
    const std::vector<std::string> fallback{"Fallback/1"};
    const std::vector<std::string> first{"First" + kLong + "/1"};
    std::map<std::string, int> outcomes;
    for (std::size_t number = 1; outcomes["loaded"] == 0; ++number) {
        SCOPED_TRACE(number);
        Admin::EnvironmentInfo info;
        proxy.takeCalls();
        proxy.answers({block(kTwo), end().doing([number] { Memory::failRequest(number); })});
        const std::string outcome = outcomeOf([&] { info.loadAllEnvironments(); });
        Memory::failRequest(0);
        ++outcomes[outcome];
        EXPECT_EQ(proxy.takeCalls().count(Function::Complete), outcome == "loaded" ? 2U : 1U);
        if (outcome == "loaded") {
            break;
        }
        proxy.answers(directoryAnswer("Fallback\n1\n0\n\n"));
        const auto names = namesOf(info.getEnvironments());
        EXPECT_TRUE(names == fallback || names == first);
        if (names == first) {
            EXPECT_NE(proxy.leftOver(), "") << "the list was not empty, so nothing was loaded";
            info.loadAllEnvironments();
        }
    }
    EXPECT_GT(outcomes["bad_alloc"], 0) << "copying the text, names, the environment itself";
    EXPECT_GT(outcomes[kServiceFailure], 5) << "keys, values and services of the two blocks";
    EXPECT_EQ(outcomes.size(), 3U);
    EXPECT_EQ(errorLines(),
              Lines(static_cast<std::size_t>(outcomes[kServiceFailure]), kServiceFailure));
}

TEST_F(AllocationFailure, SimpleResponseStaysNullWithoutMemoryForItsCopy) {
    char before[] = "before";
    char* response = before;
    proxy.answers({instruction(18), block("\ndone"), end().doing(&Memory::failNextMalloc)});
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), 0);
    EXPECT_EQ(response, nullptr);

    response = before;
    proxy.answers(gives(Function::SendEOF, -1001).doing(&Memory::failNextMalloc));
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), -1);
    EXPECT_EQ(response, nullptr);
}

TEST_F(AllocationFailure, SimpleTextsAreAllocatedExactlyAsLongAsNeeded) {
    char* response = nullptr;
    proxy.answers({instruction(18), block("\ndone"), end()});
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), 0);
    EXPECT_EQ(Memory::lastMalloc(), sizeof "done");
    std::free(response);

    proxy.setLastError("a message");
    proxy.answers(gives(Function::SendEOF, -1001));
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), -1);
    EXPECT_EQ(Memory::lastMalloc(), sizeof "a message");
    std::free(response);
}

TEST_F(AllocationFailure, WithoutResponseParameterNothingIsAllocatedForTheCaller) {
    proxy.answers({instruction(18), block("\ndone"), end()});
    const std::size_t before = Memory::lastMalloc();
    EXPECT_EQ(MvServerSimpleRequest("u", "b", "s", "a", "x", nullptr), 0);
    EXPECT_EQ(Memory::lastMalloc(), before);
}

TEST_F(AllocationFailure, LeavesTheSimpleRequestUnchanged) {
    char* response = nullptr;
    proxy.answers(gives(Function::SendEOF, 0).doing([] { Memory::limitRequests(1000); }));
    proxy.answers({instruction(18), block("\ndone")});
    EXPECT_THROW(MvServerSimpleRequest("u", "b", "s", "a", "x", &response), std::bad_alloc);
    EXPECT_EQ(response, nullptr);
}

TEST_F(AllocationFailure, LargestSignatureRecordIsAskedForWholeAndRefusedBeforeAnyCall) {
    const char* data[] = {kUnread[0], kUnread[1]};
    int sizes[] = {INT_MAX, INT_MAX - 11};
    constexpr std::size_t record = UINT32_MAX;
    Memory::limitRequests(std::size_t{1} << 30U);
    EXPECT_THROW(Crypto::PKCS7().sign(data, 2, sizes), std::bad_alloc);
    EXPECT_GE(Memory::largestRequest(), record);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(AllocationFailure, SignatureRecordWhoseSizeDoesNotFit32BitsIsALocalFailureWithoutMemory) {
    const std::string message =
        "PKCS7::sign: the items are larger than one request can be. Sign fewer at once.";
    const char* data[] = {kUnread[0], kUnread[1], kUnread[1]};
    int oneByteTooMany[] = {INT_MAX, INT_MAX - 10};
    int farTooMany[] = {INT_MAX, INT_MAX, INT_MAX};
    const Failure expected = failure<Client::MSPRuntimeException>(-1, message);
    Memory::limitRequests(std::size_t{1} << 30U);
    EXPECT_EQ(failureOf([&] { Crypto::PKCS7().sign(data, 2, oneByteTooMany); }), expected);
    EXPECT_EQ(failureOf([&] { Crypto::PKCS7().sign(data, 3, farTooMany); }), expected);
    EXPECT_EQ(errorLines(), (Lines{message, "-1", message, "-1"}));
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(AllocationFailure, SignatureCountTooLargeForMemoryIsAFailedAllocation) {
    proxy.answers(signatureRecord("7fffffff 01 00000001 41"));
    Memory::limitRequests(std::size_t{1} << 30U);
    EXPECT_THROW(Crypto::PKCS7().sign("item", 4), std::bad_alloc);
    EXPECT_EQ(Memory::largestRequest(), sizeof(std::size_t) + INT_MAX * sizeof(std::string));
}
