// The answer to a signature request: base64 of a record of big-endian integers and bytes.
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "testing/Failure.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"
#include "tests/unit/Signing.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;
using namespace std::string_literals;

namespace {

using Entries = std::vector<std::string>;

class Pkcs7Answer : public ProxyTest {
protected:
    PrivateTemp temp;

    // Signs one item in the batch form; the answer may nevertheless hold any number of entries.
    Signatures signedWith(const Script& answer) {
        const char* data[] = {"item"};
        int sizes[] = {4};
        proxy.answers(answer);
        return Signatures(Crypto::PKCS7().sign(data, 1, sizes));
    }

    // The first entries of the answer; the caller knows how many there are.
    Entries entries(std::size_t count, const std::string& digits) {
        const Signatures signatures = signedWith(signatureRecord(digits));
        return Entries(signatures.get(), signatures.get() + count);
    }
};

}  // namespace

TEST_F(Pkcs7Answer, EntryIsTheBytesBehindFlagAndLength) {
    EXPECT_EQ(entries(1, "00000001 01 00000003 414243"), Entries{"ABC"});
}

TEST_F(Pkcs7Answer, FlagDoesNotChangeTheResult) {
    for (const char* flag : {"00", "01", "02", "7f", "ff"}) {
        SCOPED_TRACE(flag);
        EXPECT_EQ(entries(1, "00000001" + std::string(flag) + "00000003414243"), Entries{"ABC"});
    }
}

TEST_F(Pkcs7Answer, EntriesFollowEachOtherWithoutPadding) {
    EXPECT_EQ(entries(3, "00000003 01 00000001 41 00 00000000 01 00000003 420043"),
              (Entries{"A", "", "B\0C"s}));
}

TEST_F(Pkcs7Answer, LengthIsBigEndian) {
    std::string digits = "00000001 01 00000102";
    digits += hex(std::string(0x0102, 'x')) + "5959";
    EXPECT_EQ(entries(1, digits), Entries{std::string(0x0102, 'x')});
}

TEST_F(Pkcs7Answer, BytesBehindTheLastEntryAreIgnored) {
    EXPECT_EQ(entries(1, "00000001 01 00000001 41 ffffffffffff"), Entries{"A"});
}

TEST_F(Pkcs7Answer, CountOfZeroGivesAnArrayWithoutElements) {
    EXPECT_NE(signedWith(signatureRecord("00000000")), nullptr);
    EXPECT_NE(signedWith(signatureRecord("00000000 01 00000001 41")), nullptr);
}

// By design
TEST_F(Pkcs7Answer, EntryBeyondTheDataIsCut) {
    EXPECT_EQ(entries(1, "00000001 01 00000004 414243"), Entries{"ABC"});
    EXPECT_EQ(entries(1, "00000001 01 7fffffff 414243"), Entries{"ABC"});
    EXPECT_EQ(entries(1, "00000001 01 00000001"), Entries{""});
}

// By design
TEST_F(Pkcs7Answer, NegativeLengthTakesTheRest) {
    EXPECT_EQ(entries(1, "00000001 01 ffffffff 414243"), Entries{"ABC"});
    EXPECT_EQ(entries(1, "00000001 01 80000000 414243"), Entries{"ABC"});
    // The next entry starts at 4 + 5 - 9 = 0: flag 00, length 00 00 02 01.
    EXPECT_EQ(entries(2, "00000002 01 fffffff7 414243"), (Entries{"ABC", unhex("fffffff7414243")}));
}

TEST_F(Pkcs7Answer, EntryOutsideTheDataIsOutOfRange) {
    for (const char* digits : {
             "00000001",                               // no entry at all
             "00000001 01",                            // no length
             "00000001 01 000000",                     // a part of the length
             "00000002 01 00000003 414243",            // no second entry
             "00000002 01 00000003 414243 01 000000",  // a part of its length
             "00000002 01 00000004 41424301 0000",
             "00000002 01 7fffffff 414243",  // position far behind the data
             "00000003 01 7fffffff 41",
             "00000002 01 fffffff6 414243",  // the next would begin at 4 + 5 - 10 = -1
             "00000002 01 80000000 414243",
         }) {
        SCOPED_TRACE(digits);
        EXPECT_THROW(signedWith(signatureRecord(digits)), std::out_of_range);
    }
}

TEST_F(Pkcs7Answer, LessThanACountIsOutOfRange) {
    for (const char* text : {"", "AAAA", "AAA", "AA==", "=", "\nAAAAAA==", "?", "{\"error\":1}"}) {
        SCOPED_TRACE(text);
        EXPECT_THROW(signedWith(signatureText(text)), std::out_of_range);
    }
}

TEST_F(Pkcs7Answer, NegativeCountIsAFailedAllocation) {
    for (const char* digits : {"ffffffff", "80000000", "ffffffff 01 00000001 41"}) {
        SCOPED_TRACE(digits);
        EXPECT_THROW(signedWith(signatureRecord(digits)), std::bad_alloc);
    }
}

TEST_F(Pkcs7Answer, TextThatIsNotBase64CountsUpToItsFirstForeignCharacter) {
    // 00000001 01 00000003 414243 in base64, then rubbish
    EXPECT_EQ(signedWith(signatureText("AAAAAQEAAAADQUJD\r\n"))[0], "ABC");
    EXPECT_EQ(signedWith(signatureText("AAAAAQEAAAADQUJD!!!!"))[0], "ABC");
    EXPECT_EQ(signedWith(signatureText("AAAAAQEAAAADQU*D"))[0], "A") << "cut with the data";
}

TEST_F(Pkcs7Answer, SingleFormOfAnAnswerWithoutEntryIsALocalFailure) {
    const std::string message = "The answer to the signature request holds no signature.";
    proxy.answers({signatureRecord("00000000"), signatureRecord("00000000")});
    std::string item = "item";
    const Failure expected = TestKit::failure<Client::MSPRuntimeException>(-1, message);
    EXPECT_EQ(failureOf([&] { Crypto::PKCS7().sign(item); }), expected);
    EXPECT_EQ(failureOf([&] { Crypto::PKCS7().sign("item", 4); }), expected);
    EXPECT_EQ(errorLines(), (Lines{message, "-1", message, "-1"}));
}

TEST_F(Pkcs7Answer, SingleFormReturnsTheFirstOfSeveralEntries) {
    proxy.answers(signatureRecord("00000002 01 00000001 41 01 00000001 42"));
    EXPECT_EQ(Crypto::PKCS7().sign("item", 4), "A");
}

TEST_F(Pkcs7Answer, LargeEntriesArriveWhole) {
    const std::string signature = sampleBytes(100000);
    const std::string text =
        Crypto::Internal::base64Encode(unhex("00000001 01 000186a0") + signature);
    EXPECT_EQ(
        signedWith({instruction(16), instruction(18), inBlocksOf(16384, "\n" + text), end()})[0],
        signature);
}
