#include "controls/CGridCtrl_win.h"

#include <gmock/gmock.h>

#include "controls/TestGrid_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

TEST_F(CGridCtrlTest, AttachTakesAWindowOnceAndNoOtherOnesWindow) {
  EXPECT_TRUE(m_grid.Attach(m_grid.Handle()));
  EXPECT_FALSE(m_grid.Attach(nullptr));
  EXPECT_FALSE(m_grid.Attach(m_parent.Handle()));
  EXPECT_FALSE(TestGrid().Attach(m_grid.Handle()));
}

// ---- Column state

TEST_F(CGridCtrlTest, ColumnStateTellsOrderSortColumnPlacesAndWidths) {
  EXPECT_EQ(State(), L"N,0;0,60;1,60;2,60;3,60;4,60;5,60");
  m_grid.SetColumnOrder({1, 0, 2, 3, 4, 5});
  m_grid.SetColumnWidth(0, 33);
  EXPECT_EQ(State(), L"N,0;1,33;0,60;2,60;3,60;4,60;5,60");
}

TEST_F(CGridCtrlTest, ColumnStateIsTakenOver) {
  const std::wstring state = L"D,2;5,10;4,20;3,30;2,40;1,50;0,60";
  EXPECT_TRUE(m_grid.SetColumnState(state, 0, false));
  EXPECT_EQ(State(), state);
  EXPECT_THAT(m_grid.ColumnOrder(), ElementsAre(5, 4, 3, 2, 1, 0));
  EXPECT_THAT(Texts(kText), ElementsAre(L"anna", L"bert", L"Carl", L"dora", L"Emil", L"bernd"))
      << "not sorted unless asked to";
}

TEST_F(CGridCtrlTest, ColumnStateWithResortSortsTheRows) {
  EXPECT_TRUE(m_grid.SetColumnState(L"A,0;0,60;1,60;2,60;3,60;4,60;5,60", 0, true));
  EXPECT_THAT(Texts(kText), ElementsAre(L"Carl", L"Emil", L"anna", L"bernd", L"bert", L"dora"));
}

TEST_F(CGridCtrlTest, WidthBelowTheLeastIsRaised) {
  EXPECT_TRUE(m_grid.SetColumnState(L"N,0;0,5;1,60;2,0;3,60;4,60;5,60", 10, false));
  EXPECT_EQ(State(), L"N,0;0,10;1,60;2,10;3,60;4,60;5,60");
  EXPECT_TRUE(m_grid.SetColumnState(L"N,0;0,5;1,60;2,60;3,60;4,60;5,60", 0, false));
  EXPECT_EQ(State(), L"N,0;0,5;1,60;2,60;3,60;4,60;5,60");
}

TEST_F(CGridCtrlTest, ColumnStateOfOtherColumnsIsRefusedAsAWhole) {
  const std::wstring before = State();
  for (const wchar_t* const text : {L"A,9", L"A,9;0,60;1,60;2,60;3,60;4,60;5,60",
                                    L"A,0;0,100000;1,60;2,60;3,60;4,60;5,60", L"A,0;0,10", L""}) {
    EXPECT_FALSE(m_grid.SetColumnState(text, 10, true)) << testing::PrintToString(text);
    EXPECT_EQ(State(), before);
  }
}

TEST_F(CGridCtrlTest, StateAWithSortColumnNineOnTwoColumnsIsRefused) {
  while (m_grid.ColumnCount() > 2) {
    m_grid.Send(LVM_DELETECOLUMN, 2);
  }
  EXPECT_FALSE(m_grid.SetColumnState(L"A,9", 0, true));
  EXPECT_FALSE(m_grid.SetColumnState(L"A,9;0,10;1,10", 0, true));
  EXPECT_EQ(State(), L"N,0;0,60;1,60");
}

TEST_F(CGridCtrlTest, GridWithoutColumnsHasNoColumnState) {
  while (m_grid.ColumnCount() > 0) {
    m_grid.Send(LVM_DELETECOLUMN, 0);
  }
  EXPECT_EQ(State(), L"");
  EXPECT_FALSE(m_grid.SetColumnState(L"N,0;0,1", 0, true));
}

// ---- Sorting

TEST_F(CGridCtrlTest, ClickOnAHeadingSortsOnlyWhereSortingIsOn) {
  ClickHeading(kText);
  EXPECT_EQ(Texts(kText).front(), L"anna");
  EXPECT_EQ(State().front(), L'N');
}

TEST_F(CGridCtrlTest, ClicksOnAHeadingStepThroughTheOrders) {
  m_grid.SetSortable(true);
  ClickHeading(kText);
  EXPECT_EQ(State().front(), L'A');
  EXPECT_THAT(Texts(kText), ElementsAre(L"Carl", L"Emil", L"anna", L"bernd", L"bert", L"dora"))
      << "capital letters first: case counts";
  ClickHeading(kText);
  EXPECT_EQ(State().front(), L'D');
  EXPECT_THAT(Texts(kText), ElementsAre(L"dora", L"bert", L"bernd", L"anna", L"Emil", L"Carl"));
  ClickHeading(kText);
  EXPECT_EQ(State().front(), L'N');
  EXPECT_THAT(Texts(kText), ElementsAre(L"dora", L"bert", L"bernd", L"anna", L"Emil", L"Carl"))
      << "any order but ascending swaps the rows compared";
}

TEST_F(CGridCtrlTest, UnsortableColumnIsLeftAlone) {
  m_grid.SetSortable(true);
  m_grid.SetUnsortableColumns({kText});
  ClickHeading(kText);
  EXPECT_EQ(Texts(kText).front(), L"anna");
  EXPECT_EQ(State().front(), L'N');
  ClickHeading(kChoice);
  EXPECT_EQ(State().substr(0, 3), L"A,2");
}

TEST_F(CGridCtrlTest, SortingKeepsNumbersSelectionAndFocusOfTheRows) {
  Select({0, 3});
  m_grid.SetCellFocus(2, kChoice, false);
  m_grid.SetColumnState(L"A,0;0,60;1,60;2,60;3,60;4,60;5,60", 0, true);
  // Carl Emil anna bernd bert dora
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(2, 5));
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, kChoice}));
  EXPECT_EQ(m_grid.NextItem(-1, LVNI_FOCUSED), 0);
  std::vector<LPARAM> data;
  data.reserve(6);
  for (int row = 0; row < 6; ++row) {
    data.push_back(m_grid.ItemData(row));
  }
  EXPECT_THAT(data, ElementsAre(102, 104, 100, 105, 101, 103));
}

TEST_F(CGridCtrlTest, RowsThatCompareEqualKeepTheirOrder) {
  m_grid.SetColumnState(L"A,2;0,60;1,60;2,60;3,60;4,60;5,60", 0, true);
  EXPECT_THAT(Texts(kText), ElementsAre(L"anna", L"bert", L"Carl", L"dora", L"Emil", L"bernd"));
}

// ---- Places

TEST_F(CGridCtrlTest, HitTestFindsCellsInTheirDisplayOrder) {
  m_grid.SetColumnOrder({2, 0, 1, 3, 4, 5});
  const RECT cell = m_grid.CellRectangle(1, 2);
  EXPECT_EQ(cell.left, m_grid.CellRectangle(0, 2).left);
  EXPECT_LT(cell.left, m_grid.CellRectangle(1, 0).left);
  int row = -5;
  int col = -5;
  RECT rect = {};
  EXPECT_TRUE(m_grid.HitTest({cell.left + 1, cell.top + 1}, &row, &col, &rect));
  EXPECT_EQ(row, 1);
  EXPECT_EQ(col, 2);
  EXPECT_TRUE(::EqualRect(&rect, &cell));
  EXPECT_FALSE(m_grid.HitTest({cell.left + 1, 190}, &row, &col, nullptr));
  EXPECT_EQ(row, -1);
  EXPECT_EQ(col, -1);
}

TEST_F(CGridCtrlTest, CellThatDoesNotExistHasNoPlace) {
  for (const GridCell cell : {GridCell{-1, 0}, {0, -1}, {6, 0}, {0, kColumns}}) {
    const RECT rect = m_grid.CellRectangle(cell.row, cell.col);
    EXPECT_TRUE(::IsRectEmpty(&rect));
  }
}

TEST_F(CGridCtrlTest, RowsAreAsHighAsTold) {
  for (const int height : {22, 40, 91}) {
    m_grid.SetRowHeight(height);
    const RECT rect = m_grid.CellRectangle(0, 0);
    EXPECT_EQ(rect.bottom - rect.top, height);
  }
}

TEST_F(CGridCtrlTest, FocusCellOutsideTheGridIsNone) {
  m_grid.SetCellFocus(2, 1, true);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{2, 1}));
  m_grid.SetCellFocus(2, kColumns, true);
  EXPECT_TRUE(m_grid.FocusCell().IsNone());
}

TEST_F(CGridCtrlTest, FocusCellBeyondTheEdgeIsScrolledIntoView) {
  for (int row = 6; row < 60; ++row) {
    m_grid.InsertItem(row, L"more");
  }
  for (int col = 0; col < kColumns; ++col) {
    m_grid.SetColumnWidth(col, 150);
  }
  m_grid.SetCellFocus(59, 5, true);
  RECT client = {};
  ::GetClientRect(m_grid.Handle(), &client);
  RECT cell = m_grid.CellRectangle(59, 5);
  EXPECT_LE(cell.bottom, client.bottom);
  EXPECT_LE(cell.right, client.right);
  EXPECT_GE(cell.left, 0);
  m_grid.SetCellFocus(0, 0, true);
  cell = m_grid.CellRectangle(0, 0);
  EXPECT_EQ(cell.left, 0);
}

TEST_F(CGridCtrlTest, RowsThatComeAndGoTakeTheFocusCellAlong) {
  m_grid.SetCellFocus(3, 1, false);
  m_grid.InsertItem(0, L"first");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{4, 1}));
  m_grid.DeleteItem(1);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{3, 1}));
  m_grid.DeleteItem(5);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{3, 1}));
  m_grid.DeleteAllItems();
  EXPECT_TRUE(m_grid.FocusCell().IsNone());
}

// ---- Mouse and keys

TEST_F(CGridCtrlTest, PressMovesTheFocusCellAndActsOnIt) {
  Click(m_grid, 2, kButton);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{2, kButton}));
  EXPECT_THAT(m_grid.clicked, ElementsAre(GridCell{2, kButton}));
  EXPECT_EQ(m_grid.editCellInClick, (GridCell{2, kButton}));
  EXPECT_TRUE(m_grid.EditCell().IsNone()) << "there is no editor";
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(2)) << "the list view's own work goes on";
}

TEST_F(CGridCtrlTest, PressWithControlOrShiftOnlyMovesTheFocusAndSelects) {
  Click(m_grid, 1, kNothing);
  Click(m_grid, 3, kText, MK_SHIFT);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{3, kText}));
  Click(m_grid, 0, kButton, MK_CONTROL);
  EXPECT_TRUE(m_grid.clicked.empty());
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, kButton}));
}

TEST_F(CGridCtrlTest, DisabledGridActsOnNoCell) {
  ::EnableWindow(m_grid.Handle(), FALSE);
  m_grid.ActOnCell(1, kButton, nullptr);
  m_grid.ActOnCell(1, kText, nullptr);
  EXPECT_TRUE(m_grid.clicked.empty());
  EXPECT_FALSE(m_grid.IsEditing());
}

TEST_F(CGridCtrlTest, CellThatDoesNotExistIsNotActedOn) {
  for (const GridCell cell : {GridCell{-1, kButton}, {1, -1}, {6, kButton}, {1, kColumns}}) {
    m_grid.ActOnCell(cell.row, cell.col, nullptr);
  }
  EXPECT_TRUE(m_grid.clicked.empty());
}

TEST_F(CGridCtrlTest, ListInAnotherViewThanTheReportActsOnNoCell) {
  const LONG_PTR style = ::GetWindowLongPtrW(m_grid.Handle(), GWL_STYLE);
  ::SetWindowLongPtrW(m_grid.Handle(), GWL_STYLE, (style & ~LVS_TYPEMASK) | LVS_LIST);
  m_grid.ActOnCell(1, kButton, nullptr);
  EXPECT_TRUE(m_grid.clicked.empty());
}

TEST_F(CGridCtrlTest, BlankActsOnTheFocusCell) {
  m_grid.SetCellFocus(1, kTick, true);
  PressKey(VK_SPACE);
  EXPECT_THAT(m_grid.checked, ElementsAre(GridCell{1, kTick}));
  m_grid.SetCellFocus(1, kText, true);
  PressKey(VK_SPACE);
  EXPECT_TRUE(m_grid.IsEditing());
}

TEST_F(CGridCtrlTest, ArrowKeysMoveTheFocusCell) {
  m_grid.SetCellFocus(0, 0, true, true);
  PressKey(VK_DOWN);
  PressKey(VK_RIGHT);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{1, 1}));
  PressKey(VK_UP);
  PressKey(VK_LEFT);
  PressKey(VK_LEFT);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, 0}));
  PressKey(VK_END);
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{5, 0}));
}

TEST_F(CGridCtrlTest, GridThatGetsTheFocusHasAFocusCell) {
  ::SetFocus(m_other);
  m_grid.SetCellFocus(-1, -1, false);
  ::SetFocus(m_grid.Handle());
  EXPECT_FALSE(m_grid.FocusCell().IsNone());
}

TEST_F(CGridCtrlTest, HoverCellFollowsTheMouseWhereItIsTracked) {
  const RECT cell = m_grid.CellRectangle(1, kTick);
  const LPARAM place = MAKELPARAM(cell.left + 2, cell.top + 2);
  m_grid.Send(WM_MOUSEMOVE, 0, place);
  EXPECT_TRUE(m_grid.HoverCell().IsNone());
  m_grid.SetTrackHover(true);
  m_grid.Send(WM_MOUSEMOVE, 0, place);
  m_grid.Send(WM_MOUSEMOVE, 0, place);
  EXPECT_EQ(m_grid.HoverCell(), (GridCell{1, kTick}));
  m_grid.Send(WM_MOUSELEAVE);
  EXPECT_TRUE(m_grid.HoverCell().IsNone());
  EXPECT_THAT(m_grid.hovers, ElementsAre(std::pair(GridCell(), GridCell{1, kTick}),
                                         std::pair(GridCell{1, kTick}, GridCell())));
}

TEST_F(CGridCtrlTest, DialogLeavesArrowsAndCharactersToTheGrid) {
  const LRESULT code = m_grid.Send(WM_GETDLGCODE);
  EXPECT_NE(code & DLGC_WANTARROWS, 0);
  EXPECT_NE(code & DLGC_WANTCHARS, 0);
  EXPECT_EQ(code & DLGC_WANTALLKEYS, 0) << "Return is the dialog's";
}

// ---- Check boxes

TEST_F(CGridCtrlTest, CheckingOneOfSeveralSelectedRowsChecksThoseOfTheSameKindOnly) {
  Select({0, 1, 2, 3, 4});
  Click(m_grid, 2, kTick);
  EXPECT_THAT(m_grid.checked,
              UnorderedElementsAre(GridCell{0, kTick}, GridCell{2, kTick}, GridCell{4, kTick}));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(CGridCtrlTest, CheckingARowOutsideTheSelectionChecksThatRowAlone) {
  Select({0, 2});
  Click(m_grid, 4, kTick);
  EXPECT_THAT(m_grid.checked, ElementsAre(GridCell{4, kTick}));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(4));
}

// ---- Search

TEST_F(CGridCtrlTest, TypingMovesTheFocusToTheCellThatHasTheText) {
  m_grid.SetCellFocus(0, kText, false);
  Type(L"ER");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{1, kText}));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(1));
  Type(L"n");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{5, kText}));
  EXPECT_EQ(m_grid.SearchedText(), L"ERn");
  Type(L"\b\b");
  EXPECT_EQ(m_grid.SearchedText(), L"E");
}

TEST_F(CGridCtrlTest, SearchComparesAsToldTo) {
  SearchOptions options;
  options.mode = SearchMode::kFocusColumn;
  options.caseSensitive = true;
  options.anywhere = false;
  m_grid.SetSearch(options, true, 2500);
  m_grid.SetCellFocus(0, kText, false);
  Type(L"c");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, kText}));
  Type(L"\bC");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{2, kText}));
}

TEST_F(CGridCtrlTest, BlankDuringASearchIsPartOfIt) {
  m_grid.SetItemText(4, kNothing, L"two words");
  m_grid.SetCellFocus(0, kButton, false);
  Type(L"two ");
  EXPECT_TRUE(m_grid.clicked.empty());
  EXPECT_EQ(m_grid.SearchedText(), L"two ");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{4, kNothing}));
}

TEST_F(CGridCtrlTest, SearchEndsByItsTimer) {
  m_grid.SetSearch({}, true, 20);
  Type(L"be");
  EXPECT_EQ(m_grid.SearchedText(), L"be");
  EXPECT_TRUE(PumpUntil([this] { return m_grid.SearchedText().empty(); }));
}

TEST_F(CGridCtrlTest, SearchedTextIsShownInATipBelowTheCell) {
  m_grid.SetCellFocus(0, kText, false);
  Type(L"be");
  HWND tip = nullptr;
  while ((tip = ::FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr)) != nullptr &&
         (!::IsWindowVisible(tip) || ::GetWindow(tip, GW_OWNER) != m_parent.Handle())) {
  }
  ASSERT_NE(tip, nullptr);
  wchar_t text[300] = {};
  TTTOOLINFOW info = {};
  info.cbSize = TTTOOLINFOW_V2_SIZE;
  info.hwnd = m_grid.Handle();
  info.uId = reinterpret_cast<UINT_PTR>(m_grid.Handle());
  info.lpszText = text;
  ::SendMessageW(tip, TTM_GETTEXTW, 0, reinterpret_cast<LPARAM>(&info));
  EXPECT_STREQ(text, L"be|");
  RECT cell = m_grid.CellRectangle(1, kText);
  ::MapWindowPoints(m_grid.Handle(), nullptr, reinterpret_cast<POINT*>(&cell), 2);
  RECT place = {};
  ::GetWindowRect(tip, &place);
  EXPECT_NEAR(place.left, cell.right + 5, 3);
  EXPECT_NEAR(place.top, cell.bottom + 5, 3);
  ::SetFocus(m_other);
  EXPECT_FALSE(::IsWindowVisible(tip));
}

// ---- Drawing and names

TEST_F(CGridCtrlTest, RowsAreDrawnByTheGrid) {
  m_parent.drawn = 0;
  ::InvalidateRect(m_grid.Handle(), nullptr, TRUE);
  ::UpdateWindow(m_grid.Handle());
  EXPECT_GE(m_parent.drawn, 6);
}

TEST_F(CGridCtrlTest, AccessibleNameIsTheWindowsText) {
  m_grid.SetAccessibleName(L"Things");
  EXPECT_EQ(WindowText(m_grid.Handle()), L"Things");
}

TEST_F(CGridCtrlTest, DrawingForAnotherControlIsLeftAlone) {
  DRAWITEMSTRUCT draw = {};
  draw.hwndItem = m_other;
  EXPECT_EQ(m_grid.DrawItem({WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&draw)}), 0);
  MEASUREITEMSTRUCT measure = {};
  measure.CtlID = 1;
  EXPECT_EQ(m_grid.MeasureItem({WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measure)}), 0);
}

}  // namespace
}  // namespace postmarker::test
