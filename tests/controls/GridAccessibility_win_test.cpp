// What programs for the blind read of grids, through the platform's accessibility interface.
#include <windows.h>

#include <gtest/gtest.h>
#include <oleacc.h>

#include "controls/GridFixture_win.h"
#include "controls/KsEmailAddressGridCtrl_win.h"
#include "controls/KsImageGridCtrl_win.h"
#include "support/Bstr_win.h"
#include "support/ComPtr_win.h"

namespace postmarker::test {
namespace {

VARIANT Child(LONG id) {
  VARIANT child = {};
  child.vt = VT_I4;
  child.lVal = id;
  return child;
}

class GridAccessibilityTest : public GridFixture {
 protected:
  static ComPtr<IAccessible> Accessible(HWND window) {
    ComPtr<IAccessible> accessible;
    ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                 accessible.PutVoid());
    return accessible;
  }
  static std::wstring NameOf(HWND window) {
    const ComPtr<IAccessible> accessible = Accessible(window);
    Bstr name;
    if (accessible) {
      accessible->get_accName(Child(CHILDID_SELF), name.Put());
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

TEST_F(GridAccessibilityTest, GridOfTilesHasTheNameOfItsWindow) {
  KsImageGridCtrl grid;
  Show(&grid, LVS_SINGLESEL | LVS_NOCOLUMNHEADER);
  grid.SetAccessibleName(L"Mail programs");
  EXPECT_EQ(NameOf(grid.Handle()), L"Mail programs");
}

}  // namespace
}  // namespace postmarker::test
