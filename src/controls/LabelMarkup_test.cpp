#include "controls/LabelMarkup.h"

#include <gtest/gtest.h>

#include <ostream>

#include "controls/CXNamedColors.h"
#include "support/HostileLabels.h"
#include "support/Text.h"

namespace postmarker {
namespace {

uint32_t Color(const wchar_t* name) {
  return CXNamedColors(name).Value();
}

// The runs and line ends of a text: style letters, ":" and the text of each run, "|" for a line end
// and "-" with its height for a rule.
std::wstring Outline(const LabelMarkup& markup) {
  std::wstring outline;
  for (const LabelItem& item : markup.items) {
    if (item.kind == LabelItemKind::kLineEnd) {
      outline += L"|";
      continue;
    }
    if (item.kind == LabelItemKind::kRule) {
      outline += L"[-" + std::to_wstring(item.ruleHeight) + L"]";
      continue;
    }
    const LabelFont& font = item.style.font;
    outline += L"[";
    outline += font.bold ? L"b" : L"";
    outline += font.italic ? L"i" : L"";
    outline += font.underline ? L"u" : L"";
    outline += font.strikethrough ? L"s" : L"";
    outline += item.style.shift == LabelShift::kUp     ? L"^"
               : item.style.shift == LabelShift::kDown ? L"_"
                                                       : L"";
    outline += font.spacing != 0 ? std::to_wstring(font.spacing) : L"";
    outline += font.size > 0 ? L"+" : L"";
    outline += font.size != 0 ? std::to_wstring(font.size) : L"";
    outline += item.justify ? L"j" : L"";
    outline += item.style.link != kNoLink ? L"a" : L"";
    outline += markup.faces[font.face].empty() ? L"" : L"(" + markup.faces[font.face] + L")";
    outline += L":" + markup.text.substr(item.begin, item.end - item.begin) + L"]";
  }
  return outline;
}

std::string Outline(std::wstring_view text) {
  return NarrowUtf8(Outline(ParseLabel(text)));
}

// The style of the last run of a text.
LabelStyle LastStyle(std::wstring_view text) {
  return ParseLabel(text).items.back().style;
}

TEST(LabelCharacters, ReplacesEachEntityOfTheTable) {
  EXPECT_EQ(LabelCharacters(L"&amp;&copy;&gt;&iquest;&lt;&nbsp;&para;&pound;&quot;&reg;"),
            L"&\xA9>\xBF< \xB6\xA3\"\xAE");
}

TEST(LabelCharacters, GivesCodesOfWindows1252WhereTheTableHasThem) {
  EXPECT_EQ(LabelCharacters(L"&bull;"), std::wstring(1, wchar_t{0x95}));
  EXPECT_EQ(LabelCharacters(L"&euro;"), std::wstring(1, wchar_t{0x80}));
  EXPECT_EQ(LabelCharacters(L"&trade;"), std::wstring(1, wchar_t{0x99}));
}

TEST(LabelCharacters, LeavesWhatIsNoEntity) {
  for (const wchar_t* text : {L"&", L"&&", L"&amp", L"&AMP;", L"&middot;", L"& amp;", L"&#38;"}) {
    EXPECT_EQ(LabelCharacters(text), text);
  }
}

TEST(LabelCharacters, ReplacesEachPlaceOnce) {
  EXPECT_EQ(LabelCharacters(L"&amp;lt;B&amp;gt;"), L"&lt;B&gt;");
}

TEST(LabelCharacters, MakesABlankOfEachLineEndAndTab) {
  EXPECT_EQ(LabelCharacters(L"a\r\nb\nc\rd\te\n\nf"), L"a b c d e  f");
}

TEST(ParseLabel, GivesOneRunForATextWithoutTags) {
  EXPECT_EQ(Outline(L"Two words"), "[:Two words]");
  EXPECT_EQ(Outline(L""), "");
}

TEST(ParseLabel, ReadsEachTagOfStyles) {
  EXPECT_EQ(Outline(L"<B>x</B>x"), "[b:x][:x]");
  EXPECT_EQ(Outline(L"<I>x</I>x"), "[i:x][:x]");
  EXPECT_EQ(Outline(L"<U>x</U>x"), "[u:x][:x]");
  EXPECT_EQ(Outline(L"<STRIKE>x</STRIKE>x"), "[s:x][:x]");
  EXPECT_EQ(Outline(L"<SUB>x</SUB>x"), "[_:x][:x]");
  EXPECT_EQ(Outline(L"<SUP>x</SUP>x"), "[^:x][:x]");
  EXPECT_EQ(Outline(L"<SPACING>x</SPACING>x"), "[1:x][:x]");
  EXPECT_EQ(Outline(L"<BIG>x</BIG>x"), "[+2:x][:x]");
  EXPECT_EQ(Outline(L"<SMALL>x</SMALL>x"), "[-2:x][:x]");
  EXPECT_EQ(Outline(L"<CODE>x</CODE>x"), "[(Courier New):x][:x]");
  EXPECT_EQ(Outline(L"x<BR>x"), "[:x]|[:x]");
}

TEST(ParseLabel, IgnoresTheCaseOfTags) {
  EXPECT_EQ(Outline(L"<b>x</B><sTrIkE>y"), "[b:x][s:y]");
  EXPECT_EQ(Outline(L"<a href=t>x</a><font size=\"1\">y"), "[a:x][+1:y]");
}

TEST(ParseLabel, CountsNestedTags) {
  EXPECT_EQ(Outline(L"<B><B>x</B>x</B>x"), "[b:x][b:x][:x]");
  EXPECT_EQ(Outline(L"<SPACING><SPACING>x</SPACING>x</SPACING>x"), "[2:x][1:x][:x]");
  EXPECT_EQ(Outline(L"<BIG><BIG>x</BIG><SMALL>x"), "[+4:x][:x]");
  EXPECT_EQ(Outline(L"<B>1<I>2<U>3</B>4</I>5</U>6"), "[b:1][bi:2][biu:3][iu:4][u:5][:6]");
}

TEST(ParseLabel, KeepsCountersAtZeroForUnbalancedClosingTags) {
  EXPECT_EQ(Outline(L"</B></B>x<B>y"), "[:x][b:y]");
  EXPECT_EQ(Outline(L"</I></U></STRIKE></SUB></SUP></SPACING>x"), "[:x]");
  EXPECT_EQ(Outline(L"</SUB><SUB>x</SPACING><SPACING>y"), "[_:x][_1:y]");
}

TEST(ParseLabel, KeepsUnclosedTagsToTheEnd) {
  EXPECT_EQ(Outline(L"a<B>b<A HREF=t>c<SUP>d"), "[:a][b:b][ba:c][b^a:d]");
}

// Tags that come in pairs, and what Outline shows for one that is open.
struct PairOfTags {
  const wchar_t* name;
  const char* one;
  const char* two;  // for two of them
};

constexpr PairOfTags kPairsOfTags[] = {
    {L"B", "b", "b"},       {L"I", "i", "i"},
    {L"U", "u", "u"},       {L"STRIKE", "s", "s"},
    {L"SUB", "_", "_"},     {L"SUP", "^", "^"},
    {L"SPACING", "1", "2"}, {L"BIG", "+2", "+4"},
    {L"SMALL", "-2", "-4"}, {L"CODE", "(Courier New)", "(Courier New)"},
    {L"FONT", "", ""},      {L"JUSTIFY", "j", "j"},
};

void PrintTo(const PairOfTags& tags, std::ostream* out) {
  *out << "<" << NarrowUtf8(tags.name) << ">";
}

class PairOfTagsTest : public testing::TestWithParam<PairOfTags> {
 protected:
  // A text in which "<>" stands for the opening tag and "</>" for the closing one.
  [[nodiscard]] static std::string Read(std::wstring text) {
    const std::wstring name = GetParam().name;
    for (size_t at = 0; (at = text.find(L'>', at)) != std::wstring::npos; at += name.size() + 1) {
      text.insert(at, name);
    }
    return Outline(text);
  }
  [[nodiscard]] static std::string Run(const std::string& style, const std::string& text) {
    return "[" + style + ":" + text + "]";
  }
  // What stands after the last closing tag: all but JUSTIFY end there.
  [[nodiscard]] static std::string After() {
    return GetParam().name == std::wstring(L"JUSTIFY") ? "j" : "";
  }
};

TEST_P(PairOfTagsTest, IsCountedWhenItIsNested) {
  const auto& [name, one, two] = GetParam();
  EXPECT_EQ(Read(L"<>1<>2</>3</>4"),
            Run(one, "1") + Run(two, "2") + Run(one, "3") + Run(After(), "4"));
}

TEST_P(PairOfTagsTest, LastsToTheEndWhenItIsNotClosed) {
  EXPECT_EQ(Read(L"1<>2<BR"), Run("", "1") + Run(GetParam().one, "2<BR"));
}

TEST_P(PairOfTagsTest, IsTextWithoutItsBracketOrWithABlankInIt) {
  const std::wstring name = GetParam().name;
  const std::string narrow = NarrowUtf8(name);
  EXPECT_EQ(Outline(L"1<" + name), Run("", "1<" + narrow));
  EXPECT_EQ(Outline(L"1</" + name), Run("", "1</" + narrow));
  EXPECT_EQ(Outline(L"1</" + name + L" >2"), Run("", "1</" + narrow + " >2"));
  EXPECT_EQ(Outline(L"1< " + name + L">2"), Run("", "1< " + narrow + ">2"));
}

TEST_P(PairOfTagsTest, IsIgnoredWhereNothingIsOpen) {
  // BIG and SMALL have no counters: each closing tag undoes the other one's opening.
  const std::wstring name = GetParam().name;
  const std::string style = name == L"BIG" ? "-2" : name == L"SMALL" ? "+2" : After();
  EXPECT_EQ(Read(L"</>1"), Run(style, "1"));
}

INSTANTIATE_TEST_SUITE_P(Each, PairOfTagsTest, testing::ValuesIn(kPairsOfTags),
                         [](const auto& tested) { return NarrowUtf8(tested.param.name); });

TEST(ParseLabel, ReadsTagsOfOneKindThatStandAlone) {
  EXPECT_EQ(Outline(L"<BR><BR>1<HR><HR>2</BR></HR>3"), "||[:1][-1][-1][:2</BR></HR>3]");
  EXPECT_EQ(Outline(L"1<BR"), "[:1<BR]");
  EXPECT_EQ(Outline(L"<B>1<BR>2<HR>3</B>4"), "[b:1]|[b:2][-1][b:3][:4]");
  EXPECT_EQ(Outline(L"1<HR SIZE=<B>2"), "[:1][-1][:2]");
}

TEST(ParseLabel, ReadsTagsInsideOfLinks) {
  EXPECT_EQ(Outline(L"<A HREF=t>1<B>2<BR>3<HR>4</A>5</B>6"),
            "[a:1][ba:2]|[ba:3][-1][ba:4][b:5][:6]");
}

TEST(ParseLabel, StaysJustifiedAfterTheClosingTag) {
  EXPECT_EQ(Outline(L"x<JUSTIFY>y</JUSTIFY>z"), "[:x][j:y][j:z]");
  EXPECT_EQ(Outline(L"x</JUSTIFY>y"), "[:x][j:y]");
}

TEST(ParseLabel, LeavesARunWhereItIsThatIsSubscriptAndSuperscript) {
  EXPECT_EQ(Outline(L"<SUB><SUP>x</SUB>y"), "[:x][^:y]");
}

TEST(ParseLabel, DrawsWhatIsNoTag) {
  EXPECT_EQ(Outline(L"a < b"), "[:a < b]");
  EXPECT_EQ(Outline(L"<"), "[:<]");
  EXPECT_EQ(Outline(L"<<B>x"), "[:<][b:x]");
  EXPECT_EQ(Outline(L"<P>x</P>"), "[:<P>x</P>]");
  EXPECT_EQ(Outline(L"<B >x"), "[:<B >x]");
  EXPECT_EQ(Outline(L"<BR/>x"), "[:<BR/>x]");
  EXPECT_EQ(Outline(L"<A NAME=x>y"), "[:<A NAME=x>y]");
}

TEST(ParseLabel, DrawsATagWithoutItsEnd) {
  EXPECT_EQ(Outline(L"a<FONT COLOR=\"Red\""), "[:a<FONT COLOR=\"Red\"]");
  EXPECT_EQ(Outline(L"a<A HREF=x"), "[:a<A HREF=x]");
  EXPECT_EQ(Outline(L"a<HR"), "[:a<HR]");
  EXPECT_EQ(Outline(L"a<B"), "[:a<B]");
  EXPECT_EQ(Outline(L"a</B"), "[:a</B]");
}

TEST(ParseLabel, EndsATagAtTheFirstBracket) {
  EXPECT_EQ(Outline(L"<FONT FACE=\"a>b\">c"), "[:b\">c]");
  EXPECT_EQ(Outline(L"<A HREF=x<B>y"), "[a:y]");
}

TEST(ParseLabel, TakesABracketFromAnEntityForATag) {
  EXPECT_EQ(Outline(L"1 &lt; 2"), "[:1 < 2]");
  EXPECT_EQ(Outline(L"&lt;B&gt;x"), "[b:x]");
}

TEST(ParseLabelFont, ReadsAllAttributesInAnyOrderAndCase) {
  const LabelMarkup markup =
      ParseLabel(L"<FONT size=\"-3\" BgColor=\"Yellow\" Face=\"Arial\" COLOR=\"#010203\">x</FONT>");
  const LabelStyle style = markup.items.front().style;
  EXPECT_EQ(style.color, 0x030201U);
  EXPECT_EQ(style.background, Color(L"Yellow"));
  EXPECT_EQ(markup.faces[style.font.face], L"Arial");
  EXPECT_EQ(style.font.size, -3);
}

TEST(ParseLabelFont, RestoresColorsAndFontOfBeforeTheTag) {
  const std::wstring text =
      L"<FONT COLOR=\"Red\" BGCOLOR=\"Blue\" FACE=\"A\"><FONT COLOR=\"Lime\" FACE=\"B\"><BIG>x"
      L"</FONT>";
  const LabelMarkup markup = ParseLabel(text + L"y");
  const LabelStyle style = markup.items.back().style;
  EXPECT_EQ(style.color, Color(L"Red"));
  EXPECT_EQ(style.background, Color(L"Blue"));
  EXPECT_EQ(markup.faces[style.font.face], L"A");
  EXPECT_EQ(style.font.size, 0);
  EXPECT_EQ(LastStyle(text + L"</FONT>y"), LabelStyle());
}

TEST(ParseLabelFont, MovesDownAfterASizeOnly) {
  EXPECT_EQ(Outline(L"<FONT SIZE=\"4\">x</FONT>y"), "[+4:x]|[:y]");
  EXPECT_EQ(Outline(L"<FONT SIZE=\"0\">x</FONT>y"), "[:x]|[:y]");
  EXPECT_EQ(Outline(L"<FONT COLOR=\"Red\">x</FONT>y"), "[:x][:y]");
  EXPECT_EQ(Outline(L"<FONT SIZE=\"four\">x</FONT>y"), "[:x][:y]");
  EXPECT_EQ(LastStyle(L"<FONT SIZE=\"4\">x</FONT>").font.size, 4);
}

TEST(ParseLabelFont, ReadsSizesWithinALimit) {
  EXPECT_EQ(LastStyle(L"<FONT SIZE=\" +12pt\">x").font.size, 12);
  EXPECT_EQ(LastStyle(L"<FONT SIZE=\"99999999999999999999\">x").font.size, 1000);
  EXPECT_EQ(LastStyle(L"<FONT SIZE=\"-99999999999999999999\">x").font.size, -1000);
  EXPECT_EQ(LastStyle(L"<FONT SIZE=\"1000\"><FONT SIZE=\"1000\">x").font.size, 1000);
}

TEST(ParseLabelFont, SkipsOtherAttributesToTheNextBlank) {
  EXPECT_EQ(LastStyle(L"<FONT CLASS=big COLOR=\"Red\">x").color, Color(L"Red"));
  EXPECT_EQ(LastStyle(L"<FONT XCOLOR=\"Blue\"  COLOR=\"Red\">x").color, Color(L"Red"));
  EXPECT_EQ(LastStyle(L"<FONT>x"), LabelStyle());
}

TEST(ParseLabelFont, EndsReadingAtAValueWithoutItsQuotes) {
  const LabelStyle style = LastStyle(L"<FONT COLOR=\"Red\" FACE=Arial BGCOLOR=\"Blue\">x");
  EXPECT_EQ(style.color, Color(L"Red"));
  EXPECT_EQ(style.font.face, 0U);
  EXPECT_EQ(style.background, std::nullopt);
  EXPECT_EQ(LastStyle(L"<FONT COLOR=\"Red>x"), LabelStyle());
}

TEST(ParseLabelFont, TakesUnknownColorsForBlack) {
  EXPECT_EQ(LastStyle(L"<FONT COLOR=\"reddish\">x").color, 0U);
}

TEST(ParseLabelFont, IgnoresAClosingTagWithoutItsOpeningOne) {
  EXPECT_EQ(Outline(L"</FONT></CODE>x"), "[:x]");
  EXPECT_EQ(Outline(L"<BIG></FONT></CODE>x"), "[+2:x]");
}

TEST(ParseLabelFont, ClosesWhatWasOpenedInside) {
  EXPECT_EQ(Outline(L"<FONT FACE=\"A\"><CODE>x</FONT>y</CODE>z"), "[(Courier New):x][:y][:z]");
  EXPECT_EQ(Outline(L"<CODE><FONT FACE=\"A\">x</CODE>y</FONT>z"), "[(A):x][:y][:z]");
}

TEST(ParseLabelFont, CutsFacesThatAreTooLong) {
  const LabelMarkup markup = ParseLabel(L"<FONT FACE=\"" + std::wstring(500, L'f') + L"\">x");
  EXPECT_EQ(markup.faces.back(), std::wstring(31, L'f'));
}

TEST(ParseLabelRule, ReadsTheHeight) {
  EXPECT_EQ(Outline(L"a<HR>b"), "[:a][-1][:b]");
  EXPECT_EQ(Outline(L"<HR SIZE=3><hr size=\"4\"><HR NOSHADE SIZE= 5><HR SIZE=0>"),
            "[-3][-4][-5][-0]");
  EXPECT_EQ(Outline(L"<HR SIZE=x><HR SIZE=><HR SIZE=-2><HR SIZE><HR SIZE=99999999999>"),
            "[-1][-1][-1][-1][-1000]");
}

TEST(ParseLabelLink, KeepsTheTargetUpToTheBracket) {
  const LabelMarkup markup =
      ParseLabel(L"<A HREF=\"http://a/?b&amp;c\" title=d><U> Go </U>on</A>x<A HREF=>y</A>");
  ASSERT_EQ(markup.links.size(), 2U);
  EXPECT_EQ(markup.links[0].target, L"\"http://a/?b&c\" title=d");
  EXPECT_EQ(markup.links[0].name, L"Go on");
  EXPECT_EQ(markup.links[1].target, L"");
  EXPECT_EQ(NarrowUtf8(Outline(markup)), "[ua: Go ][a:on][:x][a:y]");
}

TEST(ParseLabelLink, EndsWhereAnotherBegins) {
  const LabelMarkup markup = ParseLabel(L"<A HREF=1>x<A HREF=2>y</A>z</A>");
  ASSERT_EQ(markup.items.size(), 3U);
  EXPECT_EQ(markup.items[0].style.link, 0U);
  EXPECT_EQ(markup.items[1].style.link, 1U);
  EXPECT_EQ(markup.items[2].style.link, kNoLink);
}

TEST(LabelPlainText, IsWhatCanBeRead) {
  EXPECT_EQ(LabelPlainText(ParseLabel(L" <B>One</B>, two<BR>three<HR>&copy; <A HREF=x>4</A> ")),
            L"One, two three \xA9 4");
  EXPECT_EQ(LabelPlainText(ParseLabel(L"<BR><HR>")), L"");
}

TEST(ParseLabel, ReadsTextsThatAreMadeToCostTime) {
  // Where a tag costs a look at the whole text, some of these take minutes.
  constexpr size_t kLength = 100'000;
  for (const test::LabelShape& shape : test::kLabelShapes) {
    const LabelMarkup markup = ParseLabel(test::LabelText(shape, kLength));
    EXPECT_LE(markup.items.size(), kLength) << shape.name;
  }
}

}  // namespace
}  // namespace postmarker
