#include "controls/KsEmailAddressGridCtrl_win.h"

#include <gmock/gmock.h>

#include "controls/GridFixture_win.h"
#include "support/Text.h"
#include "support/WizardSession_win.h"
#include "ui/Clipboard.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

class EmailGrid : public KsEmailAddressGridCtrl {
 public:
  using CGridCtrl::Editor;
  int paintTimers = 0;  // messages of the timer that ends the hold of painting

 protected:
  LRESULT OnTimer(const MessageArgs& args) override {
    constexpr WPARAM kPaintTimer = 0x4750;
    paintTimers += args.wParam == kPaintTimer ? 1 : 0;
    return KsEmailAddressGridCtrl::OnTimer(args);
  }
};

class KsEmailAddressGridCtrlTest : public GridFixture {
 protected:
  KsEmailAddressGridCtrlTest() {
    Show(&m_grid);
    EXPECT_TRUE(
        m_grid.Initialise(180, 22,
                          {L"Address", L"Domain", L"There is none.", L"Type one.",
                           L"Good addresses", L"Already there.", L"%d left out.", L"No address."}));
    ::SetFocus(m_grid.Handle());
    Pump();
  }
  void Add(const std::vector<std::wstring>& texts) {
    for (const std::wstring& text : texts) {
      m_grid.AddAddress(text);
    }
  }
  [[nodiscard]] std::vector<std::wstring> Rows() const {
    std::vector<std::wstring> rows;
    rows.reserve(static_cast<size_t>(m_grid.ItemCount()));
    for (int row = 0; row < m_grid.ItemCount(); ++row) {
      rows.push_back(m_grid.ItemText(row, 0));
    }
    return rows;
  }
  // The text of the tip that shows, or empty.
  static std::wstring Tip() {
    const HWND tip = FindVisibleWindow(L"KsToolTipWnd");
    return tip != nullptr ? WindowText(tip) : std::wstring();
  }
  void Edit(int row, const std::wstring& text) {
    m_grid.ActOnCell(row, 0, nullptr);
    ASSERT_TRUE(m_grid.IsEditing());
    SetEditText(m_grid.Editor(), text);
    PressKey(VK_RETURN);
  }

  EmailGrid m_grid;
};

TEST_F(KsEmailAddressGridCtrlTest, HasTwoColumnsOfOneWidthAndRowsOfTheGivenHeight) {
  Add({L"a@b.org"});
  EXPECT_EQ(m_grid.ColumnCount(), 2);
  EXPECT_EQ(m_grid.ColumnWidth(0), 180);
  EXPECT_EQ(m_grid.ColumnWidth(1), 180);
  const RECT cell = m_grid.CellRectangle(0, 0);
  EXPECT_EQ(cell.bottom - cell.top, 22);
  EXPECT_EQ(WindowText(m_grid.Handle()), L"Good addresses");
}

TEST_F(KsEmailAddressGridCtrlTest, AddressesStandSortedInLowerCaseWithTheirDomains) {
  EXPECT_EQ(m_grid.AddAddress(L"Mia@b.org"), 0);
  EXPECT_EQ(m_grid.AddAddress(L"anna@z.org"), 0);
  EXPECT_EQ(m_grid.AddAddress(L"zoe@a.org"), 2);
  EXPECT_THAT(Rows(), ElementsAre(L"anna@z.org", L"mia@b.org", L"zoe@a.org"));
  EXPECT_EQ(m_grid.ItemText(0, 1), L"z.org");
}

TEST_F(KsEmailAddressGridCtrlTest, SpellingsThatDifferInCaseAreOneRow) {
  EXPECT_EQ(m_grid.AddAddress(L"Anna@B.org"), 0);
  EXPECT_EQ(m_grid.AddAddress(L"anna@b.ORG"), 0);
  EXPECT_THAT(Rows(), ElementsAre(L"anna@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, EmptyTextIsNotAdded) {
  EXPECT_EQ(m_grid.AddAddress(L""), -1);
  EXPECT_EQ(m_grid.ItemCount(), 0);
}

TEST_F(KsEmailAddressGridCtrlTest, HarvestedTextIsNotValidated) {
  EXPECT_EQ(m_grid.AddAddress(L"no address at all"), 0);
  EXPECT_EQ(m_grid.AddAddress(std::wstring(1000, L'x')), 1);
  EXPECT_EQ(m_grid.FindAddress(std::wstring(1000, L'x')), 1);
}

TEST_F(KsEmailAddressGridCtrlTest, RowsAreReadIntoASet) {
  Add({L"b@b.org", L"a@b.org"});
  AddressSet set = {L"kept@b.org"};
  m_grid.ReadAddresses(&set);
  EXPECT_THAT(set, ElementsAre(L"a@b.org", L"b@b.org", L"kept@b.org"));
  EXPECT_EQ(m_grid.FindAddress(L"b@b.org"), 1);
  EXPECT_EQ(m_grid.FindAddress(L"c@b.org"), -1);
}

TEST_F(KsEmailAddressGridCtrlTest, EditedAddressMovesToItsPlace) {
  Add({L"a@b.org", L"b@b.org", L"c@b.org"});
  Edit(0, L"  X@New.org ");
  EXPECT_THAT(Rows(), ElementsAre(L"b@b.org", L"c@b.org", L"x@new.org"));
  EXPECT_EQ(m_grid.ItemText(2, 1), L"new.org");
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{2, 0}));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(2));
  EXPECT_TRUE(HasFocus(m_grid.Handle()));
}

TEST_F(KsEmailAddressGridCtrlTest, TextThatIsNoAddressIsRefusedWithATip) {
  Add({L"a@b.org"});
  for (const wchar_t* const text : {L"a", L"a b@c.org", L"a@b", L"a@b@c.org", L"!!!.org"}) {
    Edit(0, text);
    EXPECT_TRUE(m_grid.IsEditing());
    EXPECT_TRUE(HasFocus(m_grid.Editor()));
    EXPECT_EQ(Tip(), L"No address.");
    PressKey(VK_ESCAPE);
    EXPECT_EQ(Tip(), L"");
  }
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, AddressOfAnotherRowIsRefusedWithATip) {
  Add({L"a@b.org", L"b@b.org"});
  Edit(0, L"B@b.org");
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_EQ(Tip(), L"Already there.");
  PressKey(VK_ESCAPE);
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org", L"b@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, HundredHostileCharactersAreJudgedWithinTwoTenthsOfASecond) {
  Add({L"a@b.org"});
  m_grid.ActOnCell(0, 0, nullptr);
  std::wstring hostile;
  while (hostile.size() < 100) {
    hostile.append(L"a-");
  }
  SetEditText(m_grid.Editor(), hostile);
  const DWORD start = ::GetTickCount();
  PressKey(VK_RETURN);
  EXPECT_LT(::GetTickCount() - start, 200U);
  EXPECT_TRUE(m_grid.IsEditing());
  PressKey(VK_ESCAPE);
}

TEST_F(KsEmailAddressGridCtrlTest, EditTakesHundredCharacters) {
  Add({L"a@b.org"});
  m_grid.ActOnCell(0, 0, nullptr);
  EXPECT_EQ(::SendMessageW(m_grid.Editor(), EM_GETLIMITTEXT, 0, 0), 100);
  PressKey(VK_ESCAPE);
}

TEST_F(KsEmailAddressGridCtrlTest, CollectedTextOfAnyLengthAndFormIsLeftAsItWas) {
  const std::vector<std::wstring> texts = {std::wstring(300, L'x'), std::wstring(5000, L'y'),
                                           L" between blanks ", L"a\ttab and\r\ntwo lines"};
  for (const std::wstring& text : texts) {
    const int row = m_grid.AddAddress(text);
    for (const bool byReturn : {true, false}) {
      m_grid.ActOnCell(row, 0, nullptr);
      ASSERT_TRUE(m_grid.IsEditing());
      EXPECT_EQ(WindowText(m_grid.Editor()), text);
      if (byReturn) {
        PressKey(VK_RETURN);
      } else {
        ::SetFocus(m_other);
        Pump();
      }
      EXPECT_FALSE(m_grid.IsEditing());
      EXPECT_EQ(Tip(), L"");
      EXPECT_EQ(m_grid.ItemText(row, 0), text);
      m_grid.ClearEditState();
    }
  }
  EXPECT_EQ(m_grid.ItemCount(), static_cast<int>(texts.size()));
}

TEST_F(KsEmailAddressGridCtrlTest, LongTextThatIsChangedIsJudgedWhole) {
  const std::wstring text = std::wstring(300, L'x') + L"@b.org";
  m_grid.AddAddress(text);
  // The first 254 units alone, and those of another row's address, would be something else.
  Edit(0, text + L" and more");
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_EQ(Tip(), L"No address.");
  EXPECT_EQ(WindowText(m_grid.Editor()), text + L" and more");
  PressKey(VK_ESCAPE);
  EXPECT_THAT(Rows(), ElementsAre(text));
}

TEST_F(KsEmailAddressGridCtrlTest, RefusalInAWindowThatIsLeftShowsNoTipOverTheOther) {
  Add({L"a@b.org"});
  m_grid.ActOnCell(0, 0, nullptr);
  SetEditText(m_grid.Editor(), L"nonsense");
  const HWND elsewhere = ::CreateWindowExW(0, L"STATIC", L"elsewhere", WS_POPUP | WS_VISIBLE, 700,
                                           60, 50, 50, nullptr, nullptr, nullptr, nullptr);
  ::SetActiveWindow(elsewhere);
  ::SetFocus(elsewhere);
  Pump();
  EXPECT_EQ(Tip(), L"");
  ::DestroyWindow(elsewhere);
  ::SetActiveWindow(m_parent.Handle());
  ::SetFocus(m_grid.Editor());
  PressKey(VK_RETURN);
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_EQ(Tip(), L"No address.");
  PressKey(VK_ESCAPE);
}

TEST_F(KsEmailAddressGridCtrlTest, TimerOfPaintingEndsWithTheFirstLook) {
  Add({L"a@b.org", L"b@b.org"});
  EXPECT_TRUE(PumpUntil([this] { return m_grid.paintTimers > 0; })) << "painting was not held";
  const ULONGLONG end = ::GetTickCount64() + 200;
  PumpUntil([end] { return ::GetTickCount64() > end; });
  EXPECT_LE(m_grid.paintTimers, 2) << "a message that was due already may come";
}

TEST_F(KsEmailAddressGridCtrlTest, DomainModeTakesDomains) {
  m_grid.SetMode(AddressMode::kDomain);
  Add({L"b.org"});
  Edit(0, L"c.org");
  EXPECT_THAT(Rows(), ElementsAre(L"c.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, RowWhoseTextIsDeletedGoes) {
  Add({L"a@b.org", L"b@b.org"});
  Edit(0, L"");
  EXPECT_THAT(Rows(), ElementsAre(L"b@b.org"));
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{0, 0}));
}

TEST_F(KsEmailAddressGridCtrlTest, NewRowIsTypedAtTheEndAndThenSorted) {
  Add({L"b@b.org", L"c@b.org"});
  EXPECT_TRUE(m_grid.BeginNewRow());
  EXPECT_TRUE(m_grid.IsEditing());
  EXPECT_EQ(m_grid.EditCell(), (GridCell{2, 0}));
  EXPECT_TRUE(HasFocus(m_grid.Editor()));
  EXPECT_EQ(Tip(), L"Type one.");
  SetEditText(m_grid.Editor(), L"A@b.org");
  PressKey(VK_RETURN);
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org", L"b@b.org", L"c@b.org"));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(0));
  EXPECT_EQ(Tip(), L"");
}

TEST_F(KsEmailAddressGridCtrlTest, NewRowThatIsLeftEmptyOrCancelledGoesAgain) {
  Add({L"a@b.org"});
  EXPECT_TRUE(m_grid.BeginNewRow());
  PressKey(VK_ESCAPE);
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org"));
  EXPECT_TRUE(m_grid.BeginNewRow());
  ::SetFocus(m_other);
  Pump();
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org"));
  EXPECT_FALSE(m_grid.IsEditing());
}

TEST_F(KsEmailAddressGridCtrlTest, NewRowIsNoAddressYet) {
  Add({L"a@b.org"});
  EXPECT_TRUE(m_grid.BeginNewRow());
  AddressSet set;
  m_grid.ReadAddresses(&set);
  EXPECT_THAT(set, ElementsAre(L"a@b.org"));
  EXPECT_EQ(m_grid.AddAddress(L"0@b.org"), 0);
  EXPECT_EQ(m_grid.AddAddress(L"z@b.org"), 2);
  EXPECT_THAT(Rows(), ElementsAre(L"0@b.org", L"a@b.org", L"z@b.org", L""));
  EXPECT_EQ(m_grid.EditCell(), (GridCell{3, 0}));
  SetEditText(m_grid.Editor(), L"m@b.org");
  PressKey(VK_RETURN);
  EXPECT_THAT(Rows(), ElementsAre(L"0@b.org", L"a@b.org", L"m@b.org", L"z@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, SecondNewRowEndsTheFirstUnlessItIsRefused) {
  EXPECT_TRUE(m_grid.BeginNewRow());
  SetEditText(m_grid.Editor(), L"a@b.org");
  EXPECT_TRUE(m_grid.BeginNewRow());
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org", L""));
  SetEditText(m_grid.Editor(), L"nonsense");
  EXPECT_FALSE(m_grid.BeginNewRow());
  EXPECT_EQ(m_grid.EditCell(), (GridCell{1, 0}));
  EXPECT_EQ(WindowText(m_grid.Editor()), L"nonsense");
  m_grid.ClearEditState();
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, DisabledGridStartsNoRow) {
  ::EnableWindow(m_grid.Handle(), FALSE);
  EXPECT_FALSE(m_grid.BeginNewRow());
  EXPECT_EQ(m_grid.ItemCount(), 0);
}

TEST_F(KsEmailAddressGridCtrlTest, SelectedRowsAreRemovedTogether) {
  Add({L"a@b.org", L"b@b.org", L"c@b.org", L"d@b.org", L"e@b.org"});
  Click(m_grid, 1, 1);
  Click(m_grid, 3, 1, MK_CONTROL);
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(1, 3));
  m_grid.RemoveSelected();
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org", L"c@b.org", L"e@b.org"));
  EXPECT_EQ(m_grid.FocusCell(), (GridCell{1, 0}));
  EXPECT_THAT(m_grid.SelectedItems(), ElementsAre(1)) << "the key can be pressed again";
}

TEST_F(KsEmailAddressGridCtrlTest, AllRowsCanBeRemoved) {
  Add({L"a@b.org", L"b@b.org"});
  PressWith(VK_CONTROL, L'A');
  EXPECT_EQ(m_grid.SelectedCount(), 2);
  m_parent.itemChanges.clear();
  m_grid.RemoveSelected();
  EXPECT_EQ(m_grid.ItemCount(), 0);
  EXPECT_FALSE(m_parent.itemChanges.empty()) << "the parent hears that nothing is selected";
  EXPECT_EQ(m_grid.SelectedCount(), 0);
  EXPECT_EQ(m_grid.AddAddress(L"c@b.org"), 0);
}

TEST_F(KsEmailAddressGridCtrlTest, RemovingWithNothingSelectedRemovesNothing) {
  Add({L"a@b.org"});
  m_grid.RemoveSelected();
  EXPECT_EQ(m_grid.ItemCount(), 1);
}

TEST_F(KsEmailAddressGridCtrlTest, RemovingGivesAnOpenEditUp) {
  Add({L"a@b.org", L"b@b.org"});
  Click(m_grid, 0, 0);
  ASSERT_TRUE(m_grid.IsEditing());
  SetEditText(m_grid.Editor(), L"nonsense");
  m_grid.RemoveSelected();
  EXPECT_FALSE(m_grid.IsEditing());
  EXPECT_THAT(Rows(), ElementsAre(L"b@b.org"));
}

TEST_F(KsEmailAddressGridCtrlTest, InsertAndDeleteKeysAreTheParents) {
  Add({L"a@b.org"});
  PressKey(VK_INSERT);
  PressKey(VK_DELETE);
  PressKey(VK_HOME);
  EXPECT_THAT(m_parent.keyUps, ElementsAre(VK_INSERT, VK_DELETE));
}

TEST_F(KsEmailAddressGridCtrlTest, DeleteInsideAnEditorIsTheEditors) {
  Add({L"a@b.org"});
  m_grid.ActOnCell(0, 0, nullptr);
  PressKey(VK_DELETE);
  PressKey(VK_INSERT);
  EXPECT_TRUE(m_parent.keyUps.empty());
  EXPECT_EQ(WindowText(m_grid.Editor()), L"");
  PressKey(VK_ESCAPE);
}

TEST_F(KsEmailAddressGridCtrlTest, SelectedAddressesAreCopiedOneALine) {
  Add({L"a@b.org", L"b@b.org", L"c@b.org"});
  Click(m_grid, 0, 1);
  Click(m_grid, 2, 1, MK_CONTROL);
  PressWith(VK_CONTROL, L'C');
  EXPECT_EQ(ClipboardText(m_grid.Handle()), L"a@b.org\r\nc@b.org\r\n");
}

TEST_F(KsEmailAddressGridCtrlTest, PastedAddressesBecomeRowsAndOtherTextsAreCounted) {
  Add({L"a@b.org"});
  ASSERT_TRUE(
      SetClipboardText(m_grid.Handle(), L"Zoe <zoe@b.org>; A@b.org,mia@b.org\r\nnonsense\r\n"));
  PressWith(VK_CONTROL, L'V');
  EXPECT_THAT(Rows(), ElementsAre(L"a@b.org", L"mia@b.org", L"zoe@b.org"));
  EXPECT_EQ(Tip(), L"2 left out.");
  EXPECT_EQ(m_grid.SelectedCount(), 3);
}

TEST_F(KsEmailAddressGridCtrlTest, EditorIsNamedByItsPrompt) {
  Add({L"a@b.org"});
  m_grid.ActOnCell(0, 0, nullptr);
  EXPECT_EQ(WindowText(::GetWindow(m_grid.Editor(), GW_HWNDPREV)), L"Address");
  PressKey(VK_ESCAPE);
}

TEST_F(KsEmailAddressGridCtrlTest, ConstructorJoinsTheThreadToAnApartmentForTheGridsLife) {
  bool within = false;
  bool after = false;
  std::thread([&within, &after] {
    const ModuleStateGuard guard;
    {
      const KsEmailAddressGridCtrl grid;
      within = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED) == S_FALSE;
      ::CoUninitialize();
    }
    after = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED) == S_OK;
    ::CoUninitialize();
  }).join();
  EXPECT_TRUE(within);
  EXPECT_TRUE(after);
}

TEST_F(KsEmailAddressGridCtrlTest, RowsAfterEachAdditionAreThoseOfARewriteFromASet) {
  AddressSet reference;
  for (int i = 0; i < 150; ++i) {
    const std::wstring text = L"N" + std::to_wstring(i * 7919 % 97) + L"@B.org";
    const int row = m_grid.AddAddress(text);
    // All rows are read into a set, the lower-case text is added, and the rows are written anew.
    m_grid.ReadAddresses(&reference);
    reference.insert(ToLower(text));
    const std::vector<std::wstring> rows = Rows();
    ASSERT_TRUE(std::equal(rows.begin(), rows.end(), reference.begin(), reference.end()));
    ASSERT_EQ(rows.at(static_cast<size_t>(row)), ToLower(text));
  }
}

TEST_F(KsEmailAddressGridCtrlTest, ThousandsOfAddressesKeepOrderAndUniqueness) {
  for (int i = 0; i < 2000; ++i) {
    m_grid.AddAddress(L"Name" + std::to_wstring(i * 7919 % 1500) + L"@B.org");
  }
  const std::vector<std::wstring> rows = Rows();
  EXPECT_EQ(rows.size(), 1500U);
  EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end()));
}

}  // namespace
}  // namespace postmarker::test
