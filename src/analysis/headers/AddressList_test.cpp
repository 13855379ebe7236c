#include "analysis/headers/AddressList.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

struct Case {
  const char* name;
  std::string text;
  AddressMap expected;
};

class AddressListTest : public testing::TestWithParam<Case> {};

TEST_P(AddressListTest, SplitsAsTold) {
  AddressMap addresses;
  ParseAddressList(GetParam().text, &addresses);
  EXPECT_EQ(addresses, GetParam().expected) << GetParam().text;
}

TEST_P(AddressListTest, EachAddressIsOneOfTheMaps) {
  AddressMap addresses;
  ForEachAddress(GetParam().text, [&addresses](std::string_view address) {
    addresses[std::string(address)] = GetParam().expected.at(std::string(address));
  });
  EXPECT_EQ(addresses, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, AddressListTest,
    testing::Values(
        Case{"Empty", "", {}}, Case{"Plain", " Joe@Example.ORG\t", {{"joe@example.org", ""}}},
        Case{"TwoPlain", "a@b,c@d", {{"a@b", ""}, {"c@d", ""}}},
        Case{"EmptyItemHasEmptyAddress", "a,,b", {{"", ""}, {"a", ""}, {"b", ""}}},
        Case{"TrailingCommaAddsNothing", "a,", {{"a", ""}}}, Case{"LoneComma", ",", {{"", ""}}},
        Case{"DisplayName", "Bob B. <Bob@X.org>", {{"bob@x.org", "Bob B."}}},
        Case{"QuotesAndSpaceGo", " \" Bob, jr. \"\t<b@x>", {{"b@x", "Bob, jr."}}},
        Case{"CommaInDisplayNameStays", "B, Bob <b@x>, c@y", {{"b@x", "B, Bob"}, {"c@y", ""}}},
        Case{"PlainOneInFrontIsLost", "a@x, Bob <b@y>", {{"b@y", "a@x, Bob"}}},
        Case{"SchemeGoes", "<mailto:a:b@x>", {{"a:b@x", ""}}},
        Case{"BlanksInAddressGo", "x <a \t\r\n@ b>", {{"a@b", "x"}}},
        Case{"EmptyBracketsAddNothing", "x <>", {}},
        Case{"CommaInBracketsParts", "x <a,b,,c>", {{"a", "x"}, {"b", "x"}, {"c", "x"}}},
        Case{"FirstCommaInBracketsPartsNothing", "x <,a,b>", {{",a", "x"}, {"b", "x"}}},
        Case{"NoClosingBracket", "x <a b, c", {{"ab", "x"}, {"c", ""}}},
        Case{"OpenBracketBehindTheComma", "a, <b", {{"a", ""}, {"b", ""}}},
        Case{"ClosingBracketInFront", "a>b<c>", {{"c", "a>b"}}},
        Case{"TextBehindTheBracketGoes", "x <a> y, b", {{"a", "x"}, {"b", ""}}},
        Case{"LaterReplacesEarlier", "One <a>, Two <A>", {{"a", "Two"}}},
        Case{"NulIsAByteLikeOthers", std::string("a\0b", 3), {{std::string("a\0b", 3), ""}}}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace postmarker
