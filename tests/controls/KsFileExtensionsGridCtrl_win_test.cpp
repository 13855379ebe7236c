#include "controls/KsFileExtensionsGridCtrl_win.h"

#include <gmock/gmock.h>

#include "controls/GridFixture_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

class ExtensionsGrid : public KsFileExtensionsGridCtrl {
 public:
  using CGridCtrl::Editor;
};

class KsFileExtensionsGridCtrlTest : public GridFixture {
 protected:
  KsFileExtensionsGridCtrlTest() {
    Show(&m_grid);
    EXPECT_TRUE(m_grid.Initialise(
        {L"On", L"Extension", L"Action", L"File kinds", L"No extension.", L"Already there."},
        {L"Block", L"Ask"}));
    m_grid.AddExtension({L"*.EXE", L"Block", true});
    m_grid.AddExtension({L"txt", L"Ask", false});
    ::SetFocus(m_grid.Handle());
    Pump();
  }
  void Edit(int row, int col, const std::wstring& text) {
    m_grid.ActOnCell(row, col, nullptr);
    ASSERT_TRUE(m_grid.IsEditing());
    SetEditText(m_grid.Editor(), text);
    m_grid.EndEdit(true);
    Pump();
  }

  ExtensionsGrid m_grid;
};

TEST_F(KsFileExtensionsGridCtrlTest, ExtensionsHaveOneFormAndAreUnique) {
  EXPECT_THAT(m_grid.ReadExtensions(), ElementsAre(FileExtensionRow{L".exe", L"Block", true},
                                                   FileExtensionRow{L".txt", L"Ask", false}));
  EXPECT_EQ(m_grid.AddExtension({L"exe", L"Ask", true}), -1);
  EXPECT_EQ(m_grid.AddExtension({L"a b", L"Ask", true}), -1);
}

TEST_F(KsFileExtensionsGridCtrlTest, ClickOnACheckBoxTogglesAllSelectedRows) {
  m_grid.SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED);
  Click(m_grid, 0, 0);
  EXPECT_THAT(m_grid.ReadExtensions(), ElementsAre(FileExtensionRow{L".exe", L"Block", false},
                                                   FileExtensionRow{L".txt", L"Ask", true}));
}

TEST_F(KsFileExtensionsGridCtrlTest, EditedExtensionGetsItsForm) {
  Edit(1, 1, L"DOC");
  EXPECT_EQ(m_grid.ItemText(1, 1), L".doc");
}

TEST_F(KsFileExtensionsGridCtrlTest, TextThatIsNoExtensionAndADuplicateAreRefusedWithATip) {
  for (const auto& [text, tip] :
       {std::pair{L"a b", L"No extension."}, {L"exe", L"Already there."}}) {
    Edit(1, 1, text);
    EXPECT_TRUE(m_grid.IsEditing());
    const HWND shown = FindVisibleWindow(L"KsToolTipWnd");
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(WindowText(shown), tip);
    m_grid.EndEdit(false);
  }
  EXPECT_EQ(m_grid.ItemText(1, 1), L".txt");
}

TEST_F(KsFileExtensionsGridCtrlTest, ActionThatWasTypedIsOfferedFromThenOn) {
  Edit(0, 2, L"Warn");
  EXPECT_EQ(m_grid.ItemText(0, 2), L"Warn");
  m_grid.ActOnCell(1, 2, nullptr);
  EXPECT_EQ(::SendMessageW(m_grid.Editor(), CB_GETCOUNT, 0, 0), 3);
  m_grid.EndEdit(false);
}

TEST_F(KsFileExtensionsGridCtrlTest, HeadingsSortButForThatOfTheCheckBoxes) {
  NMHEADERW header = {};
  header.hdr = {m_grid.Header(), 0, HDN_ITEMCLICKW};
  header.iItem = 2;
  m_grid.Send(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
  EXPECT_EQ(m_grid.ItemText(0, 1), L".txt");
  header.iItem = 0;
  m_grid.Send(WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
  EXPECT_EQ(m_grid.ItemText(0, 1), L".txt");
}

}  // namespace
}  // namespace postmarker::test
