#include "analysis/words/HtmlTokens.h"

#include <gtest/gtest.h>

#include <string>

#include "support/TokenListing.h"

namespace postmarker {
namespace {

using test::Listed;

struct Scan {
  TokenCountMap tokens;
  WordList words;
  TokenCountMap urls;
  TokenCountMap addresses;
  HtmlStats stats;

  explicit Scan(std::string_view html) {
    ScanHtml(html, &tokens, &words, &urls, &addresses, &stats);
  }
};

struct Case {
  const char* name;
  std::string html;
  std::string tokens;
  std::string urls;
  std::string addresses;
};

class HtmlTokensTest : public testing::TestWithParam<Case> {};

TEST_P(HtmlTokensTest, ReadsTagsAsTold) {
  const Scan scan(GetParam().html);
  EXPECT_EQ(Listed(scan.tokens), GetParam().tokens) << GetParam().html;
  EXPECT_EQ(Listed(scan.urls), GetParam().urls) << GetParam().html;
  EXPECT_EQ(Listed(scan.addresses), GetParam().addresses) << GetParam().html;
}

INSTANTIATE_TEST_SUITE_P(
    Links, HtmlTokensTest,
    testing::Values(
        Case{"Link", "<a href=\"HTTP://www.X.com/p?q\">", "com www www.x.com www.x.com/p?q x",
             "www.x.com www.x.com/p?q", ""},
        Case{"ClosingTagIsReadLikeAnOpeningOne", "</a href=\"http://x\">", "x:3", "x", ""},
        Case{"PortAndPathGo", "<a href=\"http://x:80/a\">", "x:2 x:80/a", "x x:80/a", ""},
        Case{"BlanksBeforeTheValue", "<a href=   \"http://x/\">", "x:2 x/", "x x/", ""},
        Case{"UnclosedQuoteEndsWithTheTag", "<a href=\"http://x/>", "x:2 x/", "x x/", ""},
        Case{"NoValueAtTheEnd", "<a href=  >", "", "", ""},
        Case{"ScriptSchemeGivesNothing", "<a href=\"javascript:go()\">", "", "", ""},
        Case{"UnquotedValueStopsAtTheColon", "<a href=http://host/>", "", "", ""},
        Case{"ValueWithoutSchemeTakesTheBase", "<base href=\"http://b/\"><a href=http://host/>",
             "b:4 b/:2", "b:2 b/", ""},
        Case{"BaseWithoutSchemeStops", "<base href=\"b\"><a href=\"c\">", "", "", ""},
        Case{"BaseLivesOn", "<base href=\"mailto:a@b\"><a href=x><a href=y>", "a:3 b:3", "b:3",
             "a@b:3"},
        Case{"ALaterBaseReplacesTheFirst",
             "<base href=\"cid:a@b\"><a href=x><a href=x><base href=\"cid:c@d\"><a href=x>",
             "b:3 cid:5 d:2", "", ""},
        Case{"OtherAttributesArePassed", "<a name=\"http://n\" href=\"http://x\">", "x:3", "x", ""},
        Case{"LinkTagsTakeNoBackground", "<a background=\"http://x\">", "", "", ""},
        Case{"Form", "<form ACTION=\"http://x\">", "x:3", "x", ""},
        Case{"Picture", "<img src=\"http://x\">", "html*img+src x:3", "x", ""},
        Case{"AreaGivesNoLink", "<area href=\"http://x\">", "", "", ""},
        Case{"AreaTakesABackground", "<area background=\"http://x\">", "x:3", "x", ""},
        Case{"BackgroundOfAnyTag", "<td background=\"http://x\">",
             "html*td+background+http://x x:3", "x", ""},
        Case{"BackgroundIsCaseSensitiveOnceAndThenNot",
             "<p BACKGROUND=\"http://x\"><b background=", "x:3", "x", ""},
        Case{"BackgroundNeedsItsSpelling", "<p BACKGROUND=\"http://x\">", "", "", ""},
        Case{"MailAddress", "<a href=\"MailTo:Joe@X.org?subject=a\">", "joe x.org", "x.org",
             "joe@x.org"},
        Case{"MailAddressWithoutLocalPart", "<a href=\"mailto:@x\">", "x", "x", "@x"},
        Case{"MailAddressWithoutHost", "<a href=\"mailto:joe\">", "", "", "joe"},
        Case{"ContentId", "<img src=\"cid:a@b\">", "b cid html*img+src", "", ""},
        Case{"ContentIdWithoutHost", "<img src=\"cid:a\">", "cid html*img+src", "", ""},
        Case{"RedirectingLinkCountsEach", "<a href=\"http://a.b/?http://c.d\">",
             "a a.b a.b/? b c c.d:2 d", "a.b a.b/? c.d", ""},
        Case{"TextInFrontOfALink", "<a href=\"ftp:x?http://c\">", "c:3", "c", ""},
        Case{"OtherSchemesGiveNothing", "<a href=\"ftp://x\">", "", "", ""},
        Case{"EmptyHost", "<a href=\"http://\">", "", "", ""},
        Case{"LongerSchemes", "<a href=\"https://x\">", "x:3", "x", ""},
        Case{"LaterOpenerReplaces", "<a href=\"http://x\" <b>", "", "", ""},
        Case{"TextBetweenTagsGivesNothing", "one<b>two</b>three", "", "", ""},
        Case{"UnfinishedTagGivesNothing", "<a href=\"http://x\"", "", "", ""},
        Case{"CloserWithoutOpener", "> a > <a href=\"http://x\"> >", "x:3", "x", ""}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    AlternativeTexts, HtmlTokensTest,
    testing::Values(Case{"Quoted", "<img ALT=\"Buy NOW\">", "buy html*img+ALT now", "", ""},
                    Case{"Unquoted", "<img alt=Buy.now >", "buy buy.now html*img html*img+alt now",
                         "", ""},
                    Case{"Unclosed", "<img alt=\"Buy>", "buy html*img+alt", "", ""},
                    Case{"OnlyTheFirst", "<img alt=a alt=b>", "a html*img+alt:2", "", ""},
                    Case{"UrlsAreThrownAway", "<img alt=\"www.x.com\">",
                         "com html*img+alt www www.x.com x", "", ""},
                    Case{"OnlyPictures", "<a alt=\"buy\">", "", "", ""}),
    [](const auto& tested) { return tested.param.name; });

TEST(HtmlTokens, AlternativeTextsGoToTheWords) {
  const Scan scan("<img alt=\"Buy now\"><p>not this</p>");
  ASSERT_EQ(scan.words.Size(), 2U);
  EXPECT_EQ(*scan.words.begin(), "buy");
}

TEST(HtmlTokens, CountsLinksToPrograms) {
  EXPECT_EQ(Scan("<a href=\"http://x/a.EXE\">").stats.exeLinkCount, 1);
  EXPECT_EQ(Scan("<a href=\"http://x/a.exe?b\">").stats.exeLinkCount, 0);
  EXPECT_EQ(Scan("<base href=\"http://x/a.exe\"><a href=b><a href=c>").stats.exeLinkCount, 3);
}

struct MismatchCase {
  const char* name;
  const char* html;
  int32_t mismatches;
};

class MismatchTest : public testing::TestWithParam<MismatchCase> {};

TEST_P(MismatchTest, ComparesLinkAndVisibleText) {
  EXPECT_EQ(Scan(GetParam().html).stats.mismatchedLinkCount, GetParam().mismatches)
      << GetParam().html;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MismatchTest,
    testing::Values(
        MismatchCase{"SameDomain", "<a href=\"http://www.bank.com/x\">http://login.bank.com</a>",
                     0},
        MismatchCase{"OtherDomain", "<a href=\"http://evil.org\">http://www.Bank.com</a>", 1},
        MismatchCase{"NoUrlInTheText", "<a href=\"http://evil.org\">click here</a>", 0},
        MismatchCase{"TextEndsAtTheNextTag", "<a href=\"http://evil.org\"><b>www.bank.com</b>", 0},
        MismatchCase{"TextUpToTheEnd", "<a href=\"http://evil.org\">www.bank.com", 1},
        MismatchCase{"NoLink", "<a href=\"mailto:a@b.com\">www.bank.com</a>", 0},
        MismatchCase{"LinkAndTextWithoutDomains", "<a href=\"http://1.2.3.4\">www.x.zz</a>", 0},
        MismatchCase{"TextWithoutDomain", "<a href=\"http://a.com\">www.x.zz</a>", 1},
        MismatchCase{"BaseCountsForEachUse",
                     "<base href=\"http://a.com\">a.com<a href=x>www.b.com<a href=y>www.a.com", 1}),
    [](const auto& tested) { return tested.param.name; });

TEST(HtmlTokens, ALinkThatIsThereKeepsItsCount) {
  // The host alone was counted twice as a URL before its link came.
  const Scan scan("<a href=\"http://x\"><a href=\"http://x\">");
  EXPECT_EQ(scan.urls.Count("x"), 2);
}

TEST(HtmlTokens, StatsMayBeMissing) {
  TokenCountMap tokens;
  TokenCountMap urls;
  TokenCountMap addresses;
  WordList words;
  ScanHtml("<a href=\"http://x.com\">www.y.com", &tokens, &words, &urls, &addresses, nullptr);
  EXPECT_EQ(Listed(urls), "x.com");
}

TEST(HtmlTokens, ANulIsAByteLikeOthers) {
  const std::string html("<a href=\"http://x\0y\">", 21);
  EXPECT_EQ(Scan(html).urls.Count(std::string_view("x\0y", 3)), 1);
}

}  // namespace
}  // namespace postmarker
