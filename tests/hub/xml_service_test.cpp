// What the XML services answer.

#include "Refusal.h"
#include "XmlService.h"

#include <gtest/gtest.h>

using namespace Morvenn::Net::MvServerProxy::Hub;

namespace {

std::string refusalOf(const std::string& document) {
    try {
        return summarizeXml(document);
    } catch (const Refusal& refusal) {
        EXPECT_EQ(400u, refusal.status());
        return refusal.what();
    }
}

}  // namespace

TEST(XmlService, SummaryCountsElementsAttributesDepthAndText) {
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<summary root=\"order\" elements=\"4\" attributes=\"2\" depth=\"3\" text=\"7\">\n"
        "  <element name=\"item\" count=\"2\" />\n"
        "  <element name=\"name\" count=\"1\" />\n"
        "  <element name=\"order\" count=\"1\" />\n"
        "</summary>\n",
        summarizeXml("<order id='1'><item n='2'><name>t\xc3\xa4st</name></item>\n"
                     "<item><![CDATA[ab]]></item><!-- no text --></order>"));
}

TEST(XmlService, ReverseTurnsTheChildrenOfEveryElementRound) {
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
        "<a k=\"v\">tail<c><e/><d/></c><b>text</b></a>",
        reverseXml("<a k='v'>\n <b>text</b><c><d/><e/></c>tail</a>"));
}

TEST(XmlService, ReversedTwiceIsTheFirstAgain) {
    const std::string once = reverseXml("<a><b><c/>x</b><d/></a>");
    EXPECT_EQ(once, reverseXml(reverseXml(once)));
    EXPECT_NE(once, reverseXml(once));
}

TEST(XmlService, BadDocumentIsRefusedWithLineAndColumn) {
    EXPECT_EQ("the body is no XML document: line 2, column 7: Start-end tags mismatch",
              refusalOf("<a>\n <b></a>"));
    EXPECT_EQ("the body is no XML document: line 1, column 1: No document element found",
              refusalOf(""));
}

TEST(XmlService, ManyThousandLevelsAreNoTrouble) {
    constexpr int kLevels = 200000;
    std::string deep;
    for (int i = 0; i < kLevels; ++i) {
        deep += "<a>";
    }
    for (int i = 0; i < kLevels; ++i) {
        deep += "</a>";
    }
    EXPECT_NE(std::string::npos, summarizeXml(deep).find("depth=\"200000\""));
    EXPECT_NE("", reverseXml(deep));
}

TEST(XmlService, EntitiesOfTheDocumentTypeAreNotExpanded) {
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>&amp;file;</a>",
              reverseXml("<!DOCTYPE a [<!ENTITY file SYSTEM 'file:///etc/passwd'>]><a>&file;</a>"));
}
