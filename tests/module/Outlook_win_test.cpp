// Whole runs of the wizard with Outlook, and the silent harvest.
#include <windows.h>

#include <gmock/gmock.h>

#include "module/OutlookWizard_win.h"
#include "settings/FilterSettings.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

constexpr int kStopButton = 10043;

class OutlookRunTest : public OutlookWizardTest {
 protected:
  using OutlookWizardTest::OutlookWizardTest;

  // A run from the folders to the end, in which all is used.
  void RunToTheEnd() {
    const auto session = StartAtFolders();
    EXPECT_THAT(session->TreeLines(), ElementsAre("Personal Folders*", "  Inbox",
                                                  "    Gr\xC3\xBC\xC3\x9F"
                                                  "e",
                                                  "  Deleted Items", "  Sent Items", "Public*",
                                                  "  News", "Archive*", "  Sent"));
    session->ClickItem(L"Inbox");
    session->CreateFolder(L"Spam");
    WizardSession::Require([&] { return session->SelectedText() == L"Spam"; }, "no new folder");
    session->ClickButton(kNextButton);
    session->WaitForAddresses();
    EXPECT_THAT(session->Addresses(),
                ElementsAre(L"ann@x.example", L"ben@x.example", L"carl@x.example",
                            L"dora@x.example", L"eve@x.example"));
    session->PassAddresses();
    session->ClickButton(kFinishButton);
    EXPECT_EQ(session->Result(), kWizardFinished);
    EXPECT_EQ(m_request.spamFolder.name, L"\\\\Personal Folders\\Inbox\\Spam");
    const FilterSettings settings(L"Microsoft Outlook");
    EXPECT_EQ(settings.GetSpamFolderId(), "B4F1");
    EXPECT_EQ(Whitelist().size(), 5U);
  }
};

TEST_F(OutlookRunTest, ApplicationOfTheHostServesTheRun) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  m_request.outlookApplication = application.Get();
  RunToTheEnd();
  EXPECT_EQ(m_outlook.Peer().CallsOf("CreateInstance"), 0);
  EXPECT_EQ(m_outlook.Peer().Live(), 1) << "the host's application, and nothing else";
}

TEST_F(OutlookRunTest, OutlookThatDoesNotRunIsStartedForTheRun) {
  RunToTheEnd();
  EXPECT_EQ(m_outlook.Peer().CallsOf("CreateInstance"), 1);
  EXPECT_EQ(m_outlook.Peer().Live(), 0);
}

TEST_F(OutlookRunTest, FailedLogonLeavesNoFolderAndTheRunCanBeCancelled) {
  SetFault("NameSpace.Logon", E_FAIL, 0);
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), testing::IsEmpty());
  session->ClickButton(kNextButton);
  EXPECT_TRUE(session->IsOn(Page::kFolders));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logoff"), 0);
}

TEST_F(OutlookRunTest, StopInTheMiddleOfAFolderShowsWhatWasFound) {
  SetFault(LargeOutlookMailbox(2000, 10), "IMessage.GetRecipientTable", 0, 10);
  const auto session = StartAtAddresses();
  session->WaitForPage(Page::kPrefill);
  WizardSession::Require(
      [this] { return m_outlook.Peer().CallsOf("IMessage.GetRecipientTable") > 20; },
      "no mail was read");
  session->ClickControl(kStopButton);
  session->WaitForAddresses();
  EXPECT_GE(session->Addresses().size(), 20U);
  EXPECT_LT(m_outlook.Peer().CallsOf("IMessage.GetRecipientTable"), 2000);
  EXPECT_EQ(m_outlook.Peer().CallsOf("Item.Email1Address"), 0);
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

TEST_F(OutlookRunTest, SilentHarvestLogsOnFillsTheAllowedListAndLetsOutlookGo) {
  m_module->StartWhitelistPrefill();
  EXPECT_TRUE(WaitUntil([] { return Whitelist().size() == 5; }));
  EXPECT_TRUE(WaitUntil([this] { return m_outlook.Peer().Live() == 0; }));
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logon"), 1);
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logoff"), 1);
}

class OutlookProgramRunTest : public OutlookRunTest {
 protected:
  OutlookProgramRunTest() : OutlookRunTest(OutlookClassServer::kProgram) {}
};

TEST_F(OutlookProgramRunTest, ProgramThatDoesNotRunIsStartedForTheRun) {
  RunToTheEnd();
}

}  // namespace
}  // namespace postmarker::test
