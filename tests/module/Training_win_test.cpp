// The training pages of the built module, by a person's mouse and keyboard, up to the maps that the
// host gets back.
#include <windows.h>

#include <gmock/gmock.h>

#include "module/ModuleFixture_win.h"
#include "support/TrainingPages_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TrainingTest : public ModuleFixture {
 protected:
  TrainingTest() {
    m_request.offerTraining = 1;
    Load();
  }

  // The folders of a map, by the order of their ids: the last level of the path, and a mark.
  static std::vector<std::string> Lines(const TrainFolderMap& folders) {
    std::vector<std::string> lines;
    for (const auto& [id, entry] : folders) {
      EXPECT_EQ(id, Widen(entry.folder.firstId));
      EXPECT_EQ(entry.folder.secondId, "{ANNA}");
      lines.push_back((entry.checked != 0 ? "[x] " : "[ ] ") + NarrowUtf8(entry.folder.name));
    }
    return lines;
  }

  static HWND Focus(const WizardSession& session) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(session.Sheet(), nullptr), &info);
    return info.hwndFocus;
  }
  static void WaitForFocus(const WizardSession& session) {
    WizardSession::Require([&] { return Focus(session) == session.Tree(); },
                           "the tree has no focus");
  }
};

TEST_F(TrainingTest, ClicksOnCheckBoxesReachTheHostsMaps) {
  const auto session = StartAtFolders();
  GoToTraining(*session, L"Junk");
  ClickBox(*session, L"Junk");
  ClickBox(*session, L"Grüße");
  EXPECT_THAT(session->TreeLines(), ElementsAre("Anna* [ ]", "  Inbox [ ]", "    Grüße [x]",
                                                "  Sent Items [ ]", "  Junk [x]"));
  GoToSecondTraining(*session);
  ClickBox(*session, L"Anna");
  ClickBox(*session, L"Junk", true);
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_THAT(Lines(m_request.trainFoldersFirst),
              ElementsAre("[ ] \\\\Anna", "[ ] \\\\Anna\\Inbox", "[x] \\\\Anna\\Inbox\\Grüße",
                          "[ ] \\\\Anna\\Sent Items", "[x] \\\\Anna\\Junk"));
  EXPECT_THAT(Lines(m_request.trainFoldersSecond),
              ElementsAre("[x] \\\\Anna", "[x] \\\\Anna\\Inbox", "[x] \\\\Anna\\Inbox\\Grüße",
                          "[x] \\\\Anna\\Sent Items", "[ ] \\\\Anna\\Junk"));
}

TEST_F(TrainingTest, KeysAloneReachTheHostsMaps) {
  const auto session = StartAtFolders();
  ::SetForegroundWindow(session->Sheet());
  GoToTraining(*session, L"Junk");
  WaitForFocus(*session);
  PressKey(VK_HOME);
  PressKey(VK_DOWN);
  PressKey(VK_SPACE);
  WizardSession::Require([&] { return session->TreeLines()[2] == "    Grüße [x]"; },
                         "the blank checked nothing");
  PressKey(VK_RETURN);
  WaitForTraining(*session, TrainingPage::kSecond);
  WaitForFocus(*session);
  PressKey(VK_END);
  PressKey(VK_SPACE);
  WizardSession::Require([&] { return session->TreeLines()[4] == "  Junk [x]"; },
                         "the blank checked nothing");
  PressKey(L'B', {VK_MENU});
  WaitForTraining(*session, TrainingPage::kFirst);
  PressKey(VK_SPACE);
  WizardSession::Require([&] { return session->TreeLines()[2] == "    Grüße [ ]"; },
                         "the page came back without its focus");
  PressKey(VK_RETURN);
  WaitForTraining(*session, TrainingPage::kSecond);
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kSettings);
  PressKey(VK_RETURN);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_THAT(Lines(m_request.trainFoldersFirst),
              ElementsAre("[ ] \\\\Anna", "[ ] \\\\Anna\\Inbox", "[ ] \\\\Anna\\Inbox\\Grüße",
                          "[ ] \\\\Anna\\Sent Items", "[ ] \\\\Anna\\Junk"));
  EXPECT_THAT(Lines(m_request.trainFoldersSecond),
              ElementsAre("[ ] \\\\Anna", "[ ] \\\\Anna\\Inbox", "[ ] \\\\Anna\\Inbox\\Grüße",
                          "[ ] \\\\Anna\\Sent Items", "[x] \\\\Anna\\Junk"));
}

TEST_F(TrainingTest, HostThatOffersNoTrainingGetsNoPagesAndEmptyMaps) {
  m_request.offerTraining = 0;
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  EXPECT_THAT(m_request.trainFoldersFirst, IsEmpty());
  EXPECT_THAT(m_request.trainFoldersSecond, IsEmpty());
}

TEST_F(TrainingTest, GivenClientWithTrainingHasSixPages) {
  const auto session = StartAtFolders();
  const auto tabs =
      reinterpret_cast<HWND>(::SendMessageW(session->Sheet(), PSM_GETTABCONTROL, 0, 0));
  EXPECT_EQ(::SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0), 6);
}

}  // namespace
}  // namespace postmarker::test
