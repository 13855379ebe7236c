#include <gmock/gmock.h>

#include "settings/FilterSettings.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

constexpr int kMoveBox = 13029;
constexpr int kBlockedBox = 13030;
constexpr int kUnblockedBox = 13031;

class SettingsPageTest : public WizardFixture {
 protected:
  static bool IsTicked(const WizardSession& session, int box) {
    return ::SendMessageW(session.Control(box), BM_GETCHECK, 0, 0) == BST_CHECKED;
  }
  void Save(uint32_t move, uint32_t blocked, uint32_t unblocked) const {
    FilterSettings settings(m_request.clientName);
    settings.SetMoveEmails(move);
    settings.SetAddBlocked(blocked);
    settings.SetAddUnblocked(unblocked);
  }
};

TEST_F(SettingsPageTest, BoxesShowTheSavedValues) {
  Save(1, 1, 0);
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  EXPECT_TRUE(IsTicked(*session, kMoveBox));
  EXPECT_TRUE(IsTicked(*session, kBlockedBox));
  EXPECT_FALSE(IsTicked(*session, kUnblockedBox));
  EXPECT_TRUE(::IsWindowEnabled(session->Control(kMoveBox)));
}

TEST_F(SettingsPageTest, FreshUserSeesTheDefaults) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  EXPECT_FALSE(IsTicked(*session, kMoveBox));
  EXPECT_FALSE(IsTicked(*session, kBlockedBox));
  EXPECT_TRUE(IsTicked(*session, kUnblockedBox));
}

TEST_F(SettingsPageTest, ClientThatMovesNothingShowsItsValueGreyedAndKeepsItAtFinish) {
  m_request.clientName = L"Still";
  Save(1, 0, 0);
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  EXPECT_TRUE(IsTicked(*session, kMoveBox));
  EXPECT_FALSE(::IsWindowEnabled(session->Control(kMoveBox)));
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_request.moveEmails, 1);
}

TEST_F(SettingsPageTest, ClickedBoxesReachTheRequestAtFinish) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  session->ClickControl(kMoveBox);
  session->ClickControl(kBlockedBox);
  session->ClickControl(kUnblockedBox);
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_request.moveEmails, 1);
  EXPECT_EQ(m_request.addBlocked, 1);
  EXPECT_EQ(m_request.addUnblocked, 0);
}

TEST_F(SettingsPageTest, BackStoresTheBoxesAndTheFolderPageIsAsItWasLeft) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickControl(kMoveBox);
  WizardSession::Require([&] { return IsTicked(*session, kMoveBox); }, "the box was not ticked");
  session->ClickButton(kBackButton);
  session->WaitForPage(Page::kPrefill);
  EXPECT_EQ(m_request.moveEmails, 1);
  session->ClickButton(kBackButton);
  session->WaitForPage(Page::kFolders);
  EXPECT_EQ(session->SelectedText(), L"Friends");
  EXPECT_EQ(m_clients.client.listings, 1);
  session->ClickButton(kNextButton);
  session->PassAddresses();
  EXPECT_EQ(m_clients.client.collections, 1);
  EXPECT_TRUE(IsTicked(*session, kMoveBox));
}

TEST_F(SettingsPageTest, PageOffersBackAndFinish) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  EXPECT_TRUE(WaitUntil([&] { return session->IsButtonUsable(kFinishButton); }));
  EXPECT_TRUE(session->IsButtonUsable(kBackButton));
  EXPECT_FALSE(session->IsButtonUsable(kNextButton));
}

TEST_F(SettingsPageTest, CancelStoresNoAnswer) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  session->ClickControl(kMoveBox);
  WizardSession::Require([&] { return IsTicked(*session, kMoveBox); }, "the box was not ticked");
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_EQ(FilterSettings(L"Plain").GetMoveEmails(), 0U);
}

}  // namespace
}  // namespace postmarker::test
