#include "controls/CCustomTreeCtrl_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Text.h"
#include "ui/CWinApp.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The parent of the tree: keeps what the tree says.
class TreeParent : public CWnd {
 public:
  std::vector<UINT> clicks;  // NM_CLICK and NM_RCLICK

 protected:
  LRESULT WindowProc(const MessageArgs& args) override {
    if (args.message == WM_NOTIFY) {
      const auto* const header = reinterpret_cast<const NMHDR*>(args.lParam);
      if (header->code == static_cast<UINT>(NM_CLICK) ||
          header->code == static_cast<UINT>(NM_RCLICK)) {
        clicks.push_back(header->code);
      }
    }
    return CWnd::WindowProc(args);
  }
};

// A tree of two stores:
//   Post             Other
//     Inbox
//       Friends
//       Work
//     Trash
class CustomTreeTest : public testing::Test {
 protected:
  CustomTreeTest() {
    AfxGetApp()->SetModule(::GetModuleHandleW(nullptr));
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_TREEVIEW_CLASSES};
    ::InitCommonControlsEx(&classes);
    m_parent.Subclass(::CreateWindowExW(0, L"STATIC", L"trees", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                        60, 60, 400, 300, nullptr, nullptr, nullptr, nullptr));
    const HWND tree = ::CreateWindowExW(
        0, WC_TREEVIEWW, L"", WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS | TVS_LINESATROOT, 10, 10, 300,
        200, m_parent.Handle(), nullptr, nullptr, nullptr);
    EXPECT_TRUE(m_tree.Attach(tree));
    m_post = m_tree.InsertItem(L"Post", TVI_ROOT);
    m_inbox = m_tree.InsertItem(L"Inbox", m_post);
    m_friends = m_tree.InsertItem(L"Friends", m_inbox);
    m_work = m_tree.InsertItem(L"Work", m_inbox);
    m_trash = m_tree.InsertItem(L"Trash", m_post);
    m_other = m_tree.InsertItem(L"Other", TVI_ROOT);
    m_tree.Expand(m_post);
    m_tree.Expand(m_inbox);
    ::SetForegroundWindow(m_parent.Handle());
  }
  ~CustomTreeTest() override { ::DestroyWindow(m_parent.Handle()); }

  // The texts of the checked items, from the top.
  [[nodiscard]] std::vector<std::string> Checked() const {
    std::vector<std::string> checked;
    for (HTREEITEM item = m_tree.FirstChild(TVI_ROOT); item != nullptr;
         item = m_tree.NextInWalk(item, TVI_ROOT)) {
      if (m_tree.IsChecked(item)) {
        checked.push_back(NarrowUtf8(m_tree.ItemText(item)));
      }
    }
    return checked;
  }

  // A point of an item's line at which a hit test tells this place.
  [[nodiscard]] LPARAM PlaceOf(HTREEITEM item, UINT place) const {
    for (LONG y = 0; y < 200; ++y) {
      for (LONG x = 0; x < 200; ++x) {
        UINT flags = 0;
        // Two pixels into it, not at its very edge.
        if (m_tree.HitTest({x + 2, y + 2}, &flags) == item && flags == place) {
          return MAKELPARAM(x + 2, y + 2);
        }
      }
    }
    ADD_FAILURE() << "the item has no such place";
    return 0;
  }
  [[nodiscard]] LPARAM BoxOf(HTREEITEM item) const { return PlaceOf(item, TVHT_ONITEMSTATEICON); }
  [[nodiscard]] LPARAM LabelOf(HTREEITEM item) const { return PlaceOf(item, TVHT_ONITEMLABEL); }

  // The messages of a click. They are posted: the control looks for the second one in the queue.
  void Click(LPARAM point, UINT down = WM_LBUTTONDOWN, UINT up = WM_LBUTTONUP) const {
    ::PostMessageW(m_tree.Handle(), down, 0, point);
    ::PostMessageW(m_tree.Handle(), up, 0, point);
    Pump();
  }
  void PressKey(WORD key) const {
    m_tree.Send(WM_KEYDOWN, key, 1);
    m_tree.Send(WM_KEYUP, key, 1);
  }
  static void Pump() {
    MSG message = {};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      ::DispatchMessageW(&message);
    }
  }

  ModuleStateGuard m_guard;
  TreeParent m_parent;
  CCustomTreeCtrl m_tree;
  HTREEITEM m_post = nullptr;
  HTREEITEM m_inbox = nullptr;
  HTREEITEM m_friends = nullptr;
  HTREEITEM m_work = nullptr;
  HTREEITEM m_trash = nullptr;
  HTREEITEM m_other = nullptr;
};

TEST_F(CustomTreeTest, AttachesToOneWindowOnly) {
  EXPECT_FALSE(m_tree.Attach(m_parent.Handle()));
  CCustomTreeCtrl other;
  EXPECT_FALSE(other.Attach(nullptr));
}

TEST_F(CustomTreeTest, GivesItsItemsBoxesThatAreNotChecked) {
  EXPECT_THAT(Checked(), IsEmpty());
  for (const HTREEITEM item : {m_post, m_friends, m_other}) {
    EXPECT_EQ(m_tree.ItemState(item, TVIS_STATEIMAGEMASK), UINT{INDEXTOSTATEIMAGEMASK(1)});
  }
}

TEST_F(CustomTreeTest, ClickOnABoxChecksTheItemAndAllThatIsBelowIt) {
  Click(BoxOf(m_inbox));
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
  Click(BoxOf(m_post));
  EXPECT_THAT(Checked(), ElementsAre("Post", "Inbox", "Friends", "Work", "Trash"));
  Click(BoxOf(m_post));
  EXPECT_THAT(Checked(), IsEmpty());
  Click(BoxOf(m_other));
  EXPECT_THAT(Checked(), ElementsAre("Other"));
}

TEST_F(CustomTreeTest, ParentsDoNotFollowTheirChildren) {
  Click(BoxOf(m_post));
  Click(BoxOf(m_friends));
  EXPECT_THAT(Checked(), ElementsAre("Post", "Inbox", "Work", "Trash"));
  Click(BoxOf(m_post));
  Click(BoxOf(m_friends));
  Click(BoxOf(m_work));
  EXPECT_THAT(Checked(), ElementsAre("Friends", "Work"));
}

TEST_F(CustomTreeTest, SubtreeGetsTheOppositeOfItsTopWhateverItHeld) {
  Click(BoxOf(m_friends));
  Click(BoxOf(m_inbox));
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
}

TEST_F(CustomTreeTest, ItemsThatAreFoldedAwayGetTheSameState) {
  m_tree.Send(TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(m_inbox));
  Click(BoxOf(m_inbox));
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
  EXPECT_EQ(m_tree.ItemState(m_inbox, TVIS_EXPANDED), 0U);
}

// Keeps the items that are changed, in their order.
LRESULT CALLBACK NoteChanges(HWND tree, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR /*id*/,
                             DWORD_PTR items) {
  if (message == TVM_SETITEMW) {
    reinterpret_cast<std::vector<HTREEITEM>*>(items)->push_back(
        reinterpret_cast<const TVITEMW*>(lParam)->hItem);
  }
  return ::DefSubclassProc(tree, message, wParam, lParam);
}

TEST_F(CustomTreeTest, ChildrenAreSetBeforeTheirParents) {
  std::vector<HTREEITEM> changed;
  ::SetWindowSubclass(m_tree.Handle(), &NoteChanges, 1, reinterpret_cast<DWORD_PTR>(&changed));
  m_tree.SelectItem(m_post);
  PressKey(VK_SPACE);
  ::RemoveWindowSubclass(m_tree.Handle(), &NoteChanges, 1);
  EXPECT_THAT(changed, ElementsAre(m_friends, m_work, m_inbox, m_trash, m_post));
}

TEST_F(CustomTreeTest, RightButtonOnABoxDoesTheSameAsTheLeft) {
  Click(BoxOf(m_inbox), WM_RBUTTONDOWN, WM_RBUTTONUP);
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
  EXPECT_THAT(m_parent.clicks, IsEmpty());
}

TEST_F(CustomTreeTest, EachOfTwoQuickClicksCounts) {
  const LPARAM box = BoxOf(m_inbox);
  Click(box);
  Click(box, WM_LBUTTONDBLCLK);
  EXPECT_THAT(Checked(), IsEmpty());
  EXPECT_NE(m_tree.ItemState(m_inbox, TVIS_EXPANDED), 0U) << "the second click folded the item";
  Click(box, WM_RBUTTONDBLCLK, WM_RBUTTONUP);
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
}

TEST_F(CustomTreeTest, ClickOnABoxIsSwallowedButGivesTheFocus) {
  m_tree.SelectItem(m_trash);
  ::SetFocus(m_parent.Handle());
  Click(BoxOf(m_inbox));
  EXPECT_EQ(m_tree.Selection(), m_trash);
  EXPECT_THAT(m_parent.clicks, IsEmpty());
  EXPECT_EQ(::GetFocus(), m_tree.Handle());
}

TEST_F(CustomTreeTest, ClickBesideTheBoxesIsPassedOn) {
  Click(LabelOf(m_trash));
  EXPECT_EQ(m_tree.Selection(), m_trash);
  EXPECT_THAT(m_parent.clicks, ElementsAre(static_cast<UINT>(NM_CLICK)));
  Click(LabelOf(m_trash), WM_RBUTTONDOWN, WM_RBUTTONUP);
  EXPECT_EQ(m_parent.clicks.back(), static_cast<UINT>(NM_RCLICK));
  Click(MAKELPARAM(290, 190));
  Click(PlaceOf(m_inbox, TVHT_ONITEMBUTTON));
  EXPECT_EQ(m_tree.ItemState(m_inbox, TVIS_EXPANDED), 0U);
  EXPECT_THAT(Checked(), IsEmpty());
}

TEST_F(CustomTreeTest, BlankActsOnTheSelectedItemAndAllThatIsBelowIt) {
  m_tree.SelectItem(m_inbox);
  PressKey(VK_SPACE);
  EXPECT_THAT(Checked(), ElementsAre("Inbox", "Friends", "Work"));
  PressKey(VK_SPACE);
  EXPECT_THAT(Checked(), IsEmpty());
}

TEST_F(CustomTreeTest, BlankWithoutASelectionDoesNothing) {
  m_tree.SelectItem(nullptr);
  ASSERT_EQ(m_tree.Selection(), nullptr);
  PressKey(VK_SPACE);
  EXPECT_THAT(Checked(), IsEmpty());
  EXPECT_EQ(m_tree.Selection(), nullptr);
}

TEST_F(CustomTreeTest, OtherKeysArePassedOn) {
  m_tree.SelectItem(m_inbox);
  PressKey(VK_DOWN);
  EXPECT_EQ(m_tree.Selection(), m_friends);
  m_tree.Send(WM_CHAR, L't', 1);
  EXPECT_EQ(m_tree.Selection(), m_trash);
  EXPECT_THAT(Checked(), IsEmpty());
}

// Keeps the characters that reach the control itself.
LRESULT CALLBACK NoteCharacters(HWND tree, UINT message, WPARAM wParam, LPARAM lParam,
                                UINT_PTR /*id*/, DWORD_PTR characters) {
  if (message == WM_CHAR) {
    reinterpret_cast<std::wstring*>(characters)->push_back(static_cast<wchar_t>(wParam));
  }
  return ::DefSubclassProc(tree, message, wParam, lParam);
}

TEST_F(CustomTreeTest, BlankIsNoLetterOfASearch) {
  std::wstring characters;
  const HWND window = ::CreateWindowExW(0, WC_TREEVIEWW, L"", WS_CHILD, 0, 0, 10, 10,
                                        m_parent.Handle(), nullptr, nullptr, nullptr);
  ::SetWindowSubclass(window, &NoteCharacters, 1, reinterpret_cast<DWORD_PTR>(&characters));
  CCustomTreeCtrl tree;
  ASSERT_TRUE(tree.Attach(window));
  for (const wchar_t character : {L't', L' ', L'r'}) {
    tree.Send(WM_CHAR, character, 1);
  }
  EXPECT_EQ(characters, L"tr");
}

TEST_F(CustomTreeTest, DestroysThePicturesOfItsBoxes) {
  const auto boxes = reinterpret_cast<HIMAGELIST>(m_tree.Send(TVM_GETIMAGELIST, TVSIL_STATE));
  ASSERT_GT(::ImageList_GetImageCount(boxes), 0);
  ::DestroyWindow(m_tree.Handle());
  EXPECT_EQ(m_tree.Handle(), nullptr);
  EXPECT_EQ(::ImageList_GetImageCount(boxes), 0);
}

TEST_F(CustomTreeTest, DeepAndWideSubtreesAreSetWhole) {
  HTREEITEM deepest = m_other;
  for (int level = 0; level < 200; ++level) {
    m_tree.InsertItem(L"beside", deepest);
    deepest = m_tree.InsertItem(L"below", deepest);
  }
  m_tree.SelectItem(m_other);
  PressKey(VK_SPACE);
  EXPECT_EQ(Checked().size(), 401U);
  PressKey(VK_SPACE);
  EXPECT_THAT(Checked(), IsEmpty());
}

}  // namespace
}  // namespace postmarker::test
