// In-place editing.
#include <gtest/gtest.h>

#include "controls/CellEditor_win.h"
#include "controls/TestGrid_win.h"

namespace postmarker::test {
namespace {

class CGridCtrlEditTest : public CGridCtrlTest {
 protected:
  // Opens the editor of a cell, as a press on it does.
  HWND Open(int row, int col) {
    Click(m_grid, row, col);
    EXPECT_TRUE(m_grid.IsEditing());
    EXPECT_EQ(m_grid.EditCell(), (GridCell{row, col}));
    return m_grid.Editor();
  }
  static std::wstring ClassOf(HWND window) {
    wchar_t name[64] = {};
    ::GetClassNameW(window, name, 64);
    return name;
  }
  static HWND InnerCombo(HWND editor) {
    return reinterpret_cast<HWND>(::SendMessageW(editor, CBEM_GETCOMBOCONTROL, 0, 0));
  }
  static HWND InnerEdit(HWND editor) {
    return reinterpret_cast<HWND>(::SendMessageW(editor, CBEM_GETEDITCONTROL, 0, 0));
  }
};

TEST_F(CGridCtrlEditTest, EditBoxHasTheCellsTextSelectedAndTheListsFont) {
  const HWND editor = Open(1, kText);
  EXPECT_EQ(ClassOf(editor), L"Edit");
  EXPECT_EQ(WindowText(editor), L"bert");
  DWORD start = 9;
  DWORD end = 9;
  ::SendMessageW(editor, EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                 reinterpret_cast<LPARAM>(&end));
  EXPECT_EQ(start, 0U);
  EXPECT_EQ(end, 4U);
  EXPECT_EQ(::SendMessageW(editor, EM_GETLIMITTEXT, 0, 0), 100);
  EXPECT_EQ(::SendMessageW(editor, WM_GETFONT, 0, 0), m_grid.Send(WM_GETFONT));
  EXPECT_NE(::GetWindowLongPtrW(editor, GWL_STYLE) & ES_AUTOHSCROLL, 0);
  EXPECT_EQ(::GetDlgCtrlID(editor), 10);
  EXPECT_TRUE(HasFocus(editor));
  EXPECT_NE(::SendMessageW(editor, WM_GETDLGCODE, 0, 0) & DLGC_WANTALLKEYS, 0);
}

TEST_F(CGridCtrlEditTest, EditBoxLiesOverItsCellBehindThePicturesOfTheFirstColumn) {
  const HWND editor = Open(1, kText);
  RECT place = {};
  ::GetWindowRect(editor, &place);
  ::MapWindowPoints(nullptr, m_grid.Handle(), reinterpret_cast<POINT*>(&place), 2);
  const RECT cell = m_grid.CellRectangle(1, kText);
  EXPECT_EQ(place.left, cell.left + 20);
  EXPECT_EQ(place.right, cell.right);
  EXPECT_EQ(place.top, cell.top);
  EXPECT_EQ(place.bottom, cell.bottom + 1) << "a cell's rectangle grows at the bottom";
}

TEST_F(CGridCtrlEditTest, EditorIsNamedByItsColumn) {
  const HWND label = ::GetWindow(Open(1, kText), GW_HWNDPREV);
  EXPECT_EQ(ClassOf(label), L"Static");
  EXPECT_EQ(WindowText(label), L"Column 0");
  PressKey(VK_ESCAPE);
  EXPECT_FALSE(::IsWindow(label));
}

TEST_F(CGridCtrlEditTest, ReturnTakesTheText) {
  SetEditText(Open(1, kText), L"berta");
  PressKey(VK_RETURN);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_TRUE(m_grid.EditCell().IsNone());
  EXPECT_EQ(m_grid.ItemText(1, kText), L"berta");
  ASSERT_EQ(m_grid.edits.size(), 1U) << "the loss of focus is no second end";
  EXPECT_FALSE(m_grid.edits[0].cancelled);
  EXPECT_EQ(m_grid.edits[0].item, -1);
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(CGridCtrlEditTest, EscapeLeavesTheCellsTextAlone) {
  const HWND editor = Open(1, kText);
  SetEditText(editor, L"berta");
  PressKey(VK_ESCAPE);
  EXPECT_EQ(m_grid.ItemText(1, kText), L"bert");
  ASSERT_EQ(m_grid.edits.size(), 1U);
  EXPECT_TRUE(m_grid.edits[0].cancelled);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_FALSE(::IsWindow(editor));
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(CGridCtrlEditTest, KeysMarkTheOutcomeAndPostTheEnd) {
  const HWND editor = Open(1, kText);
  ::SendMessageW(editor, WM_KEYDOWN, VK_RETURN, 1);
  EXPECT_EQ(::GetWindowLongPtrW(editor, GWLP_USERDATA), 0x10000);
  EXPECT_TRUE(m_grid.IsEditing()) << "until the posted end arrives";
  MSG message = {};
  ASSERT_TRUE(::PeekMessageW(&message, m_grid.Handle(), WM_COMMAND, WM_COMMAND, PM_NOREMOVE));
  EXPECT_EQ(LOWORD(message.wParam), 10);
  EXPECT_EQ(HIWORD(message.wParam), ::RegisterWindowMessageW(L"CGridCtrl_KillMe"));
  Pump();
  EXPECT_FALSE(m_grid.IsEditing());
  const HWND second = Open(2, kText);
  ::SendMessageW(second, WM_KEYDOWN, VK_ESCAPE, 1);
  EXPECT_EQ(::GetWindowLongPtrW(second, GWLP_USERDATA), 0x10001);
}

TEST_F(CGridCtrlEditTest, LossOfFocusTakesTheText) {
  SetEditText(Open(1, kText), L"berta");
  ::SetFocus(m_other);
  Pump();
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(1, kText), L"berta");
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(CGridCtrlEditTest, HookThatRefusesAValueKeepsTheEditorOpenWithTheFocusInIt) {
  m_grid.refuse = true;
  const HWND editor = Open(1, kText);
  SetEditText(editor, L"refused");
  PressKey(VK_RETURN);
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.EditCell(), (GridCell{1, kText}));
  EXPECT_TRUE(HasFocus(editor));
  ::SetFocus(m_other);
  Pump();
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_TRUE(HasFocus(editor));
  EXPECT_EQ(WindowText(editor), L"refused");
  EXPECT_EQ(m_grid.ItemText(1, kText), L"bert");
  m_grid.refuse = false;
  PressKey(VK_ESCAPE);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(1, kText), L"bert");
}

TEST_F(CGridCtrlEditTest, RefusedEscapeIsForgottenWhenTheFocusGoesLater) {
  m_grid.refuse = true;
  SetEditText(Open(1, kText), L"berta");
  PressKey(VK_ESCAPE);
  m_grid.refuse = false;
  ::SetFocus(m_other);
  Pump();
  EXPECT_EQ(m_grid.ItemText(1, kText), L"berta");
}

TEST_F(CGridCtrlEditTest, EditorOfAWindowThatIsLeftForAnotherProgramStaysWhereItsValueIsRefused) {
  m_grid.refuse = true;
  const HWND editor = Open(1, kText);
  const HWND elsewhere = ::CreateWindowExW(0, L"STATIC", L"elsewhere", WS_POPUP | WS_VISIBLE, 700,
                                           60, 50, 50, nullptr, nullptr, nullptr, nullptr);
  ::SetActiveWindow(elsewhere);
  ::SetFocus(elsewhere);
  Pump();
  EXPECT_EQ(::GetActiveWindow(), elsewhere) << "the editor must not fight for the front";
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_TRUE(::IsWindow(editor));
  ::DestroyWindow(elsewhere);
}

TEST_F(CGridCtrlEditTest, PressWhileAnEditorIsOpenOnlyEndsTheEdit) {
  SetEditText(Open(1, kText), L"berta");
  Click(m_grid, 3, kButton);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_TRUE(m_grid.clicked.empty());
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{1, kText}));
  EXPECT_EQ(m_grid.ItemText(1, kText), L"berta");
  Click(m_grid, 3, kButton);
  EXPECT_EQ(m_grid.clicked.size(), 1U);
}

TEST_F(CGridCtrlEditTest, TabTakesTheTextAndF2OpensTheEditor) {
  m_grid.SetCellFocus(2, kText, true);
  PressKey(VK_F2);
  ASSERT_TRUE(m_grid.IsEditing());
  SetEditText(m_grid.Editor(), L"carla");
  PressKey(VK_TAB);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(2, kText), L"carla");
}

TEST_F(CGridCtrlEditTest, TextOfAnyLengthIsTakenWhole) {
  m_grid.SetEditLimit(1000);
  for (const size_t length : {254, 255, 256, 1000}) {
    SetEditText(Open(1, kText), std::wstring(length, L'x'));
    PressKey(VK_RETURN);
    EXPECT_EQ(m_grid.ItemText(1, kText), std::wstring(length, L'x'));
  }
}

TEST_F(CGridCtrlEditTest, TextLongerThanWhatCanBeTypedIsEditedWhole) {
  const std::wstring text(40'000, L'x');
  m_grid.SetItemText(1, kText, text);
  EXPECT_EQ(WindowText(Open(1, kText)), text);
  PressKey(VK_RETURN);
  EXPECT_EQ(m_grid.ItemText(1, kText), text);
}

TEST_F(CGridCtrlEditTest, ChoiceOfAnyLengthIsTakenWhole) {
  for (const size_t length : {253, 254, 255, 600}) {
    const std::wstring text(length, L'x');
    m_grid.choices = {L"red", text};
    m_grid.SetItemText(1, kChoice, text);
    Open(1, kChoice);
    PressKey(VK_RETURN);
    EXPECT_EQ(m_grid.ItemText(1, kChoice), text);
    EXPECT_EQ(m_grid.edits.back().text.size(), length);
  }
}

TEST_F(CGridCtrlEditTest, SecondEditorInTheProcessIsRefused) {
  TestGrid second;
  Show(&second);
  second.InsertColumn(0, L"text", 100);
  second.InsertItem(0, L"x");
  Open(1, kText);
  EXPECT_FALSE(second.StartEdit(0, 0, second.CellRectangle(0, 0)));
  EXPECT_FALSE(second.IsEditing());
  EXPECT_TRUE(m_grid.IsEditing());
  PressKey(VK_ESCAPE);
  EXPECT_TRUE(second.StartEdit(0, 0, second.CellRectangle(0, 0)));
}

TEST_F(CGridCtrlEditTest, GridThatIsDestroyedTakesItsEditorAlongAndFreesThePlace) {
  {
    TestGrid second;
    Show(&second);
    second.InsertColumn(0, L"text", 100);
    second.InsertItem(0, L"x");
    EXPECT_TRUE(second.StartEdit(0, 0, second.CellRectangle(0, 0)));
  }
  Open(1, kText);
  PressKey(VK_ESCAPE);
}

TEST_F(CGridCtrlEditTest, RowThatGoesTakesItsEditorAlong) {
  Open(1, kText);
  m_grid.DeleteItem(1);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_TRUE(m_grid.edits.empty());
  Open(2, kText);
  m_grid.DeleteAllItems();
  EXPECT_FALSE(m_grid.IsEditing());
}

TEST_F(CGridCtrlEditTest, RowsThatComeAndGoBeforeItTakeTheEditorAlong) {
  const HWND editor = Open(2, kText);
  m_grid.DeleteItem(0);
  EXPECT_EQ(m_grid.EditCell(), (GridCell{1, kText}));
  RECT place = {};
  ::GetWindowRect(editor, &place);
  ::MapWindowPoints(nullptr, m_grid.Handle(), reinterpret_cast<POINT*>(&place), 2);
  EXPECT_EQ(place.top, m_grid.CellRectangle(1, kText).top);
  SetEditText(editor, L"carla");
  PressKey(VK_RETURN);
  EXPECT_EQ(m_grid.ItemText(1, kText), L"carla");
}

TEST_F(CGridCtrlEditTest, ScrollingEndsTheEdit) {
  SetEditText(Open(1, kText), L"berta");
  m_grid.Send(WM_VSCROLL, SB_LINEDOWN);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(1, kText), L"berta");
}

TEST_F(CGridCtrlEditTest, ComboBoxOffersItsChoicesWithTheCellsTextChosen) {
  const HWND editor = Open(1, kChoice);
  EXPECT_EQ(ClassOf(editor), L"ComboBoxEx32");
  EXPECT_EQ(::GetDlgCtrlID(editor), 10);
  EXPECT_EQ(::SendMessageW(editor, CB_GETCOUNT, 0, 0), 3);
  EXPECT_EQ(::SendMessageW(editor, CB_GETCURSEL, 0, 0), 1);
  EXPECT_EQ(InnerEdit(editor), nullptr);
  EXPECT_TRUE(HasFocus(InnerCombo(editor)));
  EXPECT_NE(::SendMessageW(InnerCombo(editor), WM_GETDLGCODE, 0, 0) & DLGC_WANTALLKEYS, 0);
}

TEST_F(CGridCtrlEditTest, ReturnInAComboBoxTakesTheChoiceAndItsData) {
  const HWND editor = Open(1, kChoice);
  ::SendMessageW(editor, CB_SETCURSEL, 2, 0);
  ::SendMessageW(InnerCombo(editor), WM_KEYDOWN, VK_RETURN, 1);
  EXPECT_EQ(::GetWindowLongPtrW(editor, GWLP_USERDATA), 0x20000);
  Pump();
  ASSERT_EQ(m_grid.edits.size(), 1U);
  EXPECT_EQ(m_grid.edits[0].text, L"blue");
  EXPECT_EQ(m_grid.edits[0].item, 2);
  EXPECT_EQ(m_grid.edits[0].data, 2);
  EXPECT_EQ(m_grid.ItemText(1, kChoice), L"blue");
  EXPECT_FALSE(::IsWindow(editor));
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(CGridCtrlEditTest, EscapeInAComboBoxLeavesTheCellsTextAlone) {
  const HWND editor = Open(1, kChoice);
  ::SendMessageW(editor, CB_SETCURSEL, 2, 0);
  ::SendMessageW(InnerCombo(editor), WM_KEYDOWN, VK_ESCAPE, 1);
  EXPECT_EQ(::GetWindowLongPtrW(editor, GWLP_USERDATA), 0x20001);
  Pump();
  EXPECT_EQ(m_grid.ItemText(1, kChoice), L"green");
  EXPECT_FALSE(m_grid.IsEditing());
}

TEST_F(CGridCtrlEditTest, ComboBoxIsDestroyedByAPostedMessage) {
  const HWND editor = Open(1, kChoice);
  m_grid.EndEdit(true);
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_TRUE(::IsWindow(editor)) << "not from inside its own notifications";
  EXPECT_FALSE(::IsWindowVisible(editor));
  MSG message = {};
  const UINT suicide = ::RegisterWindowMessageW(L"CGridCtrl_Suicide");
  EXPECT_TRUE(::PeekMessageW(&message, InnerCombo(editor), suicide, suicide, PM_NOREMOVE));
  Pump();
  EXPECT_FALSE(::IsWindow(editor));
}

TEST_F(CGridCtrlEditTest, NextEditorMayOpenBeforeAComboBoxIsGone) {
  Open(1, kFreeChoice);
  m_grid.EndEdit(true);
  m_grid.ActOnCell(2, kText, nullptr);
  ASSERT_TRUE(m_grid.IsEditing());
  Pump();
  SetEditText(m_grid.Editor(), L"carla");
  PressKey(VK_RETURN);
  EXPECT_EQ(m_grid.ItemText(2, kText), L"carla");
}

TEST_F(CGridCtrlEditTest, ClosingTheListOfAComboBoxEndsTheEdit) {
  const HWND editor = Open(1, kChoice);
  ::SendMessageW(editor, CB_SHOWDROPDOWN, TRUE, 0);
  ::SendMessageW(InnerCombo(editor), WM_KEYDOWN, VK_DOWN, 1);
  ::SendMessageW(InnerCombo(editor), WM_KEYDOWN, VK_RETURN, 1);
  Pump();
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(1, kChoice), L"blue");
  const HWND second = Open(2, kChoice);
  ::SendMessageW(second, CB_SHOWDROPDOWN, TRUE, 0);
  ::SendMessageW(InnerCombo(second), WM_KEYDOWN, VK_ESCAPE, 1);
  Pump();
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(2, kChoice), L"green");
}

TEST_F(CGridCtrlEditTest, LossOfFocusTakesTheChoiceOfAComboBox) {
  const HWND editor = Open(1, kChoice);
  ::SendMessageW(editor, CB_SETCURSEL, 0, 0);
  ::SetFocus(m_other);
  Pump();
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.ItemText(1, kChoice), L"red");
}

TEST_F(CGridCtrlEditTest, TextTypedIntoAnEditableComboBoxIsAddedToItsList) {
  const HWND editor = Open(1, kFreeChoice);
  ASSERT_NE(InnerEdit(editor), nullptr);
  EXPECT_TRUE(HasFocus(InnerEdit(editor)));
  SetEditText(InnerEdit(editor), L"yellow");
  PressKey(VK_RETURN);
  ASSERT_EQ(m_grid.edits.size(), 1U);
  EXPECT_EQ(m_grid.edits[0].text, L"yellow");
  EXPECT_EQ(m_grid.edits[0].item, 3);
  EXPECT_EQ(m_grid.ItemText(1, kFreeChoice), L"yellow");
}

TEST_F(CGridCtrlEditTest, TextOfAnItemTypedIntoAnEditableComboBoxIsThatItem) {
  const HWND editor = Open(1, kFreeChoice);
  SetEditText(InnerEdit(editor), L"blue");
  PressKey(VK_RETURN);
  ASSERT_EQ(m_grid.edits.size(), 1U);
  EXPECT_EQ(m_grid.edits[0].item, 2);
  EXPECT_EQ(m_grid.edits[0].data, 2);
}

TEST_F(CGridCtrlEditTest, RefusedComboBoxStaysOpen) {
  m_grid.refuse = true;
  const HWND editor = Open(1, kFreeChoice);
  SetEditText(InnerEdit(editor), L"yellow");
  PressKey(VK_RETURN);
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_TRUE(HasFocus(InnerEdit(editor)));
  EXPECT_EQ(WindowText(InnerEdit(editor)), L"yellow");
  m_grid.refuse = false;
  PressKey(VK_ESCAPE);
  EXPECT_FALSE(m_grid.IsEditing());
}

}  // namespace
}  // namespace postmarker::test
