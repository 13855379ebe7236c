// Changing the found addresses: the grid, its buttons and keys.
#include <windows.h>

#include <commctrl.h>

#include <gmock/gmock.h>

#include "settings/AddressLists.h"
#include "wizard/PrefillFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PrefillGridTest : public PrefillFixture {};

TEST_F(PrefillGridTest, NextWithAnOpenEditStays) {
  const auto session = StartAtAddresses({L"anna@b.org"});
  session->ClickControl(kAddButton);
  WaitForEdit(*session);
  ::SendMessageW(session->Sheet(), PSM_PRESSBUTTON, PSBTN_NEXT, 0);
  EXPECT_TRUE(session->IsOn(Page::kPrefill));
  EXPECT_TRUE(IsEditOpen(*session));
}

TEST_F(PrefillGridTest, KeptAddressesReachTheRequestAndTheWhitelist) {
  const auto session = StartAtAddresses({L"Anna@b.org", L"ben@b.org"});
  SelectRow(*session, 1);
  session->ClickControl(kRemoveButton);
  WizardSession::Require([&] { return session->Addresses().size() == 1; }, "nothing was removed");
  Finish(*session);
  EXPECT_THAT(m_request.prefillAddresses, ElementsAre(L"anna@b.org"));
  EXPECT_TRUE(IsAddressWhitelisted(L"anna@b.org"));
  EXPECT_FALSE(IsAddressWhitelisted(L"ben@b.org"));
}

TEST_F(PrefillGridTest, RemovingAllAddsNothingAndRemovesNothingFromAnEarlierWhitelist) {
  AddAddressToWhitelist(L"anna@b.org", false);
  m_request.prefillAddresses = {L"stale@b.org"};
  const auto session = StartAtAddresses({L"anna@b.org", L"ben@b.org"});
  SelectRow(*session, -1);
  session->ClickControl(kRemoveButton);
  WizardSession::Require([&] { return session->Addresses().empty(); }, "nothing was removed");
  Finish(*session);
  EXPECT_THAT(m_request.prefillAddresses, IsEmpty());
  EXPECT_TRUE(IsAddressWhitelisted(L"anna@b.org"));
  EXPECT_FALSE(IsAddressWhitelisted(L"ben@b.org"));
  EXPECT_FALSE(IsAddressWhitelisted(L"stale@b.org"));
}

TEST_F(PrefillGridTest, RemoveIsOfferedOnlyWhileRowsAreSelected) {
  const auto session = StartAtAddresses({L"anna@b.org", L"ben@b.org"});
  const auto isOffered = [&] {
    return ::IsWindowEnabled(session->Control(kRemoveButton)) != FALSE;
  };
  EXPECT_FALSE(isOffered());
  SelectRow(*session, 0);
  EXPECT_TRUE(isOffered());
  SelectRow(*session, 0, false);
  EXPECT_FALSE(isOffered());
}

TEST_F(PrefillGridTest, AddedAddressTakesItsSortedPlace) {
  const auto session = StartAtAddresses({L"anna@b.org", L"zoe@b.org"});
  session->ClickControl(kAddButton);
  WaitForEdit(*session);
  Type(*session, L"Mia@b.org");
  ::PostMessageW(::FindWindowExW(session->AddressGrid(), nullptr, L"Edit", nullptr), WM_KEYDOWN,
                 VK_RETURN, 1);
  WizardSession::Require([&] { return !IsEditOpen(*session); }, "the edit stayed");
  EXPECT_THAT(session->Addresses(), ElementsAre(L"anna@b.org", L"mia@b.org", L"zoe@b.org"));
}

TEST_F(PrefillGridTest, InsertAndDeleteKeysAddAndRemove) {
  const auto session = StartAtAddresses({L"anna@b.org", L"ben@b.org"});
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  ::SetForegroundWindow(session->Sheet());
  PressKey(VK_DOWN);
  PressKey(VK_HOME);
  WizardSession::Require([&] { return Ask(*session, kGrid, LVM_GETSELECTEDCOUNT) == 1; },
                         "no row is selected");
  PressKey(VK_DELETE);
  WizardSession::Require([&] { return session->Addresses().size() == 1; }, "nothing was removed");
  EXPECT_THAT(session->Addresses(), ElementsAre(L"ben@b.org"));
  PressKey(VK_INSERT);
  WaitForEdit(*session);
  EXPECT_EQ(Ask(*session, kGrid, LVM_GETITEMCOUNT), 2);
  // Within an edit the two keys are the edit's own.
  PressKey(VK_DELETE);
  PressKey(VK_INSERT);
  PressKey(VK_ESCAPE);
  WizardSession::Require([&] { return !IsEditOpen(*session); }, "the edit stayed");
  EXPECT_THAT(session->Addresses(), ElementsAre(L"ben@b.org"));
}

TEST_F(PrefillGridTest, InsertAndDeleteKeysWorkWhicheverControlHasTheFocus) {
  const auto session = StartAtAddresses({L"anna@b.org", L"ben@b.org", L"carl@b.org"});
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  ::SetForegroundWindow(session->Sheet());
  size_t rows = 3;
  for (const int control : {kAddButton, kRemoveButton}) {
    SelectRow(*session, -1, false);
    SelectRow(*session, 0);
    Focus(*session, control);
    PressKey(VK_DELETE);
    --rows;
    EXPECT_TRUE(WaitUntil([&] { return session->Addresses().size() == rows; })) << control;
    SelectRow(*session, 0);
    Focus(*session, control);
    PressKey(VK_INSERT);
    WaitForEdit(*session);
    PressKey(VK_ESCAPE);
    WizardSession::Require([&] { return !IsEditOpen(*session); }, "the edit stayed");
  }
  EXPECT_THAT(session->Addresses(), ElementsAre(L"carl@b.org"));
}

TEST_F(PrefillGridTest, KeysOfOtherCommandsAndOfTheSheetsButtonsRemoveNothing) {
  const auto session = StartAtAddresses({L"anna@b.org"});
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  ::SetForegroundWindow(session->Sheet());
  SelectRow(*session, 0);
  Focus(*session, kAddButton);
  PressKey(VK_DELETE, {VK_SHIFT});
  PressKey(VK_INSERT, {VK_CONTROL});
  FocusWindow(*session, session->Button(kNextButton));
  PressKey(VK_DELETE);
  PressKey(VK_INSERT);
  // A key that does something, after which the others must have come through.
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kSettings);
  EXPECT_THAT(m_request.prefillAddresses, ElementsAre(L"anna@b.org"));
}

TEST_F(PrefillGridTest, InsertWhileAddressesAreReadOpensNoRow) {
  CollectUntilStopped();
  const auto session = StartAtPrefill();
  ::SetForegroundWindow(session->Sheet());
  Focus(*session, kStopButton);
  PressKey(VK_INSERT);
  PressKey(VK_SPACE);
  session->WaitForAddresses();
  EXPECT_FALSE(IsEditOpen(*session));
  EXPECT_EQ(Ask(*session, kGrid, LVM_GETITEMCOUNT), 0);
}

TEST_F(PrefillGridTest, ComingBackShowsTheGridAsItWasLeftAndReadsNothingAgain) {
  const auto session = StartAtAddresses({L"anna@b.org", L"ben@b.org"});
  SelectRow(*session, 0);
  session->ClickControl(kRemoveButton);
  WizardSession::Require([&] { return session->Addresses().size() == 1; }, "nothing was removed");
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
  session->ClickButton(kBackButton);
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(), ElementsAre(L"ben@b.org"));
  EXPECT_EQ(m_clients.client.collections, 1);
  EXPECT_TRUE(WaitUntil([&] { return session->IsButtonUsable(kNextButton); }));
}

}  // namespace
}  // namespace postmarker::test
