#include "analysis/headers/Received.h"

#include <gtest/gtest.h>

#include "support/Prefixes.h"

namespace postmarker {
namespace {

std::string Describe(const KsHostInfo& host) {
  return host.name + "|" + host.address + "|" + host.helo;
}

struct LineCase {
  const char* name;
  const char* line;
  const char* from;
  const char* by;
};

class ReceivedLineTest : public testing::TestWithParam<LineCase> {};

TEST_P(ReceivedLineTest, IsReadAsTold) {
  KsHostInfo from;
  KsHostInfo by;
  ParseReceivedLine(GetParam().line, &from, &by);
  EXPECT_EQ(Describe(from), GetParam().from) << GetParam().line;
  EXPECT_EQ(Describe(by), GetParam().by) << GetParam().line;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ReceivedLineTest,
    testing::Values(
        LineCase{"Empty", "", "||", "||"},
        LineCase{
            "HeloInComment",
            "from mail.example.org (helo=a.example.org [192.0.2.1]) by mx.example.com with smtp",
            "mail.example.org|[192.0.2.1]|a.example.org", "mx.example.com||"},
        LineCase{"NameInComment", "from a (b.c.org [1.2.3.4]) by d", "a|[1.2.3.4]|b.c.org", "d||"},
        LineCase{"NameBehindTheAddress", "from a ([1.2.3.4] b.c.org) by d", "a|[1.2.3.4]|b.c.org",
                 "d||"},
        LineCase{"NamesAroundTheAddress", "from a (b.org [1.2.3.4] c.org) by d", "a|[1.2.3.4]|",
                 "d||"},
        LineCase{"TwoGroups", "from a (b.org)([1.2.3.4]) by d", "a|[1.2.3.4]|b.org", "d||"},
        LineCase{"DottedNameTakesTheAnnouncedOne", "from [1.2.3.4] (helo=x.org) by d",
                 "x.org|[1.2.3.4]|x.org", "d||"},
        LineCase{"DottedNameAlone", "from 1.2.3.4 by d", "1.2.3.4|1.2.3.4|", "d||"},
        LineCase{"DottedNameAgainstAnotherAddress", "from 1.2.3.4 ([5.6.7.8]) by d", "1.2.3.4||",
                 "d||"},
        LineCase{"DottedNameInBracketsOfItsAddress", "from 1.2.3.4 ([1.2.3.4]) by d",
                 "1.2.3.4|[1.2.3.4]|", "d||"},
        LineCase{"HeloReplacesOnlyADottedName", "from a.org (helo=b.org) by d", "a.org||b.org",
                 "d||"},
        LineCase{"GroupInsteadOfAName", "from (b.org [1.2.3.4]) by d", "|[1.2.3.4]|b.org", "d||"},
        LineCase{"CommentInFrontDropsTheClause", "(qmail 1 invoked) by d", "||", "d||"},
        LineCase{"ByOnly", "by d (e) with f", "||", "d||"},
        LineCase{"ByWithComment", "by d (e.org [1.2.3.4])", "||", "d|[1.2.3.4]|e.org"},
        LineCase{"FromWithoutBy", "from a with b", "a||", "||"},
        LineCase{"FromWithoutName", "from ; by d", "||", "||"},
        LineCase{"WordsRunTogether", "froma byd", "a||", "d||"},
        LineCase{"NameEndsAtABracket", "from a[1.2.3.4] by d(e.org)", "a|[1.2.3.4]|", "d||e.org"},
        LineCase{"SeparatorsBehindTheName", "from a; (b.org) by d", "a||b.org", "d||"},
        LineCase{"OnGivesAnotherName", "by d running on e.org; (f.org)", "||", "e.org||f.org"},
        LineCase{"OnWithABracketInItsName", "by d on e[f", "||", "e[f||"},
        LineCase{"OnWithoutAName", "by d on ;", "||", "||"},
        LineCase{"OnBehindWithIsNotSeen", "by d with on e", "||", "d||"},
        LineCase{"OnBehindASemicolonIsNotSeen", "by d x; on e", "||", "d||"},
        LineCase{"OnBehindAGroupIsNotSeen", "by d (x) on e", "||", "d||"},
        LineCase{"OnBehindASquareGroupIsNotSeen", "by d [x] on e", "||", "d||"},
        LineCase{"ByIsMissing", "from a (b.org) to d", "a||b.org", "||"},
        LineCase{"ByWithoutName", "from a by", "a||", "||"}),
    [](const auto& tested) { return tested.param.name; });

struct InfoCase {
  const char* name;
  const char* text;
  const char* expected;
};

class HostInfoTest : public testing::TestWithParam<InfoCase> {};

TEST_P(HostInfoTest, IsFilledAsTold) {
  KsHostInfo info;
  ParseHostInfo(GetParam().text, &info);
  EXPECT_EQ(Describe(info), GetParam().expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Comments, HostInfoTest,
    testing::Values(InfoCase{"Empty", "", "||"}, InfoCase{"Host", "a.org", "||a.org"},
                    InfoCase{"NoHost", "a", "||"}, InfoCase{"Address", "1.2.3.4", "|1.2.3.4|"},
                    InfoCase{"AddressWithPort", "1.2.3.4:25", "|1.2.3.4|"},
                    InfoCase{"BracketedWithPort", "[1.2.3.4:25]", "|[1.2.3.4]|"},
                    InfoCase{"Helo", "helo a", "||a"}, InfoCase{"Ehlo", "ehlo=a", "||a"},
                    InfoCase{"HeloAlone", "helo", "||"},
                    InfoCase{"HeloRunTogether", "heloa", "||a"},
                    InfoCase{"HeloAddress", "helo 1.2.3.4", "|1.2.3.4|1.2.3.4"},
                    InfoCase{"BothDotted", "1.2.3.4 5.6.7.8", "|1.2.3.4|"},
                    InfoCase{"SecondDotted", "a.org 5.6.7.8", "|5.6.7.8|a.org"},
                    InfoCase{"FirstDotted", "1.2.3.4 b.org", "|1.2.3.4|b.org"},
                    InfoCase{"TwoHosts", "a.org b.org", "||a.org"},
                    InfoCase{"SecondHost", "a b.org", "||b.org"},
                    InfoCase{"HeloStaysWhereNoRuleNamesAHost", "helo a b", "||a"},
                    InfoCase{"SecondAtABracket", "a.org(5.6.7.8", "||a.org"},
                    InfoCase{"BracketsBehindHelo", "helo x [1.2.3.4]", "|[1.2.3.4]|x"},
                    InfoCase{"EmptyBrackets", "[]", "||"}, InfoCase{"CloserInFront", "]a[b", "||"},
                    InfoCase{"UpperCaseIsNoHost", "A.org", "||"}),
    [](const auto& tested) { return tested.param.name; });

TEST(ReadBracketed, JoinsGroupsWithABlank) {
  const auto read = [](std::string_view text) {
    size_t position = 0;
    const std::string groups = ReadBracketed(text, &position);
    return groups + "@" + std::to_string(position);
  };
  EXPECT_EQ(read("(a)(b) [c] d"), "a b [c]@11");
  EXPECT_EQ(read("()(b)"), " b@5");
  EXPECT_EQ(read("(a)()"), "a @5");
  EXPECT_EQ(read("(  a )"), "a @6");
  EXPECT_EQ(read("[ a]"), "[a]@4");
  EXPECT_EQ(read("(a(b)[c])x"), "a(b)[c]@9");
  EXPECT_EQ(read("(a]x"), "a]@3");
  EXPECT_EQ(read("[a)x"), "[a@3");
  EXPECT_EQ(read("(a"), "a@2");
  EXPECT_EQ(read("("), "@1");
  EXPECT_EQ(read("a"), "@0");
  EXPECT_EQ(read(""), "@0");
}

TEST(StripPort, PutsTheBracketBack) {
  EXPECT_EQ(StripPort("a:b:c"), "a");
  EXPECT_EQ(StripPort("[a:b]"), "[a]");
  EXPECT_EQ(StripPort("[a]:b"), "[a]");
  EXPECT_EQ(StripPort("[a]"), "[a]");
  EXPECT_EQ(StripPort(""), "");
  EXPECT_EQ(StripPort(":]"), "]");
}

TEST(IsDottedAddress, LooksAtFormOnly) {
  for (const char* text : {"1.2.3.4", "[1.2.3.4]", "999.1.1.1", "...", "1.2.3.4:x", "[1.2.3.4"}) {
    EXPECT_TRUE(IsDottedAddress(text)) << text;
  }
  for (const char* text : {"", "1.2.3", "1.2.3.4.5", "a.2.3.4", "[1.2.3.4]:25", "1.[2.3.4", "[]"}) {
    EXPECT_FALSE(IsDottedAddress(text)) << text;
  }
}

TEST(IsHostName, NeedsADot) {
  EXPECT_TRUE(IsHostName("a-b_c.1"));
  EXPECT_TRUE(IsHostName("."));
  EXPECT_FALSE(IsHostName("a"));
  EXPECT_FALSE(IsHostName("A.b"));
  EXPECT_FALSE(IsHostName("a.b:1"));
  EXPECT_FALSE(IsHostName(""));
}

TEST(IsBracketed, NeedsBoth) {
  EXPECT_TRUE(IsBracketed("[]"));
  EXPECT_TRUE(IsBracketed("[a]"));
  EXPECT_FALSE(IsBracketed("["));
  EXPECT_FALSE(IsBracketed("]"));
  EXPECT_FALSE(IsBracketed("a]"));
}

TEST(KsHostInfo, PrivateAddresses) {
  for (const char* address : {"127.0.0.1", "[127.0.0.1]", "172.16.5.5", "[172.16.0.1]", "192.0.2.1",
                              "[192.168.0.1]", "10.1.1.1", "[10.1.1.1]", "1192.1.1.1"}) {
    EXPECT_TRUE((KsHostInfo{"", address, ""}).IsPrivateAddress()) << address;
  }
  for (const char* address : {"", "172.17.0.1", "172.160.0.1", "[172.168.0.1]", "1.10.1.1",
                              "110.1.1.1", "12192.1", "[[10.1.1.1]"}) {
    EXPECT_FALSE((KsHostInfo{"", address, ""}).IsPrivateAddress()) << address;
  }
}

TEST(KsHostInfo, Consistency) {
  EXPECT_FALSE((KsHostInfo{"", "1.2.3.4", ""}).IsConsistent());
  EXPECT_FALSE((KsHostInfo{"a.com", "", ""}).IsConsistent());
  EXPECT_TRUE((KsHostInfo{"a.com", "10.0.0.1", "b.com"}).IsConsistent());
  EXPECT_TRUE((KsHostInfo{"a.com", "1.2.3.4", ""}).IsConsistent());
  EXPECT_TRUE((KsHostInfo{"x.a.com", "1.2.3.4", "y.a.com"}).IsConsistent());
  EXPECT_FALSE((KsHostInfo{"a.com", "1.2.3.4", "b.com"}).IsConsistent());
  EXPECT_TRUE((KsHostInfo{"a", "1.2.3.4", "b"}).IsConsistent());  // neither has a domain
}

TEST(ReceivedLine, HarmedLinesAreReadWithoutFailure) {
  constexpr std::string_view kLine =
      "from mail.example.org (helo=a.example.org [192.0.2.1:5]) by mx (x [1.2.3.4]) on y; z";
  const auto check = [](std::string_view line) {
    KsHostInfo from;
    KsHostInfo by;
    ParseReceivedLine(line, &from, &by);
    EXPECT_LE(from.name.size() + by.name.size(), line.size());
  };
  test::ForEveryPrefix(kLine, check);
  test::ForEveryFlippedByte(kLine, check);
}

}  // namespace
}  // namespace postmarker
