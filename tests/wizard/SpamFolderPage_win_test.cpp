#include <gmock/gmock.h>

#include "settings/FilterSettings.h"
#include "support/Handles_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kBodyText = 10003;
constexpr int kNewFolderButton = 10022;
constexpr wchar_t kToolTipClass[] = L"KsToolTipWnd";

class SpamFolderPageTest : public WizardFixture {
 protected:
  static std::wstring ToolTipText() {
    HWND tip = nullptr;
    WaitUntil([&] { return (tip = FindVisibleWindow(kToolTipClass)) != nullptr; });
    return TextOf(tip);
  }
};

TEST_F(SpamFolderPageTest, ShowsTheClientsFoldersAsATreeWithABoldRoot) {
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Post*", "  Inbox", "    Friends", "  Trash"));
  EXPECT_EQ(m_clients.client.listings, 1);
}

TEST_F(SpamFolderPageTest, TreeHasTheFocusOnceItIsFilled) {
  const auto session = StartAtFolders();
  GUITHREADINFO info = {};
  info.cbSize = sizeof(info);
  const DWORD thread = ::GetWindowThreadProcessId(session->Sheet(), nullptr);
  EXPECT_TRUE(WaitUntil([&] {
    ::GetGUIThreadInfo(thread, &info);
    return info.hwndFocus == session->Tree();
  }));
}

TEST_F(SpamFolderPageTest, NextComesWithTheTreeAndBackNever) {
  std::atomic<bool> go = false;
  m_clients.client.beforeListing = [&go] {
    while (!go) {
      ::Sleep(1);
    }
  };
  WizardSession session(&WizardFixture::RunSheet, &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForPage(Page::kFolders);
  WizardSession::Require([&] { return !session.IsButtonUsable(kNextButton); }, "Next stayed");
  EXPECT_FALSE(::IsWindowEnabled(session.Tree()));
  EXPECT_THAT(session.TreeLines(), ElementsAre("Reading your folders. Please wait..."));
  go = true;
  session.WaitForTree();
  EXPECT_TRUE(WaitUntil([&] { return session.IsButtonUsable(kNextButton); }));
  EXPECT_FALSE(session.IsButtonUsable(kBackButton));
}

TEST_F(SpamFolderPageTest, BoldRootAndNextShowsTheToolTipAndStays) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Post");
  session->ClickButton(kNextButton);
  EXPECT_EQ(ToolTipText(),
            L"Please select a folder for spam. The bold entries are mailboxes and cannot be used.");
  EXPECT_TRUE(session->IsOn(Page::kFolders));
}

TEST_F(SpamFolderPageTest, ClickInTheTreeHidesTheToolTip) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Post");
  session->ClickButton(kNextButton);
  ASSERT_NE(ToolTipText(), L"");
  session->ClickItem(L"Inbox");
  EXPECT_TRUE(WaitUntil([] { return FindVisibleWindow(kToolTipClass) == nullptr; },
                        std::chrono::milliseconds(1500)));
}

TEST_F(SpamFolderPageTest, ToolTipGoesByItselfAfterThreeSeconds) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Post");
  session->ClickButton(kNextButton);
  ASSERT_NE(ToolTipText(), L"");
  const ULONGLONG shown = ::GetTickCount64();
  EXPECT_TRUE(WaitUntil([] { return FindVisibleWindow(kToolTipClass) == nullptr; },
                        std::chrono::milliseconds(5000)));
  // A second less, as a busy machine may have shown it before it was seen.
  EXPECT_GE(::GetTickCount64() - shown, 2000U) << "it went before it could be read";
}

TEST_F(SpamFolderPageTest, ChoiceIsRecordedOnLeaving) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{L"\\\\Post\\Inbox\\Friends", "2", "store", 1}));
}

TEST_F(SpamFolderPageTest, ArrivingSetsTheSpamFolderFromTheSettings) {
  {
    FilterSettings settings(L"Plain");
    settings.SetSpamFolderId("2");
    settings.SetMessageStoreId("store", 5);
    settings.SetSpamFolderName(L"\\\\Post\\Inbox\\Friends");
  }
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Friends");
  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{L"\\\\Post\\Inbox\\Friends\\", "2", "store", 1}));
}

// The tree itself may mark its first item when it gets the focus; that is a store and can't be
// taken.
TEST_F(SpamFolderPageTest, SavedFolderThatIsGoneSelectsNoFolderAndStaysInTheRequest) {
  {
    FilterSettings settings(L"Plain");
    settings.SetSpamFolderId("77");
    settings.SetMessageStoreId("store", 5);
  }
  const auto session = StartAtFolders();
  EXPECT_THAT(session->SelectedText(), testing::AnyOf(L"", L"Post"));
  EXPECT_EQ(m_request.spamFolder.firstId, "77");
  session->ClickButton(kNextButton);
  EXPECT_NE(ToolTipText(), L"");
  EXPECT_TRUE(session->IsOn(Page::kFolders));
}

TEST_F(SpamFolderPageTest, SavedIdZeroSelectsTheDefaultFolder) {
  m_request.clientName = L"Outlook Express";
  {
    FilterSettings settings(L"Outlook Express");
    settings.SetSpamFolderId("0");
  }
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Trash");
}

TEST_F(SpamFolderPageTest, ClientThatCreatesNoFoldersKeepsButtonAndTextPlain) {
  m_clients.client.canCreate = false;
  const auto session = StartAtFolders();
  EXPECT_FALSE(::IsWindowEnabled(session->Control(kNewFolderButton)));
  EXPECT_EQ(TextOf(session->Control(kBodyText)),
            L"Select the folder that you want to use for spam.");
}

TEST_F(SpamFolderPageTest, ClientThatCreatesFoldersGetsTheSentenceAboutIt) {
  const auto session = StartAtFolders();
  EXPECT_TRUE(::IsWindowEnabled(session->Control(kNewFolderButton)));
  EXPECT_EQ(TextOf(session->Control(kBodyText)),
            L"Select the folder that you want to use for spam. To create a new folder, select the "
            L"folder that is to contain it, and then click New folder.");
}

TEST_F(SpamFolderPageTest, NewFolderIsCreatedShownAndSelected) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Junk");
  EXPECT_TRUE(WaitUntil([&] { return session->SelectedText() == L"Junk"; }));
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post*", "  Inbox", "    Friends", "    Junk", "  Trash"));
  const MailFolderRef created = {L"\\\\Post\\Inbox\\Junk", "new-1", "store", 1};
  EXPECT_EQ(m_request.spamFolder, created);
  EXPECT_EQ(m_request.folders.back(), created);
}

TEST_F(SpamFolderPageTest, NewFolderWithABackslashIsShownAsLevels) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Trash");
  session->CreateFolder(L"a\\b");
  EXPECT_TRUE(WaitUntil([&] { return session->SelectedText() == L"b"; }));
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post*", "  Inbox", "    Friends", "  Trash", "    a", "      b"));
}

TEST_F(SpamFolderPageTest, EmptyNameCreatesNothing) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Trash");
  session->CreateFolder(L"");
  EXPECT_EQ(m_clients.client.creations, 0);
  EXPECT_EQ(session->TreeLines().size(), 4U);
}

TEST_F(SpamFolderPageTest, RefusedParentKeepsThePageWithTheToolTip) {
  m_clients.client.createResult = kFail;
  const auto session = StartAtFolders();
  session->ClickItem(L"Post");
  session->CreateFolder(L"Junk");
  EXPECT_THAT(ToolTipText(), testing::HasSubstr(L"could not be created"));
  EXPECT_TRUE(session->IsOn(Page::kFolders));
  EXPECT_EQ(session->TreeLines().size(), 4U);
  EXPECT_EQ(m_request.folders.size(), 4U);
}

TEST_F(SpamFolderPageTest, NewFolderWithoutAnIdIsARefusal) {
  m_clients.client.createsWithoutId = true;
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Junk");
  EXPECT_THAT(ToolTipText(), testing::HasSubstr(L"could not be created"));
  EXPECT_EQ(session->SelectedText(), L"Inbox");
  EXPECT_EQ(session->TreeLines().size(), 4U);
  EXPECT_EQ(m_request.folders.size(), 4U);
}

// Other processes look for it while the page fills its tree, which asks the client this question.
TEST_F(SpamFolderPageTest, LaunchEventIsSignalledWhileTheTreeIsFilled) {
  std::vector<std::string> seen;
  m_clients.client.whenAskedForCreation = [&seen] {
    const KernelHandle event(::OpenEventW(SYNCHRONIZE, FALSE, L"Global\\Kestrelon.LaunchProcess"));
    if (!event) {
      seen.emplace_back("absent");
      return;
    }
    // A second wait shows that the first did not take the signal.
    const bool isSet = ::WaitForSingleObject(event.Get(), 0) == WAIT_OBJECT_0 &&
                       ::WaitForSingleObject(event.Get(), 0) == WAIT_OBJECT_0;
    seen.emplace_back(isSet ? "signalled" : "not signalled");
  };
  const auto session = StartAtFolders();
  session->ClickButton(IDCANCEL);
  session->Result();
  EXPECT_THAT(seen, ElementsAre("absent", "signalled"));
}

TEST_F(SpamFolderPageTest, RightClickSelectsTheItem) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->ClickItem(L"Trash", true);
  EXPECT_EQ(session->SelectedText(), L"Trash");
}

TEST_F(SpamFolderPageTest, NoFoldersLeaveAnEmptyTreeAndThePageCanOnlyBeCancelled) {
  m_clients.client.folders.clear();
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), IsEmpty());
  session->ClickButton(kNextButton);
  EXPECT_NE(ToolTipText(), L"");
  EXPECT_TRUE(session->IsOn(Page::kFolders));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
}

TEST_F(SpamFolderPageTest, CancelWhileTheWorkerReadsClosesAtOnce) {
  std::atomic<bool> reading = false;
  std::atomic<bool> go = false;
  m_clients.client.beforeListing = [&] {
    reading = true;
    while (!go) {
      ::Sleep(1);
    }
  };
  WizardSession session(&WizardFixture::RunSheet, &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForPage(Page::kFolders);
  WizardSession::Require([&] { return reading.load(); }, "the worker did not start");
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_EQ(m_clients.client.listings, 0);
  go = true;
  EXPECT_TRUE(WaitUntil([&] { return m_clients.client.defaultFolders == 1; }));
  EXPECT_THAT(m_request.folders, IsEmpty());
}

TEST_F(SpamFolderPageTest, FoldersThatAreThereAlreadyStartNoWorker) {
  m_request.folders = SmallStore();
  const auto session = StartAtFolders();
  EXPECT_EQ(m_clients.client.listings, 0);
  EXPECT_EQ(session->TreeLines().size(), 4U);
}

}  // namespace
}  // namespace postmarker::test
