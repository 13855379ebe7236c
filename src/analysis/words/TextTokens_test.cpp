#include "analysis/words/TextTokens.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "support/TokenListing.h"

namespace postmarker {
namespace {

using test::Listed;

struct Tokenized {
  TokenCountMap tokens;
  WordList words;
  TokenCountMap urls;
  TokenCountMap addresses;

  explicit Tokenized(std::string_view text) { Tokenize(text, &tokens, &words, &urls, &addresses); }

  [[nodiscard]] std::string Words() const {
    std::string listed;
    for (const std::string_view word : words) {
      listed.append(listed.empty() ? "" : "|").append(word);
    }
    return listed;
  }
};

struct WordsCase {
  const char* name;
  std::string text;
  std::string words;
};

class WordsTest : public testing::TestWithParam<WordsCase> {};

TEST_P(WordsTest, AreSplitAsTold) {
  EXPECT_EQ(Tokenized(GetParam().text).Words(), GetParam().words) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WordsTest,
    testing::Values(
        WordsCase{"Empty", "", ""}, WordsCase{"Plain", "one Two  three", "one|Two|three"},
        WordsCase{"Url", "Visit http://www.Example.com/a?b now",
                  "Visit|http|www|Example|com|a|b|now"},
        WordsCase{"NumberStaysWhole", "1,000.50", "1,000.50"},
        WordsCase{"CommaBehindADotSplits", "1.5,2", "1.5|2"},
        WordsCase{"CommaInAWord", "a,b", "a,b"},
        WordsCase{"DotAtTheEndOfASentence", "see a.b. Next", "see|a|b|Next"},
        WordsCase{"DotAtTheVeryEnd", "a.b.", "a|b"}, WordsCase{"DotAtTheStart", ".a", "a"},
        WordsCase{"TwoDots", "a..b", "a|b"}, WordsCase{"Apostrophe", "don't", "don't"},
        WordsCase{"Hyphen", "well-known", "well-known"},
        WordsCase{"QuotesSplitAtTheEdges", "\"quoted\" 'word'", "quoted|word'"},
        WordsCase{"MarkAtTheVeryEndStays", "wow!", "wow!"},
        WordsCase{"MarkBeforeABlankSplits", "wow! now", "wow|now"},
        WordsCase{"TwoMarks", "wow!!", "wow"},
        WordsCase{"HyphenBehindADotSplits", "a.b-c", "a|b|c"},
        WordsCase{"HyphenBehindAnAtSplits", "a@b-c", "a@b|c"},
        WordsCase{"HyphenBehindACommaSplits", "a,b-c", "a,b|c"},
        WordsCase{"DotBehindAHyphen", "a-b.c", "a-b|c"},
        WordsCase{"Dollar", "$5 a$b $", "$5|a$b|$"},
        WordsCase{"DotBehindADollarSplits", "$.5", "$|5"},
        WordsCase{"HighBytes",
                  "a\xBE\xF6\xF8\xFE"
                  "b a\xBD"
                  "b a\xF7"
                  "b a\xFF"
                  "b a\x80"
                  "b",
                  "a\xBE\xF6\xF8\xFE"
                  "b|a|b|a|b|a|b|a|b"},
        WordsCase{"HighBytesAreNoLetters", "\xE9.a a.\xE9 \xE9-a", "\xE9|a|a|\xE9|\xE9|a"},
        WordsCase{"Address", "Joe.Doe@Example.COM", "Joe.Doe|Example|COM"},
        WordsCase{"AddressWithoutADot", "joe@host", "joe@host"},
        WordsCase{"TwoAts", "a@b@c.d", "a|b@c|d"}, WordsCase{"AtAtTheVeryEnd", "a.b@", "a.b"},
        WordsCase{"NulSplits", std::string("a\0b", 3), "a|b"},
        WordsCase{"SlashAndColonSplit", "a/b:c", "a|b|c"}),
    [](const auto& tested) { return tested.param.name; });

TEST(Tokenize, CountsDottedWordsWholeAndInPieces) {
  const Tokenized text("Visit http://www.Example.com/a?b now");
  EXPECT_EQ(Listed(text.tokens), "Example Visit a b com http now www www.Example.com");
  EXPECT_EQ(Listed(text.urls), "http://www.example.com");
}

TEST(Tokenize, KeepsNumbersWholeAndTestsNoUrl) {
  const Tokenized text("1,000.50 2.3.4.5");
  EXPECT_EQ(Listed(text.tokens), "1,000.50 2.3.4.5");
  EXPECT_TRUE(text.urls.IsEmpty());
}

TEST(Tokenize, AddressesAreCountedInLowerCase) {
  const Tokenized text("Joe.Doe@Example.COM");
  EXPECT_EQ(Listed(text.addresses), "joe.doe@example.com");
  EXPECT_EQ(Listed(text.urls), "example.com");
  EXPECT_EQ(Listed(text.tokens), "COM:2 Example JDECOM Joe.Doe Joe.Doe@Example.COM");
}

TEST(Tokenize, TheLocalPartHasNoCapitalsOfItsOwn) {
  EXPECT_EQ(Listed(Tokenized("ABC@x.org").tokens), "ABC:2 ABC@x.org org x");
}

TEST(Tokenize, CapitalsGiveASecondToken) {
  EXPECT_EQ(Listed(Tokenized("FREE iPhone McDonald").tokens), "FREE:2 MD McDonald iPhone");
}

TEST(Tokenize, TheWordBeforeAHostNamesItsScheme) {
  EXPECT_EQ(Listed(Tokenized("HTTP://a.xyz FTP a.xyz b.xyz ftpx a.xyz").urls),
            "ftp://a.xyz http://a.xyz");
  EXPECT_EQ(Listed(Tokenized("http://joe@a.xyz http a.b@").urls), "http:// http://a.xyz");
}

TEST(Tokenize, OnlyHostsAreUrls) {
  EXPECT_EQ(Listed(Tokenized("a.com b.xyz www.c.xyz d.co.uk").urls), "a.com d.co.uk www.c.xyz");
}

TEST(Tokenize, LongWordsKeepTheirFirst64Bytes) {
  const std::string word(70, 'x');
  EXPECT_EQ(Tokenized(word + " y").Words(), word.substr(0, 64) + "|y");
}

TEST(Tokenize, CountsOfJointsGoOnBehindTheKeptBytes) {
  const std::string word(64, 'x');
  // The dot is not kept, so the word is not dotted, but it parts at the "-" all the same.
  EXPECT_EQ(Tokenized(word + ".a-b").Words(), word + "|b");
  EXPECT_EQ(Tokenized(std::string(63, 'x') + ".a").Words(), std::string(63, 'x'));
  // A letter beyond the kept bytes makes a number a word.
  EXPECT_EQ(Tokenized("1.2" + std::string(61, '3') + "x").Words(), "1|2" + std::string(61, '3'));
}

TEST(Tokenize, DoesNotAskTheLocale) {
  const char* const old = std::setlocale(LC_ALL, nullptr);
  const std::string kept = old == nullptr ? "C" : old;
  for (const char* locale : {"de_DE.ISO-8859-1", "German_Germany.1252", "tr_TR.UTF-8"}) {
    std::setlocale(LC_ALL, locale);
    EXPECT_EQ(Tokenized("\xC4rger.\xE9 \xA0x").Words(), "\xC4rger|\xE9|x");
  }
  std::setlocale(LC_ALL, kept.c_str());
}

TEST(CollectTextUrls, FindsWhatTokenizeFinds) {
  constexpr std::string_view kText =
      "x http://www.Example.com/a?b Joe@Host.org 1.2.3 ftp x.y.zz c.d. www.q e.f";
  TokenCountMap urls;
  CollectTextUrls(kText, &urls);
  EXPECT_FALSE(urls.IsEmpty());
  EXPECT_EQ(Listed(urls), Listed(Tokenized(kText).urls));
}

TEST(MaxSpecialDensity, CountsInAWindowOf100Bytes) {
  EXPECT_EQ(MaxSpecialDensity(std::string(100, ' ')), 0);
  EXPECT_EQ(MaxSpecialDensity(std::string(150, '.')), 100);
  EXPECT_EQ(MaxSpecialDensity("..."), 3);
  EXPECT_EQ(MaxSpecialDensity(""), 0);
  EXPECT_EQ(MaxSpecialDensity("." + std::string(98, ' ') + "."), 2);
  EXPECT_EQ(MaxSpecialDensity("." + std::string(99, ' ') + "."), 1);
}

TEST(MaxSpecialDensity, KnowsItsCharacters) {
  EXPECT_EQ(MaxSpecialDensity("\xA9!&*-.1@_`|~"), 12);
  EXPECT_EQ(MaxSpecialDensity("\xC2"
                              "023#$%^()+=a,:;'\""),
            0);
}

TEST(IsUrlLike, CutsOffTheScheme) {
  std::string_view text = "http://a://b";
  EXPECT_TRUE(IsUrlLike(&text));
  EXPECT_EQ(text, "a://b");
}

TEST(IsUrlLike, TakesHostsAndWww) {
  std::string_view yes[] = {"www.", "xwww.y", "a.com", "://"};
  for (std::string_view& text : yes) {
    EXPECT_TRUE(IsUrlLike(&text)) << text;
  }
  std::string_view no[] = {"", "com", "a.b", "A.COM", "http:/a"};
  for (std::string_view& text : no) {
    EXPECT_FALSE(IsUrlLike(&text)) << text;
  }
}

TEST(UpperLettersOf, NeedsItsMinimum) {
  EXPECT_EQ(UpperLettersOf("FREE", 2), "FREE");
  EXPECT_EQ(UpperLettersOf("aBcD", 2), "BD");
  EXPECT_EQ(UpperLettersOf("iPhone", 2), "");
  EXPECT_EQ(UpperLettersOf("iPhone", 1), "P");
  EXPECT_EQ(UpperLettersOf("\xC4\xD6", 1), "");
}

TEST(HoldsRndMacro, FindsItAnywhere) {
  EXPECT_TRUE(HoldsRndMacro("a %RnD_x"));
  EXPECT_TRUE(HoldsRndMacro("%%rnd"));
  EXPECT_FALSE(HoldsRndMacro("%rn"));
  EXPECT_FALSE(HoldsRndMacro("rnd %r nd"));
  EXPECT_FALSE(HoldsRndMacro(""));
}

}  // namespace
}  // namespace postmarker
