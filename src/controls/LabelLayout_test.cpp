#include "controls/LabelLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "controls/CXNamedColors.h"
#include "support/PlainLabelSurface.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::DrawnText;
using test::PlainLabelSurface;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kInk = 0x123456;

class LabelLayoutTest : public testing::Test {
 protected:
  // Lays a text out with so many pixels for a line, and draws it.
  void Draw(std::wstring_view text, int lineWidth) {
    m_area.width = lineWidth + 2 + m_area.leftMargin + m_area.rightMargin;
    m_markup = ParseLabel(text);
    m_layout = LayOutLabel(m_markup, m_area, &m_surface);
    DrawLabel(m_markup, m_layout, {0, 0, 10'000, 10'000}, kInk, &m_surface);
  }

  // What stands on each line, from its left end. A line is what has one top.
  [[nodiscard]] std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    int top = -1000;
    for (const DrawnText& drawn : m_surface.texts) {
      if (drawn.top != top) {
        lines.emplace_back();
        top = drawn.top;
      }
      lines.back() += NarrowUtf8(drawn.text);
    }
    return lines;
  }
  [[nodiscard]] std::vector<std::string> Lines(std::wstring_view text, int lineWidth) {
    m_surface.texts.clear();
    Draw(text, lineWidth);
    return Lines();
  }
  // The text of each piece with its left end.
  [[nodiscard]] std::vector<std::tuple<std::string, int>> Pieces() const {
    std::vector<std::tuple<std::string, int>> pieces;
    for (const DrawnText& drawn : m_surface.texts) {
      pieces.emplace_back(NarrowUtf8(drawn.text), drawn.left);
    }
    return pieces;
  }
  [[nodiscard]] std::vector<int> Tops() const {
    std::vector<int> tops;
    for (const DrawnText& drawn : m_surface.texts) {
      tops.push_back(drawn.top);
    }
    return tops;
  }

  LabelArea m_area;
  LabelMarkup m_markup;
  LabelLayout m_layout;
  PlainLabelSurface m_surface;
};

using Piece = std::tuple<std::string, int>;

TEST_F(LabelLayoutTest, StartsANewLineWithTheWordThatDoesNotFit) {
  EXPECT_THAT(Lines(L"aaa bbb ccc", 65), ElementsAre("aaa bbb", "ccc"));
  EXPECT_THAT(Lines(L"aaa bbb ccc", 64), ElementsAre("aaa", "bbb", "ccc"));
  EXPECT_THAT(Lines(L"aaa bbb ccc", 100), ElementsAre("aaa bbb ccc"));
}

TEST_F(LabelLayoutTest, LeavesMarginsAndTwoPixels) {
  m_area.leftMargin = 7;
  m_area.rightMargin = 13;
  Draw(L"aaa bbb", 65);
  EXPECT_EQ(m_area.width, 87);
  EXPECT_THAT(Pieces(), ElementsAre(Piece("aaa bbb", 7)));
}

TEST_F(LabelLayoutTest, LeavesAWordThatIsTooLongOnAnEmptyLine) {
  EXPECT_THAT(Lines(L"aaaaaaaaaa bb", 50), ElementsAre("aaaaaaaaaa", "bb"));
  EXPECT_THAT(Lines(L"bb aaaaaaaaaa cc", 50), ElementsAre("bb", "aaaaaaaaaa", "cc"));
  EXPECT_THAT(Lines(L"aaa bb", 0), ElementsAre("aaa", "bb"));
}

TEST_F(LabelLayoutTest, WrapsNothingInSimpleText) {
  m_area.wrap = false;
  EXPECT_THAT(Lines(L"aaa bbb <B>ccc</B> ddd", 20), ElementsAre("aaa bbb ccc ddd"));
  EXPECT_THAT(Lines(L"aaa bbb<BR>ccc", 20), ElementsAre("aaa bbb", "ccc"));
}

TEST_F(LabelLayoutTest, KeepsBlanksOnlyWhereTheyContinueALine) {
  Draw(L"  aa  <B> bb </B> <BR> cc  ", 500);
  EXPECT_THAT(Pieces(), ElementsAre(Piece("aa  ", 0), Piece(" bb", 30), Piece("cc", 0)));
}

TEST_F(LabelLayoutTest, DropsBlanksAtABreak) {
  EXPECT_THAT(Lines(L"aa    bb", 40), ElementsAre("aa", "bb"));
  EXPECT_THAT(Lines(L"aa <B> </B> bb", 40), ElementsAre("aa", "bb"));
  EXPECT_THAT(Lines(L"     ", 40), IsEmpty());
  EXPECT_EQ(m_layout.height, 0);
}

TEST_F(LabelLayoutTest, PlacesRunsOfALineSideBySide) {
  Draw(L"aa <B>bb</B><I>c</I>", 500);
  EXPECT_THAT(Pieces(), ElementsAre(Piece("aa ", 0), Piece("bb", 25), Piece("c", 47)));
}

TEST_F(LabelLayoutTest, DoesNotBreakAWordWhereItsStyleChanges) {
  EXPECT_THAT(Lines(L"aa b<B>b</B>b", 45), ElementsAre("aa", "bbb"));
  EXPECT_THAT(Lines(L"aaa<B>a</B>aaa bb", 45), ElementsAre("aaaaaaa", "bb"));
}

TEST_F(LabelLayoutTest, JustifiesFullLinesOnly) {
  Draw(L"<JUSTIFY>aa bb cc dd", 83);
  ASSERT_EQ(Lines().size(), 2U);
  EXPECT_EQ(m_surface.texts[0].text, L"aa bb cc");
  EXPECT_EQ(m_surface.texts[0].extra, 13);
  EXPECT_EQ(m_surface.texts[0].blanks, 2);
  EXPECT_EQ(m_surface.texts[1].text, L"dd");
  EXPECT_EQ(m_surface.texts[1].extra, 0);
}

TEST_F(LabelLayoutTest, LeavesLinesThatEndBeforeTheyAreFull) {
  Draw(L"<JUSTIFY>aa bb<BR>cc dd<HR>ee ff", 83);
  for (const DrawnText& drawn : m_surface.texts) {
    EXPECT_EQ(drawn.extra, 0) << NarrowUtf8(drawn.text);
  }
}

TEST_F(LabelLayoutTest, SpreadsTheSpaceOverAllRunsOfALine) {
  Draw(L"<JUSTIFY>aa <I>bb</I> cc dddd", 85);
  EXPECT_THAT(Pieces(),
              ElementsAre(Piece("aa ", 0), Piece("bb", 32), Piece(" cc", 52), Piece("dddd", 0)));
  EXPECT_EQ(m_surface.texts[0].extra, 7);
  EXPECT_EQ(m_surface.texts[1].extra, 0);
  EXPECT_EQ(m_surface.texts[2].extra, 8);
  // The last letter reaches the end of the line.
  EXPECT_EQ(m_layout.pieces[2].place.right, 85);
}

TEST_F(LabelLayoutTest, StaysJustifiedAfterTheClosingTag) {
  Draw(L"aa bb <JUSTIFY>cc</JUSTIFY> dd ee ff", 50);
  std::vector<std::tuple<std::string, int>> extras;
  for (const DrawnText& drawn : m_surface.texts) {
    extras.emplace_back(NarrowUtf8(drawn.text), drawn.extra);
  }
  EXPECT_THAT(extras,
              ElementsAre(Piece("aa bb", 5), Piece("cc", 0), Piece(" dd", 5), Piece("ee ff", 0)));
}

TEST_F(LabelLayoutTest, LeavesALineOfOneWordThatIsJustified) {
  Draw(L"<JUSTIFY>aa bbbbb", 60);
  EXPECT_EQ(m_surface.texts[0].extra, 0);
  EXPECT_EQ(m_surface.texts[0].left, 0);
}

TEST_F(LabelLayoutTest, PutsLinesBelowEachOtherWithTheirSpacing) {
  m_area.lineSpacing = 3;
  Draw(L"a<BR>b<BR><BR>c", 100);
  EXPECT_THAT(Tops(), ElementsAre(0, 23, 69));
  EXPECT_EQ(m_layout.height, 92);
}

TEST_F(LabelLayoutTest, GivesALineTheHeightOfItsLargestFont) {
  Draw(L"a<BIG>b</BIG>c<BR>d", 100);
  EXPECT_THAT(Tops(), ElementsAre(2, 0, 2, 22));
}

TEST_F(LabelLayoutTest, EndsTheLineAfterAFontWithASize) {
  Draw(L"a<FONT SIZE=\"4\">b</FONT>c", 100);
  EXPECT_THAT(Pieces(), ElementsAre(Piece("a", 0), Piece("b", 10), Piece("c", 0)));
  EXPECT_THAT(Tops(), ElementsAre(4, 0, 24));
  m_surface.texts.clear();
  Draw(L"<FONT SIZE=\"4\"><BR></FONT>c", 100);
  EXPECT_THAT(Tops(), ElementsAre(48));
}

TEST_F(LabelLayoutTest, MovesSubscriptAndSuperscriptByHalfALine) {
  Draw(L"a<SUB>b</SUB>c", 100);
  EXPECT_THAT(Tops(), ElementsAre(0, 10, 0));
  EXPECT_EQ(m_layout.height, 30);
  m_surface.texts.clear();
  Draw(L"a<SUP>b</SUP>c", 100);
  EXPECT_THAT(Tops(), ElementsAre(10, 0, 10));
  EXPECT_EQ(m_layout.height, 30);
}

TEST_F(LabelLayoutTest, PutsARuleBelowTheRunBeforeIt) {
  m_area.leftMargin = 5;
  m_area.rightMargin = 6;
  Draw(L"a<HR SIZE=3>b<BR><HR><FONT COLOR=\"#010000\"><HR SIZE=2>", 100);
  ASSERT_EQ(m_surface.rectangles.size(), 3U);
  EXPECT_EQ(m_surface.rectangles[0].rect, (LabelRect{5, 20, 107, 23}));
  EXPECT_EQ(m_surface.rectangles[0].color, kInk);
  EXPECT_EQ(m_surface.rectangles[1].rect, (LabelRect{5, 43, 107, 44}));
  EXPECT_EQ(m_surface.rectangles[2].rect, (LabelRect{5, 44, 107, 46}));
  EXPECT_EQ(m_surface.rectangles[2].color, 1U);
  EXPECT_THAT(Tops(), ElementsAre(0, 23));
  EXPECT_EQ(m_layout.height, 46);
}

TEST_F(LabelLayoutTest, ScalesTheHeightsOfRules) {
  m_surface.scale = 2;
  Draw(L"<HR SIZE=3>", 100);
  EXPECT_EQ(m_layout.height, 6);
}

TEST_F(LabelLayoutTest, DrawsEachPieceInItsStyle) {
  Draw(L"a<B><FONT COLOR=\"#010000\" BGCOLOR=\"#020000\" FACE=\"F\"><SPACING>b", 100);
  ASSERT_EQ(m_surface.texts.size(), 2U);
  EXPECT_EQ(m_surface.texts[0].color, kInk);
  EXPECT_EQ(m_surface.texts[0].background, std::nullopt);
  EXPECT_EQ(m_surface.texts[1].color, 1U);
  EXPECT_EQ(m_surface.texts[1].background, 2U);
  EXPECT_EQ(m_surface.texts[1].face, L"F");
  EXPECT_TRUE(m_surface.texts[1].font.bold);
  EXPECT_EQ(m_surface.texts[1].font.spacing, 1);
  EXPECT_EQ(m_layout.pieces[1].place, (LabelRect{10, 0, 22, 20}));
}

TEST_F(LabelLayoutTest, DrawsOnlyWhatLiesInTheClip) {
  const LabelMarkup markup = ParseLabel(L"a<BR>b<HR>c<HR>d");
  m_area.width = 100;
  const LabelLayout layout = LayOutLabel(markup, m_area, &m_surface);
  DrawLabel(markup, layout, {0, 20, 100, 41}, kInk, &m_surface);
  EXPECT_THAT(Pieces(), ElementsAre(Piece("b", 0)));
  ASSERT_EQ(m_surface.rectangles.size(), 1U);
  EXPECT_EQ(m_surface.rectangles[0].rect.top, 40);
}

TEST_F(LabelLayoutTest, GivesEachPieceOfALinkARectangle) {
  Draw(L"a <A HREF=1>bb <B>cc</B> dd</A> e", 55);
  ASSERT_EQ(m_layout.links.size(), 3U);
  EXPECT_EQ(m_layout.links[0].place, (LabelRect{15, 0, 35, 20}));
  EXPECT_EQ(m_layout.links[1].place, (LabelRect{0, 20, 22, 40}));
  EXPECT_EQ(m_layout.links[2].place, (LabelRect{22, 20, 47, 40}));
  EXPECT_EQ(LabelLinkAt(m_layout, 15, 0), 0U);
  EXPECT_EQ(LabelLinkAt(m_layout, 34, 19), 0U);
  EXPECT_EQ(LabelLinkAt(m_layout, 35, 19), kNoLink);
  EXPECT_EQ(LabelLinkAt(m_layout, 14, 0), kNoLink);
  EXPECT_EQ(LabelLinkAt(m_layout, 46, 39), 0U);
}

TEST_F(LabelLayoutTest, ListsLinksThatCanBeSeen) {
  Draw(L"<A HREF=1>a <B>b</B></A><A HREF=2> </A><A HREF=3></A> <A HREF=4>c</A>", 12);
  EXPECT_THAT(VisibleLabelLinks(m_layout), ElementsAre(0U, 3U));
}

TEST_F(LabelLayoutTest, LaysOutNothingBelowTheLastCoordinate) {
  m_area.lineSpacing = (1 << 20) - 20;
  std::wstring text;
  for (int i = 0; i < 1000; ++i) {
    text += L"a<BR>";
  }
  Draw(text, 100);
  EXPECT_EQ(m_layout.height, 1 << 27);
  EXPECT_EQ(m_layout.pieces.size(), 128U);
}

TEST_F(LabelLayoutTest, StaysWithinCoordinatesInAVeryLongLine) {
  m_area.wrap = false;
  m_surface.letterWidth = 1 << 20;
  std::wstring text;
  for (int i = 0; i < 50; ++i) {
    text += L"<B>" + std::wstring(100, L'a') + L"</B> b ";
  }
  Draw(text, 100);
  for (const LabelPiece& piece : m_layout.pieces) {
    EXPECT_LE(piece.place.right, 1 << 27);
  }
  EXPECT_EQ(m_layout.pieces.back().place.left, 1 << 27);
}

TEST_F(LabelLayoutTest, MeasuresEachCharacterOnce) {
  // One word of many runs: all of it moves to the next line, once.
  std::wstring text = L"a ";
  for (int i = 0; i < 20'000; ++i) {
    text += i % 2 == 0 ? L"<B>x" : L"</B>y";
  }
  Draw(text, 100);
  EXPECT_LE(m_surface.measured, 2 * text.size());
  EXPECT_EQ(m_layout.height, 40);
}

}  // namespace
}  // namespace postmarker
