// Signature requests: the four forms of sign, the record they send, and the exchange.
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"

#include <climits>
#include <string>

#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/Signing.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;
using namespace std::string_literals;
using Crypto::PKCS7;

namespace {

class Pkcs7 : public ProxyTest {
protected:
    PrivateTemp temp;
    PKCS7 pkcs7;

    // The record that was sent, as hexadecimal digits.
    std::string recordSent() {
        const Calls calls = proxy.takeCalls();
        return calls.entries().size() < 5
                   ? "nothing was sent"
                   : hex(Crypto::Internal::base64Decode(calls.entries()[4].text));
    }
};

const Failure kBadSize = failure<Client::MSPProtocolException>(0, "Size must be greater than 0");

}  // namespace

TEST_F(Pkcs7, BatchSendsItsItemsAsOneRecordInBase64) {
    const char* data[] = {"ab", "xyz"};
    int sizes[] = {2, 3};
    proxy.answers(signatureRecord("00000002 01 00000003 414243 00 00000001 44"));
    const Signatures signatures(pkcs7.sign(data, 2, sizes));
    EXPECT_EQ(signatures[0], "ABC");
    EXPECT_EQ(signatures[1], "D");
    EXPECT_TRUE(sameCalls(callsOfSign("AAAAAgAAAAJhYgAAAAN4eXo="), proxy.calls()));
}

TEST_F(Pkcs7, IntegersAreBigEndianAndItemsAreNotPadded) {
    const std::string item(0x010203, 'i');
    proxy.answers({instruction(18),
                   block("\n" + Crypto::Internal::base64Encode(unhex("00000001 01 00000001 53"))),
                   end()});
    EXPECT_EQ(pkcs7.sign(item.data(), 0x010203), "S");
    proxy.answers(oneSignature());
    proxy.takeCalls();
    EXPECT_EQ(pkcs7.sign("\x80\x00\xFF", 3), "SIG");
    EXPECT_EQ(recordSent(),
              "00000001"
              "00000003"
              "8000ff");
}

TEST_F(Pkcs7, LongRecordTravelsInPiecesOf4096) {
    std::string item(10000, 'i');
    proxy.answers(oneSignature());
    EXPECT_EQ(pkcs7.sign(item), "SIG");
    const std::string body = Crypto::Internal::base64Encode(unhex("00000001 00002710") + item);
    EXPECT_TRUE(
        sameCalls(Calls{init(), sendNoAck("generatePKCS7Signatures=\r\n\r\n"), sendEof(), receive(),
                        sendNoAck(body.substr(0, 4096)), sendNoAck(body.substr(4096, 4096)),
                        sendNoAck(body.substr(8192, 4096)), sendNoAck(body.substr(12288)),
                        sendEof(), receive(3), complete()},
                  proxy.calls()));
}

TEST_F(Pkcs7, AllFourFormsSendTheSameRecord) {
    const char* data[] = {"item"};
    int sizes[] = {4};
    std::string text = "item";
    proxy.answers({oneSignature(), oneSignature(), oneSignature(), oneSignature()});
    EXPECT_EQ(Signatures(pkcs7.sign(data, 1, sizes))[0], "SIG");
    const std::string record = recordSent();
    EXPECT_EQ(record, "0000000100000004" + hex("item"));
    EXPECT_EQ(Signatures(pkcs7.sign(&text, 1))[0], "SIG");
    EXPECT_EQ(recordSent(), record);
    EXPECT_EQ(pkcs7.sign(text), "SIG");
    EXPECT_EQ(recordSent(), record);
    EXPECT_EQ(pkcs7.sign("item", 4), "SIG");
    EXPECT_EQ(recordSent(), record);
}

TEST_F(Pkcs7, EveryCallStartsTheProxyAndNoneStopsIt) {
    proxy.answers({oneSignature(), oneSignature()});
    EXPECT_EQ(pkcs7.sign("a", 1), "SIG");
    EXPECT_EQ(pkcs7.sign("b", 1), "SIG");
    EXPECT_EQ(proxy.count(Function::Init), 2U);
    EXPECT_EQ(proxy.count(Function::Term), 0U);
}

TEST_F(Pkcs7, EveryCallHasASessionOfItsOwn) {
    proxy.answers({instruction(18), block("ResponseSessionID=S1\n\nAAAAAQEAAAABUw=="), end(),
                   oneSignature()});
    EXPECT_EQ(pkcs7.sign("a", 1), "S");
    proxy.takeCalls();
    EXPECT_EQ(pkcs7.sign("b", 1), "SIG");
    EXPECT_EQ(proxy.calls().entries().at(1).text, "generatePKCS7Signatures=\r\n\r\n");
}

TEST_F(Pkcs7, ItemsWithZeroBytesTravelWholeByPointerAndSize) {
    const std::string item = "a\0b"s;
    std::string asText = item;
    const char* data[] = {item.data()};
    int sizes[] = {3};
    proxy.answers({oneSignature(), oneSignature(), oneSignature()});
    EXPECT_EQ(Signatures(pkcs7.sign(data, 1, sizes))[0], "SIG");
    EXPECT_EQ(recordSent(),
              "0000000100000003"
              "610062");
    EXPECT_EQ(pkcs7.sign(item.data(), 3), "SIG");
    EXPECT_EQ(recordSent(),
              "0000000100000003"
              "610062");
    EXPECT_EQ(pkcs7.sign(asText), "SIG");
    EXPECT_EQ(recordSent(),
              "0000000100000003"
              "610062");
}

// By design: the three bytes behind the zero byte are not the item's.
TEST_F(Pkcs7, TextItemsAreCopiedUpToTheirFirstZeroByte) {
    std::string items[] = {"ab\0cde"s, "xyz"};
    proxy.answers(signatureRecord("00000002 01 00000001 41 01 00000001 42"));
    EXPECT_EQ(Signatures(pkcs7.sign(items, 2))[1], "B");
    const std::string record = recordSent();
    EXPECT_EQ(record.substr(0, 22),
              "00000002"
              "00000006"
              "616200");
    EXPECT_NE(record.substr(22, 6), hex("cde"));
    EXPECT_EQ(record.substr(28), "00000003" + hex("xyz"));
}

TEST_F(Pkcs7, NothingToSignGivesNullWithoutACall) {
    const char* data[] = {"ab"};
    int sizes[] = {2};
    std::string items[] = {"ab"};
    EXPECT_EQ(pkcs7.sign(nullptr, 1, sizes), nullptr);
    EXPECT_EQ(pkcs7.sign(data, 0, sizes), nullptr);
    EXPECT_EQ(pkcs7.sign(data, 1, nullptr), nullptr);
    EXPECT_EQ(pkcs7.sign(static_cast<std::string*>(nullptr), 1), nullptr);
    EXPECT_EQ(pkcs7.sign(items, 0), nullptr);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Pkcs7, LengthBelowOneIsRefusedBeforeAnyCall) {
    std::string empty;
    std::string items[] = {"ab", "", "c"};
    EXPECT_EQ(failureOf([&] { pkcs7.sign(empty); }), kBadSize);
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 0); }), kBadSize);
    EXPECT_EQ(failureOf([&] { pkcs7.sign(items, 3); }), kBadSize);
    for (const int size : {0, -1, INT_MIN}) {
        for (int bad = 0; bad < 3; ++bad) {
            const char* data[] = {"ab", "cd", "ef"};
            int sizes[] = {2, 2, 2};
            sizes[bad] = size;
            EXPECT_EQ(failureOf([&] { pkcs7.sign(data, 3, sizes); }), kBadSize);
        }
    }
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Pkcs7, SizeThatDoesNotFitAnIntIsRefusedBeforeAnyCall) {
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 0x80000000U); }), kBadSize);
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 0xFFFFFFFFU); }), kBadSize);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Pkcs7, NullItemIsALocalFailureWithoutACall) {
    const Failure expected =
        failure<Client::MSPRuntimeException>(-1, "PKCS7::sign: the data pointer is null.");
    const char* data[] = {"ab", nullptr};
    int sizes[] = {2, 3};
    EXPECT_EQ(failureOf([&] { pkcs7.sign(static_cast<const char*>(nullptr), 3); }), expected);
    EXPECT_EQ(failureOf([&] { pkcs7.sign(data, 2, sizes); }), expected);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Pkcs7, EveryLengthIsCheckedBeforeAnyItemIsLookedAt) {
    const char* data[] = {nullptr, "ab"};
    int sizes[] = {3, 0};
    EXPECT_EQ(failureOf([&] { pkcs7.sign(data, 2, sizes); }), kBadSize);
    EXPECT_EQ(failureOf([&] { pkcs7.sign(static_cast<const char*>(nullptr), 0); }), kBadSize);
    EXPECT_EQ(proxy.calls(), Calls{});
}

TEST_F(Pkcs7, FailureToStartTheProxyIsRaisedUnchanged) {
    proxy.setLastError("cannot start");
    proxy.answers(gives(Function::Init, -1001));
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 2); }),
              failure<Client::MSPConnectionException>(0, "cannot start"));
    EXPECT_TRUE(sameCalls(Calls{init(), getLastError(), complete()}, proxy.calls()))
        << "the unsent request is released";
}

// By design: the request is kept, so nothing completes its exchange.
TEST_F(Pkcs7, FailedExchangeIsRaisedUnchangedAndNotCompleted) {
    proxy.setLastError("gone");
    proxy.answers({gives(Function::SendEOF, -1002)});
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 2); }),
              failure<Client::MSPProtocolException>(0, "gone"));
    EXPECT_TRUE(sameCalls(
        Calls{init(), sendNoAck("generatePKCS7Signatures=\r\n\r\n"), sendEof(), getLastError()},
        proxy.calls()));
}

TEST_F(Pkcs7, FailureInTheBodyOfTheAnswerIsRaisedUnchangedAndCompletedOnce) {
    proxy.setLastError("gone");
    proxy.answers({instruction(18), block("\nAAAA"), instruction(-5005)});
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 2); }),
              failure<Client::MSPConnectionException>(0, "gone"));
    EXPECT_TRUE(sameCalls(Calls{init(), sendNoAck("generatePKCS7Signatures=\r\n\r\n"), sendEof(),
                                receive(3), getLastError(), complete()},
                          proxy.calls()));
}

TEST_F(Pkcs7, CredentialChallengeCannotBeAnswered) {
    proxy.answers({instruction(17)});
    EXPECT_EQ(failureOf([&] { pkcs7.sign("ab", 2); }),
              failure<Client::MSPException>(0, "No credential Provider available"));
}

TEST_F(Pkcs7, ObjectsAreInterchangeable) {
    PKCS7 copy(pkcs7);
    copy = pkcs7;
    proxy.answers(oneSignature());
    EXPECT_EQ(copy.sign("a", 1), "SIG");
}
