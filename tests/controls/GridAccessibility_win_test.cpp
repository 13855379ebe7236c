// What programs for the blind read of grids, through the platform's accessibility interface.
#include <windows.h>

#include <gtest/gtest.h>
#include <oleacc.h>

#include "controls/GridFixture_win.h"
#include "controls/KsEmailAddressGridCtrl_win.h"
#include "controls/KsImageGridCtrl_win.h"
#include "support/ComPtr_win.h"
#include "support/Variant_win.h"
#include "support/WinEvents_win.h"

namespace postmarker::test {
namespace {

class GridAccessibilityTest : public GridFixture {
 protected:
  static ComPtr<IAccessible> Accessible(HWND window) {
    ComPtr<IAccessible> accessible;
    ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                 accessible.PutVoid());
    return accessible;
  }
  static std::wstring NameOf(HWND window) {
    const ComPtr<IAccessible> accessible = Accessible(window);
    Bstr name;
    if (accessible) {
      accessible->get_accName(NumberVariant(CHILDID_SELF), name.Put());
    }
    return name ? name.Get() : L"";
  }

  ComApartment m_apartment;
};

class EmailGrid : public KsEmailAddressGridCtrl {
 public:
  using CGridCtrl::Editor;
};

TEST_F(GridAccessibilityTest, AddressGridAndItsEditorHaveNames) {
  EmailGrid grid;
  Show(&grid);
  grid.Initialise(180, 22, {L"Address", L"Domain", L"", L"", L"Good addresses", L"", L"", L""});
  grid.AddAddress(L"a@b.org");
  ::SetFocus(grid.Handle());
  EXPECT_EQ(NameOf(grid.Handle()), L"Good addresses");
  grid.ActOnCell(0, 0, nullptr);
  ASSERT_TRUE(grid.IsEditing());
  EXPECT_EQ(NameOf(grid.Editor()), L"Address");
  grid.EndEdit(false);
}

class TilesAccessibilityTest : public GridAccessibilityTest {
 protected:
  TilesAccessibilityTest() {
    Show(&m_grid, LVS_SINGLESEL | LVS_NOCOLUMNHEADER);
    m_grid.Initialise(125);
    m_grid.SetAccessibleName(L"Mail programs");
    m_grid.AddEntry(L"Alpha", L"", nullptr, true);
    m_grid.AddEntry(L"Beta", L"Not found", nullptr, false);
    m_grid.AddEntry(L"Gamma", L"", nullptr, true);
    m_grid.AddEntry(L"Delta", L"", nullptr, true);
    ::SetFocus(m_grid.Handle());
    m_grid.SelectEntry(1);
    m_accessible = Accessible(m_grid.Handle());
  }
  [[nodiscard]] std::wstring Name(LONG id) const {
    Bstr name;
    m_accessible->get_accName(NumberVariant(id), name.Put());
    return name ? name.Get() : L"";
  }
  [[nodiscard]] LONG State(LONG id) const {
    VARIANT state = {};
    EXPECT_EQ(m_accessible->get_accState(NumberVariant(id), &state), S_OK);
    return state.lVal;
  }

  KsImageGridCtrl m_grid;
  ComPtr<IAccessible> m_accessible;
};

TEST_F(TilesAccessibilityTest, GridIsAListWithAnItemForEachTile) {
  ASSERT_TRUE(m_accessible);
  LONG count = 0;
  EXPECT_EQ(m_accessible->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(Name(CHILDID_SELF), L"Mail programs");
  EXPECT_EQ(Name(1), L"Alpha");
  EXPECT_EQ(Name(2), L"Beta, Not found");
  EXPECT_EQ(Name(5), L"");
  VARIANT role = {};
  EXPECT_EQ(m_accessible->get_accRole(NumberVariant(CHILDID_SELF), &role), S_OK);
  EXPECT_EQ(role.lVal, ROLE_SYSTEM_LIST);
  EXPECT_EQ(m_accessible->get_accRole(NumberVariant(4), &role), S_OK);
  EXPECT_EQ(role.lVal, ROLE_SYSTEM_LISTITEM);
}

TEST_F(TilesAccessibilityTest, StatesTellSelectionFocusAndWhatCanNotBeChosen) {
  ASSERT_TRUE(m_accessible);
  constexpr LONG kBase = STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_FOCUSABLE;
  EXPECT_EQ(State(1), kBase);
  EXPECT_EQ(State(2),
            kBase | STATE_SYSTEM_UNAVAILABLE | STATE_SYSTEM_SELECTED | STATE_SYSTEM_FOCUSED);
  VARIANT found = {};
  EXPECT_EQ(m_accessible->get_accFocus(&found), S_OK);
  EXPECT_EQ(found.lVal, 2);
  EXPECT_EQ(m_accessible->get_accSelection(&found), S_OK);
  EXPECT_EQ(found.lVal, 2);
  VARIANT state = {};
  EXPECT_EQ(m_accessible->get_accState(NumberVariant(5), &state), E_INVALIDARG);
}

TEST_F(TilesAccessibilityTest, PlacesAreThoseOfTheTiles) {
  ASSERT_TRUE(m_accessible);
  RECT cell = m_grid.CellRectangle(1, 0);
  ::MapWindowPoints(m_grid.Handle(), nullptr, reinterpret_cast<POINT*>(&cell), 2);
  LONG left = 0;
  LONG top = 0;
  LONG width = 0;
  LONG height = 0;
  EXPECT_EQ(m_accessible->accLocation(&left, &top, &width, &height, NumberVariant(4)), S_OK);
  EXPECT_EQ(left, cell.left);
  EXPECT_EQ(top, cell.top);
  EXPECT_EQ(width, cell.right - cell.left);
  EXPECT_EQ(height, cell.bottom - cell.top);
  VARIANT hit = {};
  EXPECT_EQ(m_accessible->accHitTest(cell.left + 3, cell.top + 3, &hit), S_OK);
  EXPECT_EQ(hit.lVal, 4);
  EXPECT_EQ(m_accessible->accHitTest(cell.right + 3, cell.top + 3, &hit), S_OK);
  EXPECT_EQ(hit.lVal, CHILDID_SELF);
  EXPECT_EQ(m_accessible->accHitTest(0, 0, &hit), S_FALSE);
}

TEST_F(TilesAccessibilityTest, TileIsSelectedOnRequest) {
  ASSERT_TRUE(m_accessible);
  m_parent.activities = 0;
  EXPECT_EQ(m_accessible->accSelect(SELFLAG_TAKESELECTION, NumberVariant(3)), S_OK);
  EXPECT_EQ(m_grid.SelectedText(), L"Gamma");
  EXPECT_GE(m_parent.activities, 1);
  EXPECT_EQ(m_accessible->accSelect(SELFLAG_TAKESELECTION, NumberVariant(9)), E_INVALIDARG);
}

TEST_F(TilesAccessibilityTest, FocusThatComesToTheGridIsToldOfTheSelectedTile) {
  ::SetFocus(m_other);
  WinEvents events;
  ::SetFocus(m_grid.Handle());
  const std::vector<WinEvent> heard = events.Of(m_grid.Handle(), {EVENT_OBJECT_FOCUS});
  ASSERT_FALSE(heard.empty());
  // The last one counts: the system tells of the grid itself before.
  EXPECT_EQ(heard.back(), (WinEvent{EVENT_OBJECT_FOCUS, m_grid.Handle(), OBJID_CLIENT, 2}));
  EXPECT_NE(State(2) & STATE_SYSTEM_SELECTED, 0);
  EXPECT_NE(State(2) & STATE_SYSTEM_FOCUSED, 0);
}

TEST_F(TilesAccessibilityTest, FocusThatComesToAGridWithoutASelectionIsToldOfItsFirstTileOnce) {
  KsImageGridCtrl grid;
  Show(&grid, LVS_SINGLESEL | LVS_NOCOLUMNHEADER);
  grid.Initialise(125);
  grid.AddEntry(L"Alpha", L"", nullptr, true);
  ::SetFocus(m_other);
  WinEvents events;
  ::SetFocus(grid.Handle());
  const WinEvent first = {EVENT_OBJECT_FOCUS, grid.Handle(), OBJID_CLIENT, 1};
  const std::vector<WinEvent> heard = events.Of(grid.Handle(), {EVENT_OBJECT_FOCUS});
  EXPECT_EQ(std::count(heard.begin(), heard.end(), first), 1);
  EXPECT_EQ(grid.SelectedEntry(), -1);
}

TEST_F(TilesAccessibilityTest, MoveToAnotherTileIsToldOfFocusAndSelection) {
  WinEvents events;
  PressKey(VK_RIGHT);
  const HWND grid = m_grid.Handle();
  EXPECT_EQ(events.Of(grid, {EVENT_OBJECT_FOCUS, EVENT_OBJECT_SELECTION}),
            (std::vector<WinEvent>{{EVENT_OBJECT_SELECTION, grid, OBJID_CLIENT, 3},
                                   {EVENT_OBJECT_FOCUS, grid, OBJID_CLIENT, 3}}));
}

TEST_F(TilesAccessibilityTest, OneObjectAnswersAllQuestions) {
  const ComPtr<IAccessible> again = Accessible(m_grid.Handle());
  EXPECT_EQ(again.Get(), m_accessible.Get());
}

TEST_F(TilesAccessibilityTest, ObjectMayOutliveTheGrid) {
  ASSERT_TRUE(m_accessible);
  ::DestroyWindow(m_grid.Handle());
  LONG count = 7;
  EXPECT_EQ(m_accessible->get_accChildCount(&count), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Name(1), L"");
  EXPECT_NE(m_accessible->accSelect(SELFLAG_TAKESELECTION, NumberVariant(1)), S_OK);
}

}  // namespace
}  // namespace postmarker::test
