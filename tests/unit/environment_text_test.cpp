// The answer of the communication service, line by line.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "testing/Bytes.h"
#include "testing/FakeProxy.h"
#include "tests/unit/Directory.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Admin;
using namespace Morvenn::Net::MvServerProxy::TestKit;
using namespace Morvenn::Net::MvServerProxy::Tests;

namespace {

using Names = std::vector<std::string>;

// The environments are never freed, so the list outlives the object that loaded it.
std::vector<const Environment*> parsed(const std::string& answer) {
    FakeProxy proxy;
    proxy.answers(directoryAnswer(answer));
    return EnvironmentInfo().getEnvironments();
}

struct PropertyRow {
    const char* line;
    const char* key;
    const char* value;
};

// Each row is the only property of a service, which its count makes the last line of the answer.
void expectProperties(const std::vector<PropertyRow>& rows) {
    for (const PropertyRow& row : rows) {
        SCOPED_TRACE(escaped(row.line));
        const auto list = parsed("Prod\n1\n2\ntype=web\n" + std::string(row.line) + "\n\n");
        ASSERT_EQ(list.size(), 1U);
        EXPECT_EQ(valueOf(*list[0], "web", row.key), row.value);
    }
}

const char kTwo[] =
    "Prod\n1\n2\ntype=web\nport=80\n\n"
    "Test\n2\n2\ntype=mail\nport=25\n\n";

}  // namespace

TEST(EnvironmentText, TwoBlocksGiveTwoEnvironmentsInAnswerOrder) {
    const auto list = parsed(kTwo);
    EXPECT_EQ(namesOf(list), (Names{"Prod/1", "Test/2"}));
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(valueOf(*list[0], "web", "type"), "web");
    EXPECT_EQ(valueOf(*list[0], "web", "port"), "80");
    EXPECT_EQ(valueOf(*list[1], "mail", "port"), "25");
    EXPECT_FALSE(has(*list[0], "mail"));
}

TEST(EnvironmentText, OneEnvironmentMayHoldManyServices) {
    const auto list = parsed("Prod\n1\n1\ntype=a\n2\ntype=b\nx=1\n1\ntype=c\n\n");
    EXPECT_EQ(namesOf(list), (Names{"Prod/1"}));
    for (const char* name : {"a", "b", "c"}) {
        EXPECT_TRUE(has(*list.at(0), name)) << name;
    }
}

TEST(EnvironmentText, CarriageReturnsAreRemovedWhereverTheyStand) {
    std::string withCr;
    for (const char c : std::string(kTwo)) {
        withCr += c == '\n' ? std::string("\r\n") : std::string(1, c);
    }
    const auto list = parsed(withCr);
    EXPECT_EQ(namesOf(list), (Names{"Prod/1", "Test/2"}));
    EXPECT_EQ(valueOf(*list.at(0), "web", "port"), "80");
    EXPECT_EQ(namesOf(parsed("Pr\rod\n\r1\r\n\r\r\n")), (Names{"/0"}))
        << "a block without services";
    EXPECT_EQ(namesOf(parsed("Pr\rod\n\r12\r3\n1\ntype=t\n")), (Names{"Prod/123"}));
}

TEST(EnvironmentText, NameAndIndexAreTrimmed) {
    EXPECT_EQ(namesOf(parsed(" \tProd A\v \n  7  \n0\n\n")), (Names{"Prod A/7"}));
}

TEST(EnvironmentText, IndexIsReadAsANumberWithoutComplaint) {
    EXPECT_EQ(namesOf(parsed("A\nabc\n0\n\n")), (Names{"A/0"}));
    EXPECT_EQ(namesOf(parsed("A\n12abc\n0\n\n")), (Names{"A/12"}));
    EXPECT_EQ(namesOf(parsed("A\n\n0\n\n")), (Names{"A/0"})) << "an empty index line is an index";
    EXPECT_EQ(namesOf(parsed("A\n-3\n0\n\n")), (Names{"A/-3"}));
}

TEST(EnvironmentText, AnEmptyNameLineEndsTheAnswer) {
    EXPECT_EQ(namesOf(parsed("\nProd\n1\n0\n\n")), Names{});
    EXPECT_EQ(namesOf(parsed("Prod\n1\n0\n\n\nTest\n2\n0\n\n")), (Names{"Prod/1"}));
    EXPECT_EQ(namesOf(parsed("\r\n")), Names{});
    EXPECT_EQ(namesOf(parsed("\r")), Names{});
}

TEST(EnvironmentText, ANameLineOfBlanksIsNotEmpty) {
    EXPECT_EQ(namesOf(parsed("  \n5\n0\n\n")), (Names{"/5"}));
}

TEST(EnvironmentText, TheLastLineNeedsNoLineFeed) {
    EXPECT_EQ(valueOf(*parsed("A\n1\n1\ntype=t").at(0), "t", "type"), "t");
    EXPECT_EQ(namesOf(parsed("A\n1\n0")), (Names{"A/1"}));
}

// By design
TEST(EnvironmentText, EnvironmentWithoutServicesHasNoNameAndIndexZero) {
    EXPECT_EQ(namesOf(parsed("Prod\n7\n\n")), (Names{"/0"}));
    EXPECT_EQ(namesOf(parsed("Prod\n7")), (Names{"/0"}));
    EXPECT_EQ(namesOf(parsed("Prod")), (Names{"/0"})) << "the index line is read unchecked";
    EXPECT_EQ(namesOf(parsed("A\n1\n\nB\n2\n0\n\n")), (Names{"/0", "B/2"}));
}

TEST(EnvironmentText, PropertyIsTheTextBeforeAndAfterTheFirstEqualsSign) {
    expectProperties({
        {"key=value", "key", "value"},
        {"  key \t=  a value  ", "key", "a value"},
        {"Key=v", "Key", "v"},
        {"key=", "key", ""},
        {"key= ", "key", ""},
        {"key", "key", ""},
        {"  key  ", "key", ""},
        {" =value", "", "value"},
        {"", "", ""},
        {"   ", "", ""},
    });
}

// By design
TEST(EnvironmentText, TextAfterTheSecondEqualsSignIsDropped) {
    expectProperties({
        {" a = b : c = d ", "a", "b : c"},
        {"url=http://h/?x=1", "url", "http://h/?x"},
        {"a==b", "a", ""},
        {"a=b=", "a", "b"},
    });
}

// By design
TEST(EnvironmentText, ALineThatBeginsWithAnEqualsSignIsSkipped) {
    expectProperties({{"=value", "", "(none)"}, {"=", "", "(none)"}, {"==", "", "(none)"}});
    const auto list = parsed("A\n1\n2\n=skipped\ntype=t\n\n");
    EXPECT_TRUE(has(*list.at(0), "t")) << "the skipped line counts as one of the two";
}

TEST(EnvironmentText, ServiceWithoutATypeIsStoredUnderTheEmptyName) {
    EXPECT_EQ(valueOf(*parsed("A\n1\n1\nport=80\n\n").at(0), "", "port"), "80");
    EXPECT_EQ(valueOf(*parsed("A\n1\n2\nTYPE=t\nport=80\n\n").at(0), "", "port"), "80");
    EXPECT_EQ(valueOf(*parsed("A\n1\n2\ntype=\nport=80\n\n").at(0), "", "port"), "80");
    EXPECT_EQ(valueOf(*parsed("A\n1\n2\ntype\nport=80\n\n").at(0), "", "port"), "80");
    EXPECT_EQ(valueOf(*parsed("A\n1\n1\n  type = t  \n\n").at(0), "t", "type"), "t");
}

// By design
TEST(EnvironmentText, LastTypeNamesTheServiceAndTheFirstStaysAsProperty) {
    const auto list = parsed("A\n1\n2\ntype=first\ntype=second\n\n");
    EXPECT_EQ(valueOf(*list.at(0), "second", "type"), "first");
    EXPECT_FALSE(has(*list.at(0), "first"));
}

TEST(EnvironmentText, FirstOfTwoServicesWithTheSameTypeStays) {
    const auto list = parsed("A\n1\n2\ntype=t\nport=1\n2\ntype=t\nport=2\n\n");
    EXPECT_EQ(valueOf(*list.at(0), "t", "port"), "1");
}

TEST(EnvironmentText, FirstOfTwoPropertiesWithTheSameKeyStays) {
    const auto list = parsed("A\n1\n3\ntype=t\nport=1\nport=2\n\n");
    EXPECT_EQ(valueOf(*list.at(0), "t", "port"), "1");
}

TEST(EnvironmentText, CountIsReadAsANumber) {
    for (const char* count : {"1", " 1 ", "+1", "01", "1 line", "1=2"}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(namesOf(parsed("A\n1\n" + std::string(count) + "\nkey=v\n\nB\n2\n0\n\n")),
                  (Names{"A/1", "B/2"}));
    }
}

// By design
TEST(EnvironmentText, CountThatIsNoPositiveNumberStoresAServiceWithoutProperties) {
    for (const char* count : {"0", "-1", "-2147483648", "word", " ", "type=t"}) {
        SCOPED_TRACE(count);
        const auto list = parsed("A\n1\n" + std::string(count) + "\n\nB\n2\n0\n\n");
        EXPECT_EQ(namesOf(list), (Names{"A/1", "B/2"}));
        EXPECT_TRUE(has(*list.at(0), ""));
        EXPECT_EQ(valueOf(*list.at(0), "", "type"), "(none)");
    }
}

// By design
TEST(EnvironmentText, CountBeyondTheEndGivesOneEmptyProperty) {
    const auto list = parsed("A\n1\n5\ntype=t\n");
    EXPECT_EQ(namesOf(list), (Names{"A/1"}));
    EXPECT_EQ(valueOf(*list.at(0), "t", ""), "");
    EXPECT_EQ(valueOf(*parsed("A\n1\n1").at(0), "", ""), "");
    EXPECT_EQ(valueOf(*parsed("A\n1\n1\ntype=t").at(0), "t", ""), "(none)") << "none is missing";
}

TEST(EnvironmentText, CountTakesEmptyLinesAndForeignBlocksAsProperties) {
    const auto list = parsed("A\n1\n4\ntype=t\n\nB\n2\n\nC\n3\n0\n\n");
    EXPECT_EQ(namesOf(list), (Names{"A/1", "C/3"}));
    EXPECT_EQ(valueOf(*list.at(0), "t", ""), "");
    EXPECT_EQ(valueOf(*list.at(0), "t", "B"), "");
    EXPECT_EQ(valueOf(*list.at(0), "t", "2"), "");
}

TEST(EnvironmentText, NumbersOutOfRangeAreThoseOfTheCLibrary) {
    const auto list = parsed("A\n4294967298\n4294967297\ntype=t\n\nB\n2\n0\n\n");
    EXPECT_EQ(list.at(0)->getIndex(), std::atoi("4294967298"));
    EXPECT_EQ(list.size(), std::atoi("4294967297") == 1 ? 2U : 1U);
}

TEST(EnvironmentText, DuplicateNamesAreKept) {
    EXPECT_EQ(namesOf(parsed("A\n1\n0\n\nA\n2\n0\n\n")), (Names{"A/1", "A/2"}));
}
