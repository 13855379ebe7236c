#include <windows.h>

#include <commctrl.h>

#include <gmock/gmock.h>

#include "settings/GlobalSettings.h"
#include "wizard/ClientGrid_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

constexpr UINT kActivityMessage = 0x65C;

class ClientPageTest : public WizardFixture {
 protected:
  ClientPageTest() { m_request.clientName.clear(); }

  std::unique_ptr<WizardSession> StartAtClients() {
    auto session = std::make_unique<WizardSession>(&WizardFixture::RunSheet, &m_request);
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    session->WaitForPage(Page::kClients);
    return session;
  }

  // Presses Next, which shows the tip and stays.
  static void ExpectRefusal(const WizardSession& session) {
    session.ClickButton(kNextButton);
    HWND tip = nullptr;
    ASSERT_TRUE(WaitUntil([&tip] {
      tip = FindVisibleWindow(L"KsToolTipWnd");
      return tip != nullptr;
    }));
    EXPECT_EQ(TextOf(tip),
              L"Please select a mail program. Programs with a note below their name cannot be set "
              L"up.");
    EXPECT_TRUE(session.IsOn(Page::kClients));
  }

  static bool IsTipHidden() { return FindVisibleWindow(L"KsToolTipWnd") == nullptr; }
};

TEST_F(ClientPageTest, RequestWithoutAClientShowsThePageBetweenWelcomeAndFolders) {
  SetActionPlugin(L"Plain");
  const auto session = StartAtClients();
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
}

TEST_F(ClientPageTest, RequestWithAClientShowsNoClientPage) {
  m_request.clientName = L"Windows Mail";
  const auto session = StartAtFolders();
  EXPECT_TRUE(session->IsOn(Page::kFolders));
}

TEST_F(ClientPageTest, EachSupportedClientHasATileInTheOrderOfTheTable) {
  const auto session = StartAtClients();
  EXPECT_THAT(TileTexts(*session), ElementsAre(L"Plain", L"Local", L"Windows Mail", L"Still"));
}

TEST_F(ClientPageTest, UnsupportedClientHasNoTileEvenIfItIsNotInstalled) {
  m_clients.presence[1] = {.isInstalled = false, .isSupported = false};
  const auto session = StartAtClients();
  EXPECT_THAT(TileTexts(*session), ElementsAre(L"Plain", L"Windows Mail", L"Still"));
}

TEST_F(ClientPageTest, MissingClientIsNotFoundAndNotAskedWhetherItIsReady) {
  m_clients.presence[4].isInstalled = false;
  const auto session = StartAtClients();
  EXPECT_THAT(TileTexts(*session),
              ElementsAre(L"Plain", L"Local", L"Windows Mail", L"Still, Not found"));
  EXPECT_EQ(m_clients.presence[4].readyQuestions, 0);
  ClickTile(*session, L"Still, Not found");
  ExpectRefusal(*session);
}

TEST_F(ClientPageTest, ClientWithoutItsExtensionSaysSoAndCannotBeChosen) {
  m_clients.presence[0].isReady = false;
  const auto session = StartAtClients();
  EXPECT_EQ(TileTexts(*session).front(), L"Plain, Extension missing");
  ClickTile(*session, L"Plain, Extension missing");
  ExpectRefusal(*session);
  EXPECT_EQ(GetActionPlugin(), L"");
}

TEST_F(ClientPageTest, NewUserFindsNothingSelected) {
  const auto session = StartAtClients();
  ExpectRefusal(*session);
}

TEST_F(ClientPageTest, UnknownLastClientSelectsNothing) {
  SetActionPlugin(L"Some Other Mailer");
  const auto session = StartAtClients();
  ExpectRefusal(*session);
}

TEST_F(ClientPageTest, LastClientIsSelectedWhateverTheCase) {
  SetActionPlugin(L"LOCAL");
  const auto session = StartAtClients();
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
  EXPECT_EQ(m_request.clientName, L"Local");
}

TEST_F(ClientPageTest, OutlookExpressSelectsTheTileOfWindowsMail) {
  SetActionPlugin(L"outlook express");
  const auto session = StartAtClients();
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
  EXPECT_EQ(m_request.clientName, L"Windows Mail");
}

TEST_F(ClientPageTest, DisabledLastClientIsSelectedButNotTaken) {
  SetActionPlugin(L"Local");
  m_clients.presence[1].isReady = false;
  const auto session = StartAtClients();
  ExpectRefusal(*session);
  EXPECT_EQ(m_request.clientName, L"");
}

TEST_F(ClientPageTest, ClickedTileIsTakenAndStoredAtOnce) {
  const auto session = StartAtClients();
  ClickTile(*session, L"Still");
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
  EXPECT_EQ(m_request.clientName, L"Still");
  EXPECT_EQ(GetActionPlugin(), L"Still");
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_EQ(GetActionPlugin(), L"Still");
}

TEST_F(ClientPageTest, ChoiceIsFinalOnceThePageIsLeft) {
  SetActionPlugin(L"Plain");
  const auto session = StartAtClients();
  const HWND grid = session->Control(kClientGrid);
  EXPECT_TRUE(::IsWindowEnabled(grid));
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
  EXPECT_FALSE(::IsWindowEnabled(grid));
  WizardSession::Require([&] { return !session->IsButtonUsable(kBackButton); }, "Back is there");
}

TEST_F(ClientPageTest, SelectingHidesTheTip) {
  const auto session = StartAtClients();
  ExpectRefusal(*session);
  ClickTile(*session, L"Plain");
  EXPECT_TRUE(WaitUntil(IsTipHidden, std::chrono::milliseconds(1500)));
}

TEST_F(ClientPageTest, MovedSheetTakesTheTipAlong) {
  const auto session = StartAtClients();
  ExpectRefusal(*session);
  RECT place = {};
  ::GetWindowRect(session->Sheet(), &place);
  ::SetWindowPos(session->Sheet(), nullptr, place.left + 7, place.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  EXPECT_TRUE(WaitUntil(IsTipHidden, std::chrono::milliseconds(1500)));
}

TEST_F(ClientPageTest, ActivityMessageHidesTheTip) {
  const auto session = StartAtClients();
  ExpectRefusal(*session);
  ::SendMessageW(session->CurrentPage(), kActivityMessage, 0, 0);
  EXPECT_TRUE(IsTipHidden());
}

TEST_F(ClientPageTest, GridHasTheFocusAndColumnsOfTheScaledTileWidth) {
  const auto session = StartAtClients();
  const HWND grid = session->Control(kClientGrid);
  EXPECT_TRUE(WaitUntil([&] {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(grid, nullptr), &info);
    return info.hwndFocus == grid;
  }));
  EXPECT_EQ(::SendMessageW(grid, LVM_GETCOLUMNWIDTH, 0, 0), 125);
}

TEST_F(ClientPageTest, ArrowKeysChooseAndReturnGoesOn) {
  const auto session = StartAtClients();
  ::SetForegroundWindow(session->Sheet());
  PressKey(VK_HOME);
  PressKey(VK_RIGHT);
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kFolders);
  EXPECT_EQ(m_request.clientName, L"Local");
}

}  // namespace
}  // namespace postmarker::test
