#include <gmock/gmock.h>

#include <memory>

#include "support/TrainingPages_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr int kHeading = 10001;

// The map as its keys with the check states.
std::vector<std::pair<std::wstring, uint32_t>> Checks(const TrainFolderMap& folders) {
  std::vector<std::pair<std::wstring, uint32_t>> checks;
  for (const auto& [id, entry] : folders) {
    checks.emplace_back(id, entry.checked);
  }
  return checks;
}

class TrainingPagesTest : public WizardFixture {
 protected:
  TrainingPagesTest() { m_request.offerTraining = 1; }

  std::unique_ptr<WizardSession> StartAtTraining() {
    auto session = StartAtFolders();
    GoToTraining(*session, L"Trash");
    return session;
  }

  // Adds an item to the page's tree. The page frees the folder.
  static HTREEITEM AddItem(const WizardSession& session, const wchar_t* text, HTREEITEM parent,
                           std::unique_ptr<MailFolderRef> folder) {
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM;
    insert.item.pszText = const_cast<wchar_t*>(text);
    insert.item.lParam = reinterpret_cast<LPARAM>(folder.release());
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(session.Tree(), TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
  }
};

TEST_F(TrainingPagesTest, ComeBetweenAddressesAndSettingsWithBackAndNext) {
  const auto session = StartAtTraining();
  EXPECT_EQ(TextOf(session->Control(kHeading)), L"Select folders that contain spam");
  EXPECT_FALSE(::IsWindowVisible(session->Control(10038)));
  EXPECT_TRUE(WaitUntil([&] { return session->IsButtonUsable(kBackButton); }));
  EXPECT_TRUE(session->IsButtonUsable(kNextButton));
  GoToSecondTraining(*session);
  EXPECT_EQ(TextOf(session->Control(kHeading)), L"Select folders with messages that you want");
  EXPECT_FALSE(::IsWindowVisible(session->Control(10037)));
  EXPECT_TRUE(session->IsButtonUsable(kBackButton));
  EXPECT_TRUE(session->IsButtonUsable(kNextButton));
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
}

TEST_F(TrainingPagesTest, AreNotThereUnlessTheHostOffersThem) {
  m_request.offerTraining = 0;
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Inbox");
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_THAT(m_request.trainFoldersFirst, IsEmpty());
  EXPECT_THAT(m_request.trainFoldersSecond, IsEmpty());
}

TEST_F(TrainingPagesTest, ShowTheClientsFoldersWithBoxesThatAreNotChecked) {
  const auto session = StartAtTraining();
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [ ]", "  Inbox [ ]", "    Friends [ ]", "  Trash [ ]"));
  GoToSecondTraining(*session);
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [ ]", "  Inbox [ ]", "    Friends [ ]", "  Trash [ ]"));
  EXPECT_EQ(m_clients.client.listings, 1) << "the client was asked for its folders again";
}

TEST_F(TrainingPagesTest, PageLeftWithNothingCheckedGivesAllFoldersUnchecked) {
  const auto session = StartAtTraining();
  EXPECT_THAT(m_request.trainFoldersFirst, IsEmpty());
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 0U), Pair(L"2", 0U), Pair(L"4", 0U), Pair(L"root", 0U)));
  EXPECT_THAT(m_request.trainFoldersSecond, IsEmpty());
}

TEST_F(TrainingPagesTest, CheckedStoreGivesAllItsFoldersChecked) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Post");
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [x]", "  Inbox [x]", "    Friends [x]", "  Trash [x]"));
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 1U), Pair(L"2", 1U), Pair(L"4", 1U), Pair(L"root", 1U)));
  EXPECT_EQ(m_request.trainFoldersFirst[L"2"].folder, SmallStore()[2]);
}

TEST_F(TrainingPagesTest, UncheckedChildLeavesItsParentChecked) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Post");
  ClickBox(*session, L"Friends");
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 1U), Pair(L"2", 0U), Pair(L"4", 1U), Pair(L"root", 1U)));
}

TEST_F(TrainingPagesTest, EachPageHasAMapOfItsOwn) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Trash");
  GoToSecondTraining(*session);
  ClickBox(*session, L"Inbox", true);
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 0U), Pair(L"2", 0U), Pair(L"4", 1U), Pair(L"root", 0U)));
  EXPECT_THAT(Checks(m_request.trainFoldersSecond),
              ElementsAre(Pair(L"1", 1U), Pair(L"2", 1U), Pair(L"4", 0U), Pair(L"root", 0U)));
}

TEST_F(TrainingPagesTest, GoingBackKeepsTheChecksAndLeavingAgainReplacesTheMap) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Inbox");
  GoToSecondTraining(*session);
  ClickBox(*session, L"Trash");
  session->ClickButton(kBackButton);
  WaitForTraining(*session, TrainingPage::kFirst);
  EXPECT_EQ(Checks(m_request.trainFoldersSecond)[2], std::pair(std::wstring(L"4"), 1U))
      << "leaving by Back did not fill the map";
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [ ]", "  Inbox [x]", "    Friends [x]", "  Trash [ ]"));
  ClickBox(*session, L"Friends");
  m_request.trainFoldersFirst[L"stale"] = {};
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 1U), Pair(L"2", 0U), Pair(L"4", 0U), Pair(L"root", 0U)));
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [ ]", "  Inbox [ ]", "    Friends [ ]", "  Trash [x]"));
}

TEST_F(TrainingPagesTest, WhatTheHostPutIntoTheMapsIsReplaced) {
  m_request.trainFoldersFirst[L"1"].checked = 7;
  m_request.trainFoldersFirst[L"old"] = {};
  const auto session = StartAtTraining();
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 0U), Pair(L"2", 0U), Pair(L"4", 0U), Pair(L"root", 0U)));
}

TEST_F(TrainingPagesTest, CancelLeavesTheMapsAsTheyWereReached) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Trash");
  GoToSecondTraining(*session);
  ClickBox(*session, L"Inbox");
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_EQ(m_request.trainFoldersFirst.size(), 4U);
  EXPECT_THAT(m_request.trainFoldersSecond, IsEmpty());
}

TEST_F(TrainingPagesTest, FolderWhoseIdIsInTwoStoresIsThereOnceWithTheStateOfTheLast) {
  m_clients.client.folders = {{L"\\\\Home", "home", "s1", 1},
                              {L"\\\\Home\\Trash", "4", "s1", 1},
                              {L"\\\\Work", "work", "s2", 1},
                              {L"\\\\Work\\Trash", "4", "s2", 1}};
  const auto session = StartAtTraining();
  ClickBox(*session, L"Home");
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"4", 0U), Pair(L"home", 1U), Pair(L"work", 0U)));
  EXPECT_EQ(m_request.trainFoldersFirst[L"4"].folder.secondId, "s2");
}

TEST_F(TrainingPagesTest, KeysAreIdsWidenedByTheThreadsCodePage) {
  m_clients.client.folders.push_back({L"\\\\Post\\Cafe", "caf\xE9", "store", 1});
  const auto session = StartAtTraining();
  GoToSecondTraining(*session);
  EXPECT_EQ(m_request.trainFoldersFirst.count(Widen("caf\xE9")), 1U);
  EXPECT_EQ(m_request.trainFoldersFirst[Widen("caf\xE9")].folder.firstId, "caf\xE9");
}

TEST_F(TrainingPagesTest, LevelWithoutAFolderGivesNoEntryButPassesItsCheckOn) {
  const auto session = StartAtTraining();
  const HTREEITEM level = AddItem(*session, L"Level", TVI_ROOT, nullptr);
  AddItem(*session, L"Below", level,
          std::make_unique<MailFolderRef>(MailFolderRef{L"\\\\x\\Below", "below", "x", 0}));
  ClickBox(*session, L"Level");
  GoToSecondTraining(*session);
  EXPECT_THAT(Checks(m_request.trainFoldersFirst),
              ElementsAre(Pair(L"1", 0U), Pair(L"2", 0U), Pair(L"4", 0U), Pair(L"below", 1U),
                          Pair(L"root", 0U)));
}

TEST_F(TrainingPagesTest, FolderCreatedBeforeTheFirstVisitIsThereOneCreatedLaterIsNot) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Early");
  GoToTraining(*session, L"Early");
  EXPECT_NE(session->FindItem(L"Early"), nullptr);
  session->ClickButton(kBackButton);
  session->WaitForPage(Page::kPrefill);
  session->ClickButton(kBackButton);
  session->WaitForTree();
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Late");
  GoToTraining(*session, L"Late");
  EXPECT_EQ(session->FindItem(L"Late"), nullptr);
  EXPECT_EQ(session->TreeLines().size(), 5U);
  GoToSecondTraining(*session);
  EXPECT_NE(session->FindItem(L"Late"), nullptr) << "this page was not filled before";
}

TEST_F(TrainingPagesTest, StoreThatIsNewAtALaterVisitIsAdded) {
  const auto session = StartAtTraining();
  ClickBox(*session, L"Trash");
  GoToSecondTraining(*session);
  m_request.folders.push_back({L"\\\\New", "n", "another store", 1});
  session->ClickButton(kBackButton);
  WaitForTraining(*session, TrainingPage::kFirst);
  EXPECT_THAT(session->TreeLines(), ElementsAre("Post* [ ]", "  Inbox [ ]", "    Friends [ ]",
                                                "  Trash [x]", "New* [ ]"));
}

TEST_F(TrainingPagesTest, ClientWithoutFoldersGivesAnEmptyTreeAndAnEmptyMap) {
  m_request.trainFoldersFirst[L"old"] = {};
  const auto session = StartAtFolders();
  session->ClickItem(L"Trash");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  m_request.folders.clear();
  session->ClickButton(kNextButton);
  WaitForTraining(*session, TrainingPage::kFirst);
  EXPECT_THAT(session->TreeLines(), IsEmpty());
  GoToSecondTraining(*session);
  EXPECT_THAT(m_request.trainFoldersFirst, IsEmpty());
}

TEST_F(TrainingPagesTest, RightClickOnALabelSelectsTheItemAndChecksNothing) {
  const auto session = StartAtTraining();
  session->ClickItem(L"Inbox");
  session->ClickItem(L"Friends", true);
  EXPECT_EQ(session->SelectedText(), L"Friends");
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Post* [ ]", "  Inbox [ ]", "    Friends [ ]", "  Trash [ ]"));
}

}  // namespace
}  // namespace postmarker::test
