#include "controls/CXHTMLStatic_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "controls/LabelFixture_win.h"
#include "support/ObjectCount_win.h"
#include "support/Text.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr wchar_t kThreeLinks[] =
    L"<A HREF=http://one>one</A> <A HREF=http://two>two</A> and <A HREF=http://three>three</A>";

uint32_t Color(const wchar_t* name) {
  return CXNamedColors(name).Value();
}

class CXHTMLStaticTest : public LabelFixture {};

TEST_F(CXHTMLStaticTest, AttachesToOneWindowOnly) {
  Show(L"text");
  EXPECT_FALSE(m_label.Attach(m_before));
  CXHTMLStatic other(&m_shell);
  EXPECT_FALSE(other.Attach(nullptr));
}

TEST_F(CXHTMLStaticTest, StartsWithTheColorsOfWindows) {
  Show(L"text");
  EXPECT_EQ(LabelPicture(m_label.Handle()).At(299, 119), ::GetSysColor(COLOR_WINDOW));
  EXPECT_EQ(m_label.SetTextColor(L"Red").Value(), ::GetSysColor(COLOR_WINDOWTEXT));
  EXPECT_EQ(m_label.SetBackColor(CXNamedColors(0x00FF00U)).Value(), ::GetSysColor(COLOR_WINDOW));
}

TEST_F(CXHTMLStaticTest, GivesBackTheColorThatWasSetBefore) {
  Show(L"text<HR SIZE=3>");
  m_label.SetTextColor(L"Red");
  m_label.SetBackColor(L"#0000FF");
  const LabelPicture picture(m_label.Handle());
  EXPECT_EQ(picture.At(299, 119), Color(L"Blue"));
  EXPECT_TRUE(picture.Has({0, 0, 299, 100}, Color(L"Red")));
  EXPECT_EQ(m_label.SetTextColor(L"Lime").Name(), L"Red");
  EXPECT_EQ(m_label.SetBackColor(L"White").Name(), L"Blue");
}

TEST_F(CXHTMLStaticTest, DrawsColorsBackgroundsAndRules) {
  Show(L"<A HREF=x><FONT COLOR=\"Red\" BGCOLOR=\"Yellow\">Word</FONT></A><HR SIZE=5>");
  const LabelPicture picture(m_label.Handle());
  const LabelRect word = m_label.LinkPlaces().at(0).place;
  EXPECT_TRUE(picture.Has(word, Color(L"Yellow")));
  EXPECT_FALSE(picture.Has(word, ::GetSysColor(COLOR_WINDOW)));
  for (int y = word.bottom; y < word.bottom + 5; ++y) {
    EXPECT_EQ(picture.At(0, y), ::GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_EQ(picture.At(299, y), ::GetSysColor(COLOR_WINDOWTEXT));
  }
  EXPECT_EQ(picture.At(0, word.bottom + 5), ::GetSysColor(COLOR_WINDOW));
}

TEST_F(CXHTMLStaticTest, DrawsEachStyleInItsOwnWay) {
  Show(L"a sample");
  std::set<std::vector<uint32_t>> pictures = {LabelPicture(m_label.Handle()).Pixels()};
  for (const wchar_t* tag : {L"<B>", L"<I>", L"<U>", L"<STRIKE>", L"<BIG>", L"<SMALL>",
                             L"<SPACING>", L"<SUP>", L"<SUB>", L"<CODE>", L"<FONT SIZE=\"5\">",
                             L"<FONT COLOR=\"Red\">", L"<FONT FACE=\"Liberation Serif\">"}) {
    m_label.SetText(std::wstring(L"a ") + tag + L"sample");
    EXPECT_TRUE(pictures.insert(LabelPicture(m_label.Handle()).Pixels()).second) << NarrowUtf8(tag);
  }
}

TEST_F(CXHTMLStaticTest, SpreadsTheBlanksOfAJustifiedLine) {
  Show(L"<JUSTIFY>i <A HREF=x>j</A> mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm");
  ASSERT_EQ(m_label.LinkPlaces().size(), 1U);
  EXPECT_GE(m_label.LinkPlaces()[0].place.right, 297);
  EXPECT_LE(m_label.LinkPlaces()[0].place.right, 298);
}

TEST_F(CXHTMLStaticTest, DrawsJustifiedBlanksAsWideAsTheyWereLaidOut) {
  Show(
      L"<JUSTIFY><FONT BGCOLOR=\"Red\">i i i "
      L"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm");
  const LabelPicture picture(m_label.Handle());
  EXPECT_EQ(picture.At(297, 3), Color(L"Red"));
  EXPECT_EQ(picture.At(298, 3), ::GetSysColor(COLOR_WINDOW));
}

// Where the letters of a link end, and where its rectangle does.
TEST_F(CXHTMLStaticTest, DrawsTextAsWideAsItWasLaidOut) {
  Show(L"");
  m_label.SetTextColor(L"Red");
  m_label.SetBackColor(L"White");
  for (const wchar_t* style : {L"", L"<SPACING>", L"<B>", L"<FONT FACE=\"Liberation Serif\">"}) {
    m_label.SetText(std::wstring(style) + L"<A HREF=x>many letters m</A>");
    const LabelRect place = m_label.LinkPlaces().at(0).place;
    const LabelPicture picture(m_label.Handle());
    int last = 0;
    for (int x = 0; x < picture.Width(); ++x) {
      for (int y = 0; y < place.bottom; ++y) {
        last = picture.At(x, y) != Color(L"White") ? x : last;
      }
    }
    EXPECT_NEAR(last + 1, place.right, 4) << NarrowUtf8(style);
  }
}

TEST_F(CXHTMLStaticTest, WrapsAtItsWidth) {
  Show(L"some words that do not fit on one line of the label, as it is only 300 pixels wide");
  const int height = m_label.TextHeight();
  ::SetWindowPos(m_label.Handle(), nullptr, 0, 0, 2000, 120, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_LT(m_label.TextHeight(), height);
  const int line = m_label.TextHeight();
  m_label.SetMargins(900, 900);
  EXPECT_GT(m_label.TextHeight(), line);
  m_label.SetMargins(-5, -5);
  m_label.SetLineSpacing(4);
  EXPECT_EQ(m_label.TextHeight(), line + 4);
}

TEST_F(CXHTMLStaticTest, KeepsSimpleTextOnOneLine) {
  const std::wstring text =
      L"some words that do not fit on one line of the label, as it is only 300 pixels wide";
  Show(text, SS_SIMPLE);
  const int line = m_label.TextHeight();
  m_label.SetText(L"short");
  EXPECT_EQ(m_label.TextHeight(), line);
  m_label.SetText(text);
  ::SetWindowLongPtrW(m_label.Handle(), GWL_STYLE, WS_CHILD | WS_VISIBLE | SS_LEFT);
  EXPECT_GT(m_label.TextHeight(), line);
  ::SetWindowLongPtrW(m_label.Handle(), GWL_STYLE, WS_CHILD | WS_VISIBLE | SS_LEFTNOWORDWRAP);
  EXPECT_EQ(m_label.TextHeight(), line);
}

TEST_F(CXHTMLStaticTest, RepaintsWhenItsTextIsSet) {
  Show(L"text");
  Pump();
  ::UpdateWindow(m_label.Handle());
  ASSERT_FALSE(::GetUpdateRect(m_label.Handle(), nullptr, FALSE));
  m_label.SetText(L"<A HREF=x>other</A>");
  EXPECT_TRUE(::GetUpdateRect(m_label.Handle(), nullptr, FALSE));
  EXPECT_EQ(m_label.LinkPlaces().size(), 1U);
  EXPECT_EQ(m_label.Links()[0].target, L"x");
  ::UpdateWindow(m_label.Handle());
  EXPECT_FALSE(::GetUpdateRect(m_label.Handle(), nullptr, FALSE));
}

TEST_F(CXHTMLStaticTest, MeasuresAnewWithAnotherFont) {
  Show(L"text");
  const int height = m_label.TextHeight();
  const FontHandle font(
      ::CreateFontW(-40, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial"));
  m_label.Send(WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
  EXPECT_GT(m_label.TextHeight(), height);
  m_label.Send(WM_SETFONT, reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)), TRUE);
  EXPECT_EQ(m_label.TextHeight(), height);
}

TEST_F(CXHTMLStaticTest, EnlargesAFontThatIsGivenByTheHeightOfItsCells) {
  Show(L"text");
  const FontHandle font(
      ::CreateFontW(20, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial"));
  m_label.Send(WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), TRUE);
  const int height = m_label.TextHeight();
  EXPECT_NEAR(height, 20, 1);
  m_label.SetText(L"<FONT SIZE=\"10\">text");
  EXPECT_GT(m_label.TextHeight(), height + 7);
}

TEST_F(CXHTMLStaticTest, GraysItsTextWhileItIsDisabled) {
  Show(L"MMMM");
  const LabelRect all = {0, 0, 299, 40};
  EXPECT_TRUE(LabelPicture(m_label.Handle()).Has(all, ::GetSysColor(COLOR_WINDOWTEXT)));
  ::EnableWindow(m_label.Handle(), FALSE);
  EXPECT_FALSE(LabelPicture(m_label.Handle()).Has(all, ::GetSysColor(COLOR_WINDOWTEXT)));
}

TEST_F(CXHTMLStaticTest, FreesAllThatItDrawsWith) {
  std::wstring text;
  for (int i = 0; i < 60; ++i) {
    text += L"<FONT SIZE=\"" + std::to_wstring(i) + L"\" COLOR=\"Red\">x</FONT><HR>";
  }
  Show(text);
  const LabelPicture first(m_label.Handle());
  ::UpdateWindow(m_label.Handle());
  const auto before = CountGdiObjects();
  for (int i = 0; i < 50; ++i) {
    m_label.SetText(text);
    ::UpdateWindow(m_label.Handle());
    const LabelPicture again(m_label.Handle());
    EXPECT_EQ(again.Pixels(), first.Pixels());
  }
  EXPECT_EQ(CountGdiObjects(), before);
}

TEST_F(CXHTMLStaticTest, ShowsTheHandOverLinks) {
  Show(L"words <A HREF=http://x>link</A>");
  Move(kNowhere);
  EXPECT_FALSE(m_label.IsOverLink());
  ::SetCursor(::LoadCursorW(nullptr, IDC_ARROW));
  Move(Place(0));
  EXPECT_TRUE(m_label.IsOverLink());
  EXPECT_EQ(::GetCursor(), ::LoadCursorW(nullptr, IDC_HAND));
  Move(kNowhere);
  EXPECT_FALSE(m_label.IsOverLink());
}

TEST_F(CXHTMLStaticTest, TakesTheMouseEverywhere) {
  Show(L"words");
  EXPECT_EQ(m_label.Send(WM_NCHITTEST, 0, 0), HTCLIENT);
}

TEST_F(CXHTMLStaticTest, OpensTheLinkThatIsClicked) {
  Show(kThreeLinks);
  Click(Place(1));
  EXPECT_THAT(m_shell.actions, ElementsAre(L"open http://two"));
  EXPECT_THAT(m_parent.drags, IsEmpty());
}

TEST_F(CXHTMLStaticTest, OpensNothingWhenTheMouseMovesAwayBeforeItIsReleased) {
  Show(kThreeLinks);
  Press(Place(1));
  Release(Place(0));
  Press(Place(1));
  Release(kNowhere);
  Release(Place(1));
  Press(Place(1));
  ::ReleaseCapture();
  Release(Place(1));
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(CXHTMLStaticTest, HandsAClickBesideLinksToItsDialogAsADragOfTheCaption) {
  Show(kThreeLinks);
  POINT point = {295, 115};
  ::ClientToScreen(m_label.Handle(), &point);
  Press(kNowhere);
  EXPECT_THAT(m_parent.drags,
              ElementsAre(Pair(WPARAM{HTCAPTION}, LPARAM{MAKELPARAM(point.x, point.y)})));
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(CXHTMLStaticTest, MovesTheWholeSheetWhenItStandsOnAPage) {
  const HWND page = ::CreateWindowExW(WS_EX_CONTROLPARENT, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0,
                                      0, 400, 300, m_parent.Handle(), nullptr, nullptr, nullptr);
  Show(L"words", SS_LEFT, page);
  Press(kNowhere);
  EXPECT_EQ(m_parent.drags.size(), 1U);
}

TEST_F(CXHTMLStaticTest, ReportsATargetThatNothingOpens) {
  Show(L"words");
  EXPECT_TRUE(m_label.OpenLink(L"http://x"));
  m_shell.verbResult = false;
  EXPECT_FALSE(m_label.OpenLink(L"http://x"));
  EXPECT_FALSE(m_label.OpenLink(L""));
}

class AppCommandTest : public LabelFixture {
 protected:
  AppCommandTest() { Show(L"<A HREF=\"APP:close\">Close</A>"); }

  [[nodiscard]] AppCommand Command(const wchar_t* name, WPARAM wParam) const {
    return {m_parent.Handle(), LabelParent::kCommand, wParam, name};
  }
};

TEST_F(AppCommandTest, SendsTheMessageOfTheCommand) {
  const AppCommand commands[] = {Command(L"open", 1), Command(L"Close", 2)};
  m_label.SetAppCommands(commands, 2);
  Click(Place(0));
  EXPECT_TRUE(m_label.OpenLink(L"app:OPEN"));
  EXPECT_TRUE(m_label.OpenLink(L"\"App:open\""));
  EXPECT_THAT(m_parent.commands, ElementsAre(Pair(WPARAM{2}, LPARAM{0}), Pair(WPARAM{1}, LPARAM{0}),
                                             Pair(WPARAM{1}, LPARAM{0})));
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(AppCommandTest, DoesNothingWithoutSuchACommand) {
  EXPECT_FALSE(m_label.OpenLink(L"APP:close"));
  const AppCommand commands[] = {Command(L"open", 1)};
  m_label.SetAppCommands(commands, 1);
  EXPECT_FALSE(m_label.OpenLink(L"APP:close"));
  EXPECT_FALSE(m_label.OpenLink(L"APP:"));
  m_label.SetAppCommands(nullptr, 0);
  EXPECT_FALSE(m_label.OpenLink(L"APP:open"));
  EXPECT_THAT(m_parent.commands, IsEmpty());
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(AppCommandTest, TakesTheFirstRowWhoseWindowExists) {
  const HWND gone = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                      nullptr, nullptr);
  AppCommand commands[] = {Command(L"close", 1), Command(L"close", 2), Command(L"close", 3)};
  commands[0].window = gone;
  m_label.SetAppCommands(commands, 3);
  ::DestroyWindow(gone);
  EXPECT_TRUE(m_label.OpenLink(L"APP:close"));
  EXPECT_THAT(m_parent.commands, ElementsAre(Pair(WPARAM{2}, LPARAM{0})));
  commands[1].window = nullptr;
  commands[2].window = gone;
  m_label.SetAppCommands(commands, 3);
  EXPECT_FALSE(m_label.OpenLink(L"APP:close"));
}

TEST_F(AppCommandTest, MayDestroyTheLabel) {
  const AppCommand commands[] = {{m_label.Handle(), WM_CLOSE, 0, L"close"}};
  m_label.SetAppCommands(commands, 1);
  Click(Place(0));
  EXPECT_EQ(m_label.Handle(), nullptr);
}

class LabelKeysTest : public LabelFixture {
 protected:
  // The number of the link with the focus rectangle, counted from 1; 0 for none. On white it has
  // black pixels, which blue letters have not.
  int FocusedLink() {
    m_label.SetTextColor(L"Blue");
    const LabelPicture picture(m_label.Handle());
    for (size_t i = 0; i < m_label.LinkPlaces().size(); ++i) {
      if (picture.Has(m_label.LinkPlaces()[i].place, RGB(0, 0, 0))) {
        return static_cast<int>(i) + 1;
      }
    }
    return 0;
  }
};

TEST_F(LabelKeysTest, StopsTheTabKeyAtEachLink) {
  Show(kThreeLinks);
  ::SetFocus(m_before);
  EXPECT_EQ(FocusedLink(), 0);
  for (int link = 1; link <= 3; ++link) {
    PressKey(VK_TAB);
    EXPECT_EQ(::GetFocus(), m_label.Handle());
    EXPECT_EQ(FocusedLink(), link);
  }
  PressKey(VK_TAB);
  EXPECT_EQ(::GetFocus(), m_after);
  EXPECT_EQ(FocusedLink(), 0);
}

TEST_F(LabelKeysTest, GoesBackFromTheLastLink) {
  Show(kThreeLinks);
  ::SetFocus(m_after);
  for (int link = 3; link >= 1; --link) {
    PressShiftTab();
    EXPECT_EQ(::GetFocus(), m_label.Handle());
    EXPECT_EQ(FocusedLink(), link);
  }
  PressShiftTab();
  EXPECT_EQ(::GetFocus(), m_before);
}

TEST_F(LabelKeysTest, PassesALabelWithoutLinks) {
  Show(L"words <A HREF=x></A>");
  ::SetFocus(m_before);
  PressKey(VK_TAB);
  EXPECT_EQ(::GetFocus(), m_after);
  m_label.SetText(kThreeLinks);
  PressShiftTab();
  EXPECT_EQ(::GetFocus(), m_label.Handle());
  m_label.SetText(L"words");
  ::SetFocus(m_before);
  PressKey(VK_TAB);
  EXPECT_EQ(::GetFocus(), m_after);
}

// Each "&" would be a shortcut to the control after the label, as it is in other static texts.
TEST_F(LabelKeysTest, HasNoShortcutsThoughItsTextHasEntities) {
  Show(L"&copy; by us");
  ::SetFocus(m_before);
  MSG message = {};
  message.hwnd = m_before;
  message.message = WM_SYSCHAR;
  message.wParam = L'c';
  message.lParam = 0x20000001;  // with Alt
  ::IsDialogMessageW(m_parent.Handle(), &message);
  Pump();
  EXPECT_EQ(m_parent.shortcuts, 0);
  EXPECT_EQ(::GetFocus(), m_before);
}

TEST_F(LabelKeysTest, OpensTheFocusedLinkByEnterAndByTheBlank) {
  Show(kThreeLinks);
  ::SetFocus(m_before);
  PressKey(VK_TAB);
  PressKey(VK_RETURN);
  PressKey(VK_TAB);
  PressKey(VK_SPACE);
  EXPECT_THAT(m_shell.actions, ElementsAre(L"open http://one", L"open http://two"));
  EXPECT_EQ(m_parent.pressedButtons, 0);
}

TEST_F(LabelKeysTest, OpensALinkOnceWhileTheKeyIsHeld) {
  Show(kThreeLinks);
  ::SetFocus(m_label.Handle());
  PressKey(VK_RETURN);
  PressKey(VK_RETURN, 0x40000001);
  PressKey(VK_SPACE, 0x40000001);
  EXPECT_EQ(m_shell.actions.size(), 1U);
}

TEST_F(LabelKeysTest, FocusesTheLinkThatIsClicked) {
  Show(kThreeLinks);
  Click(Place(1));
  EXPECT_EQ(::GetFocus(), m_label.Handle());
  EXPECT_EQ(FocusedLink(), 2);
  PressKey(VK_TAB);
  EXPECT_EQ(FocusedLink(), 3);
}

TEST_F(LabelKeysTest, KeepsItsFocusedLinkWhileAnotherWindowIsActive) {
  Show(kThreeLinks);
  Click(Place(1));
  m_label.Send(WM_KILLFOCUS, 0);
  m_label.Send(WM_SETFOCUS, 0);
  EXPECT_EQ(FocusedLink(), 2);
}

TEST_F(LabelKeysTest, StartsAtTheFirstLinkOfANewText) {
  Show(kThreeLinks);
  Click(Place(2));
  m_label.SetText(L"<A HREF=http://other>other</A>");
  EXPECT_EQ(FocusedLink(), 1);
  m_label.SetText(L"words");
  PressKey(VK_RETURN);
  EXPECT_EQ(m_shell.actions.size(), 1U);
}

TEST_F(LabelKeysTest, ShowsTheFocusOnAllPiecesOfALink) {
  Show(L"<A HREF=x>one<BR>two</A>");
  m_label.SetTextColor(L"Blue");
  ::SetFocus(m_label.Handle());
  const LabelPicture picture(m_label.Handle());
  for (const LabelLinkPlace& link : m_label.LinkPlaces()) {
    EXPECT_TRUE(picture.Has(link.place, RGB(0, 0, 0)));
  }
}

}  // namespace
}  // namespace postmarker::test
