#include "analysis/words/TagAttributes.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

std::string Collect(std::string_view tag) {
  TokenCountMap tokens;
  CollectTagAttributes(tag, &tokens);
  std::string listed;
  for (const TokenCountMap::Item& item : tokens) {
    listed.append("[").append(item.key).append(":").append(std::to_string(item.count)).append("]");
  }
  return listed;
}

struct Case {
  const char* name;
  const char* tag;
  const char* expected;
};

class TagAttributesTest : public testing::TestWithParam<Case> {};

TEST_P(TagAttributesTest, AreCollectedAsTold) {
  EXPECT_EQ(Collect(GetParam().tag), GetParam().expected) << GetParam().tag;
}

INSTANTIATE_TEST_SUITE_P(
    Tags, TagAttributesTest,
    testing::Values(Case{"WithValue", "<font size=7", "[html*font+size+7:1]"},
                    Case{"TwoAttributes", "<FONT size=7 Color=\"Red Hot\"",
                         "[html*font+Color+Red Hot:1][html*font+size+7:1]"},
                    Case{"PictureWithoutValue", "<img src=x", "[html*img+src:1]"},
                    Case{"NoAttributes", "<font", ""},
                    Case{"TrailingBlankGivesTheBareName", "<font ", "[html*font:1]"},
                    Case{"ClosingTag", "</font size=7", ""},
                    Case{"WhiteSpaceInFront", "< \tfont a=b", "[html*font+a+b:1]"},
                    Case{"SlashInFrontOfWhiteSpaceOnly", "< /font a=b", ""},
                    Case{"UnknownTag", "<br/", ""},
                    Case{"UnknownTagWithAttributes", "<a href=x", ""},
                    Case{"AttributeWithoutValue", "<td nowrap align=left",
                         "[html*td+align+left:1][html*td+nowrap:1]"},
                    Case{"ValueStartsRightBehindTheEqualsSign", "<td a= b",
                         "[html*td+a:1][html*td+b:1]"},
                    Case{"EmptyAttribute", "<td =x", "[html*td+x:1]"},
                    Case{"UnclosedQuote", "<td a=\"x y", "[html*td+a+x y:1]"},
                    Case{"EmptyQuotes", "<td a=\"\"b", "[html*td+a:1][html*td+b:1]"},
                    Case{"EqualsSignInTheValue", "<td a=b=c", "[html*td+a+b=c:1]"},
                    Case{"Repeated", "<td a a", "[html*td+a:2]"},
                    Case{"WithoutOpener", "td a", "[html*td+a:1]"}, Case{"Empty", "", ""}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace postmarker
