// The directory file: what is read, what is refused and in which line, and what a client gets.

#include "Directory.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

constexpr char kTwoEnvironments[] =
    "Test\n1\n2\ntype=orders\nurl=http://a/orders\n\n"
    "Live\n-2\n3\ntype=orders\nurl=http://b/orders/\nversion=1.0\n1\ntype=stock\n\n";

std::string names(const Directory& directory) {
    std::string all;
    for (const DirectoryEnvironment& environment : directory) {
        all += environment.name + ";";
    }
    return all;
}

// "line: text" of the complaint, "" when there is none.
std::string complaint(const std::string& text) {
    try {
        parseDirectory(text);
        return "";
    } catch (const DirectoryError& error) {
        return std::to_string(error.line()) + ": " + error.what();
    }
}

}  // namespace

TEST(DirectoryFile, AnswerTextReadsBackAsItself) {
    EXPECT_EQ(kTwoEnvironments, directoryText(parseDirectory(kTwoEnvironments)));
}

TEST(DirectoryFile, EmptyTextIsAnEmptyDirectory) {
    EXPECT_EQ("", directoryText(parseDirectory("")));
    EXPECT_EQ("", directoryText(parseDirectory("\n\n# nothing\n")));
}

TEST(DirectoryFile, CommentsStandWhereANameAnIndexOrACountIsExpected) {
    EXPECT_EQ("Test\n1\n1\ntype=a\n1\ntype=b\n\n",
              directoryText(parseDirectory("# top\n\n# name\nTest\n# index\n1\n# count\n1\ntype=a\n"
                                           "# next count\n1\ntype=b\n# end\n")));
}

TEST(DirectoryFile, PropertyThatBeginsWithTheCommentSignIsAProperty) {
    EXPECT_EQ("Test\n1\n2\ntype=a\n#colour=red\n\n",
              directoryText(parseDirectory("Test\n1\n2\ntype=a\n#colour=red\n")));
}

TEST(DirectoryFile, CarriageReturnsAndBlanksAroundNamesKeysAndValuesAreDropped) {
    EXPECT_EQ("My Test\n7\n2\ntype=a b\nkey=\n\n",
              directoryText(parseDirectory(
                  " My Test \r\n 7 \r\n 2 \r\n type = a b \r\n\tkey\t=\r\n\r\n\r\n")));
}

TEST(DirectoryFile, ComplaintsNameTheLine) {
    const struct {
        const char* text;
        const char* complaint;
    } rows[] = {
        {"  \n1\n", "1: the name of the environment is blank"},
        {"A\n", "2: the text ends before the index of \"A\""},
        {"A\nfirst\n", "2: an index expected, found \"first\""},
        {"A\n\n", "2: an index expected, found \"\""},
        {"A\n1x\n", "2: an index expected, found \"1x\""},
        {"A\n99999999999\n", "2: an index expected, found \"99999999999\""},
        {"A\n1\n\n",
         "1: the environment \"A\" has no service; clients would lose its name and "
         "index"},
        {"# c\n\nA\n1\n",
         "3: the environment \"A\" has no service; clients would lose its name and "
         "index"},
        {"A\n1\ntype=a\n", "3: a number of properties expected, found \"type=a\""},
        {"A\n1\n0\n", "3: a service has 1 to 1000 properties, not 0"},
        {"A\n1\n1001\n", "3: a service has 1 to 1000 properties, not 1001"},
        {"A\n1\n2\ntype=a\n", "5: the text ends after 1 of the 2 properties announced in line 3"},
        {"A\n1\n2\ntype=a\nurl\n", "5: a property reads key=value, found \"url\""},
        {"A\n1\n2\ntype=a\n\n", "5: a property reads key=value, found \"\""},
        {"A\n1\n1\n=a\n", "4: the property has no key before its \"=\""},
        {"A\n1\n2\ntype=a\nurl=http://x/?a=b\n",
         "5: the value of \"url\" holds a second \"=\", where clients cut it; write %3D"},
        {"A\n1\n2\ntype=a\ntype=b\n", "5: the service has the property \"type\" already"},
        {"A\n1\n1\nurl=x\n", "3: the service has no property \"type\", which names it"},
        {"A\n1\n1\ntype=a\n1\ntype=a\n", "5: the environment has a service \"a\" already"},
        {"A\n1\n1\ntype=a\n\nA\n2\n1\ntype=a\n",
         "6: the environment \"A\" is there already, in line 1"},
        {"A\n1\n1\ntype=\xc3\n", "4: the line is not UTF-8"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.complaint, complaint(row.text));
    }
}

TEST(DirectoryFile, ZeroByteIsRefused) {
    EXPECT_EQ("1: the line holds a zero byte", complaint(std::string("A\0B\n", 4)));
}

TEST(DirectorySelection, AllGivesEverythingInTheOrderOfTheFile) {
    EXPECT_EQ("Test;Live;", names(selectEnvironments(parseDirectory(kTwoEnvironments), "All")));
}

TEST(DirectorySelection, VersionMatchesAWholeVersionPropertyOnly) {
    const Directory directory = parseDirectory(kTwoEnvironments);
    EXPECT_EQ("Live;", names(selectEnvironments(directory, "1.0")));
    EXPECT_EQ("", names(selectEnvironments(directory, "1")));
    EXPECT_EQ("", names(selectEnvironments(directory, "all")));
}

TEST(DirectorySelection, UrlMatchesTheServiceUrlAndEverythingBelowIt) {
    const Directory directory = parseDirectory(kTwoEnvironments);
    const struct {
        const char* url;
        const char* names;
    } rows[] = {
        {"http://a/orders", "Test;"},   {"http://a/orders/", "Test;"},
        {"http://a/orders/5", "Test;"}, {"http://a/orders?id", "Test;"},
        {"http://b/orders", "Live;"},   {"http://b/orders/", "Live;"},
        {"http://a/orders2", ""},       {"http://a/", ""},
        {"HTTP://A/orders", ""},        {"", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url);
        EXPECT_EQ(row.names,
                  names(selectEnvironments(directory, std::string("mapURLtoEnv::") + row.url)));
    }
}
