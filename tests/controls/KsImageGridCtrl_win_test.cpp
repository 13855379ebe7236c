#include "controls/KsImageGridCtrl_win.h"

#include <gmock/gmock.h>

#include <thread>

#include "controls/GridFixture_win.h"
#include "support/WindowPixels_win.h"

namespace postmarker::test {
namespace {

// Of the texts, if the person has chosen no colors.
constexpr uint32_t kBlack = 0x000000;
constexpr uint32_t kGray = 0x606060;

class KsImageGridCtrlTest : public GridFixture {
 protected:
  KsImageGridCtrlTest() {
    Show(&m_grid, LVS_SINGLESEL | LVS_NOCOLUMNHEADER);
    EXPECT_TRUE(m_grid.Initialise(125));
    ::SetFocus(m_other);
  }
  // Three columns fit into the window: two rows.
  void AddFive() {
    const HICON icon = ::LoadIconW(nullptr, MAKEINTRESOURCEW(32512));
    m_grid.AddEntry(L"Alpha", L"", icon, true);
    m_grid.AddEntry(L"Beta", L"Not found", icon, false);
    m_grid.AddEntry(L"Gamma", L"", nullptr, true);
    m_grid.AddEntry(L"Delta", L"", icon, true);
    m_grid.AddEntry(L"Epsilon", L"Not ready", icon, false);
    m_parent.activities = 0;
    m_parent.itemChanges.clear();
  }

  KsImageGridCtrl m_grid;
};

TEST_F(KsImageGridCtrlTest, MakesTheColumnsThatFitBesideTheScrollBar) {
  RECT client = {};
  ::GetClientRect(m_grid.Handle(), &client);
  const int room = client.right - ::GetSystemMetrics(SM_CXVSCROLL);
  EXPECT_EQ(m_grid.ColumnCount(), room / 125);
  std::wstring state;
  m_grid.GetColumnState(&state);
  EXPECT_EQ(state, L"N,0;0,125;1,125;2,125");
}

TEST_F(KsImageGridCtrlTest, OneColumnIsLeftWhereNoneFits) {
  EXPECT_TRUE(m_grid.Initialise(1000));
  EXPECT_EQ(m_grid.ColumnCount(), 1);
  EXPECT_EQ(m_grid.ColumnWidth(0), 1000);
}

TEST_F(KsImageGridCtrlTest, ColumnsAreAtLeastTenPixelsWide) {
  EXPECT_TRUE(m_grid.Initialise(4));
  EXPECT_EQ(m_grid.ColumnWidth(0), 10);
}

TEST_F(KsImageGridCtrlTest, EntriesFillTheColumnsOfARowFirst) {
  AddFive();
  EXPECT_EQ(m_grid.EntryCount(), 5);
  EXPECT_EQ(m_grid.ItemCount(), 2);
  EXPECT_EQ(m_grid.ItemText(0, 0), L"Alpha");
  EXPECT_EQ(m_grid.ItemText(0, 1), L"Beta, Not found");
  EXPECT_EQ(m_grid.ItemText(1, 0), L"Delta");
  EXPECT_EQ(m_grid.ItemText(1, 2), L"");
}

TEST_F(KsImageGridCtrlTest, EntriesStayWhenTheColumnsAreMadeAnew) {
  AddFive();
  EXPECT_TRUE(m_grid.Initialise(190));
  EXPECT_EQ(m_grid.ColumnCount(), 2);
  EXPECT_EQ(m_grid.ItemCount(), 3);
  EXPECT_EQ(m_grid.ItemText(2, 0), L"Epsilon, Not ready");
}

TEST_F(KsImageGridCtrlTest, NameOfATileIsBlack) {
  m_grid.AddEntry(L"Alpha", L"", nullptr, true);
  EXPECT_TRUE(PumpUntil([this] { return PixelsOf(m_grid.Handle(), kBlack) > 0; }));
}

TEST_F(KsImageGridCtrlTest, TextsOfATileThatCannotBeChosenAreGray) {
  m_grid.AddEntry(L"Beta", L"Not found", nullptr, false);
  EXPECT_TRUE(PumpUntil([this] { return PixelsOf(m_grid.Handle(), kGray) > 0; }));
  EXPECT_EQ(PixelsOf(m_grid.Handle(), kBlack), 0U);
}

TEST_F(KsImageGridCtrlTest, NothingIsSelectedAtFirst) {
  AddFive();
  EXPECT_EQ(m_grid.SelectedEntry(), -1);
  EXPECT_EQ(m_grid.SelectedText(), L"");
}

TEST_F(KsImageGridCtrlTest, SelectedEntryGivesItsName) {
  AddFive();
  m_grid.SelectEntry(3);
  EXPECT_EQ(m_grid.SelectedEntry(), 3);
  EXPECT_EQ(m_grid.SelectedText(), L"Delta");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{1, 0}));
  m_grid.SelectEntry(-1);
  EXPECT_EQ(m_grid.SelectedText(), L"");
  m_grid.SelectEntry(5);
  EXPECT_EQ(m_grid.SelectedEntry(), -1) << "there is no such entry";
}

TEST_F(KsImageGridCtrlTest, DisabledEntryCanBeSelectedButGivesNoText) {
  AddFive();
  m_grid.SelectEntry(1);
  EXPECT_EQ(m_grid.SelectedEntry(), 1);
  EXPECT_EQ(m_grid.SelectedText(), L"");
}

TEST_F(KsImageGridCtrlTest, ClickSelectsAndTellsTheParent) {
  AddFive();
  Click(m_grid, 1, 0);
  EXPECT_EQ(m_grid.SelectedText(), L"Delta");
  EXPECT_GE(m_parent.activities, 1);
  EXPECT_FALSE(m_parent.itemChanges.empty());
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(KsImageGridCtrlTest, ClickBesideTheTilesKeepsTheSelection) {
  AddFive();
  m_grid.SelectEntry(2);
  Click(m_grid, 1, 2);
  EXPECT_EQ(m_grid.SelectedEntry(), -1 + 3);
  ::PostMessageW(m_grid.Handle(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(415, 190));
  Pump();
  EXPECT_EQ(m_grid.SelectedEntry(), 2);
}

TEST_F(KsImageGridCtrlTest, ArrowKeysSelectInReadingOrder) {
  AddFive();
  ::SetFocus(m_grid.Handle());
  m_grid.SelectEntry(0);
  PressKey(VK_RIGHT);
  EXPECT_EQ(m_grid.SelectedEntry(), 1) << "a disabled one can be read as well";
  PressKey(VK_RIGHT);
  PressKey(VK_RIGHT);
  EXPECT_EQ(m_grid.SelectedEntry(), 3);
  PressKey(VK_UP);
  EXPECT_EQ(m_grid.SelectedEntry(), 0);
  PressKey(VK_DOWN);
  EXPECT_EQ(m_grid.SelectedEntry(), 3);
  PressKey(VK_END);
  EXPECT_EQ(m_grid.SelectedEntry(), 4);
  PressKey(VK_HOME);
  EXPECT_EQ(m_grid.SelectedText(), L"Alpha");
  EXPECT_GE(m_parent.activities, 7);
}

TEST_F(KsImageGridCtrlTest, TabIntoTheGridSelectsNothingUntilABlankDoes) {
  AddFive();
  ::SetFocus(m_grid.Handle());
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, 0}));
  EXPECT_EQ(m_grid.SelectedEntry(), -1);
  PressKey(VK_SPACE);
  EXPECT_EQ(m_grid.SelectedText(), L"Alpha");
}

TEST_F(KsImageGridCtrlTest, FirstEntryOfAGridWithTheFocusGetsTheFocusFrame) {
  ::SetFocus(m_grid.Handle());
  AddFive();
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, 0}));
  EXPECT_EQ(m_grid.SelectedEntry(), -1);
}

TEST_F(KsImageGridCtrlTest, TypingTheBeginningOfANameSelectsIt) {
  AddFive();
  ::SetFocus(m_grid.Handle());
  Type(L"ga");
  EXPECT_EQ(m_grid.SelectedText(), L"Gamma");
  Type(L"\b\bpha");
  EXPECT_EQ(m_grid.SelectedText(), L"Gamma") << "not inside of a name";
}

TEST_F(KsImageGridCtrlTest, DisabledGridKeepsItsSelection) {
  AddFive();
  m_grid.SelectEntry(2);
  ::EnableWindow(m_grid.Handle(), FALSE);
  m_grid.ActOnCell(0, 0, nullptr);
  EXPECT_EQ(m_grid.SelectedText(), L"Gamma");
}

TEST_F(KsImageGridCtrlTest, ScrollingTellsTheParent) {
  AddFive();
  m_grid.Send(WM_VSCROLL, SB_LINEDOWN);
  EXPECT_EQ(m_parent.activities, 1);
}

TEST_F(KsImageGridCtrlTest, RowsGrowWithThePictures) {
  const RECT before = [this] {
    m_grid.AddEntry(L"small", L"", nullptr, true);
    return m_grid.CellRectangle(0, 0);
  }();
  const std::vector<BYTE> mask(64 * 64 / 8, 0xFF);
  const std::vector<BYTE> color(64 * 64 / 8, 0);
  const IconHandle icon(::CreateIcon(nullptr, 64, 64, 1, 1, mask.data(), color.data()));
  m_grid.AddEntry(L"large", L"", icon.Get(), true);
  const RECT after = m_grid.CellRectangle(0, 0);
  EXPECT_EQ(after.bottom - after.top, before.bottom - before.top + 32);
}

TEST_F(KsImageGridCtrlTest, OtherThreadsMayAddEntries) {
  std::thread adding([this] {
    for (int i = 0; i < 20; ++i) {
      m_grid.AddEntry(L"entry", L"", nullptr, true);
    }
  });
  EXPECT_TRUE(PumpUntil([this] { return m_grid.EntryCount() == 20; }));
  EXPECT_TRUE(PumpUntil([this] { return m_grid.ItemText(6, 1) == L"entry"; }));
  adding.join();
}

TEST_F(KsImageGridCtrlTest, EveryTileIsDrawnInEachState) {
  AddFive();
  ::SetFocus(m_grid.Handle());
  for (int entry = -1; entry < 5; ++entry) {
    m_grid.SelectEntry(entry);
    ::InvalidateRect(m_grid.Handle(), nullptr, TRUE);
    m_parent.drawn = 0;
    ::UpdateWindow(m_grid.Handle());
    EXPECT_EQ(m_parent.drawn, 2);
  }
}

}  // namespace
}  // namespace postmarker::test
