// The wizard with Outlook, which stands in as a library of this process or as a program.
#include <windows.h>

#include <gmock/gmock.h>

#include <chrono>

#include "module/ModuleFixture_win.h"
#include "settings/AddressLists.h"
#include "settings/FilterSettings.h"
#include "support/OutlookInstallation_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;

constexpr int kStopButton = 10043;

// Longer than a person waits for a window to close, and shorter than the tests' patience.
constexpr int kHangMs = 4000;

class OutlookWizardTest : public testing::Test {
 protected:
  explicit OutlookWizardTest(OutlookClassServer server = OutlookClassServer::kInProcess)
      : m_outlook(server) {
    m_request.clientName = L"Microsoft Outlook";
    m_module = std::make_unique<Module>();
  }
  ~OutlookWizardTest() override {
    m_module.reset();
    EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }))
        << "a worker did not end";
    EXPECT_EQ(m_outlook.Peer().Live(), 0) << "Outlook's objects were not released";
  }

  // The usual mailbox, with one fault.
  void SetFault(const char* call, int result, int hangMs) {
    SetFault(OutlookMailbox(), call, result, hangMs);
  }
  void SetFault(json mailbox, const char* call, int result, int hangMs) {
    mailbox["faults"] = json::array({{{"at", call}, {"result", result}, {"hangMs", hangMs}}});
    m_outlook.SetMailbox(mailbox);
  }

  std::unique_ptr<WizardSession> StartOnFolderPage() {
    auto session = std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    return session;
  }
  std::unique_ptr<WizardSession> StartAtFolders() {
    auto session = StartOnFolderPage();
    session->WaitForTree();
    return session;
  }
  std::unique_ptr<WizardSession> StartAtAddresses() {
    auto session = StartAtFolders();
    session->ClickItem(L"Inbox");
    session->ClickButton(kNextButton);
    return session;
  }

  void RequireHang() const {
    WizardSession::Require([this] { return m_outlook.Peer().IsHanging(); }, "nothing hangs");
  }

  static AddressSet Whitelist() {
    ListEntries entries;
    GetWhitelistAddresses(&entries);
    AddressSet addresses;
    for (const auto& [address, ignored] : entries) {
      addresses.insert(address);
    }
    return addresses;
  }

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

  OutlookInstallation m_outlook;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
};

TEST_F(OutlookWizardTest, ApplicationOfTheHostServesTheRun) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  m_request.outlookApplication = application.Get();
  RunToTheEnd();
  EXPECT_EQ(m_outlook.Peer().CallsOf("CreateInstance"), 0);
  EXPECT_EQ(m_outlook.Peer().Live(), 1) << "the host's application, and nothing else";
}

TEST_F(OutlookWizardTest, OutlookThatDoesNotRunIsStartedForTheRun) {
  RunToTheEnd();
  EXPECT_EQ(m_outlook.Peer().CallsOf("CreateInstance"), 1);
  EXPECT_EQ(m_outlook.Peer().Live(), 0);
}

TEST_F(OutlookWizardTest, FailedLogonLeavesNoFolderAndTheRunCanBeCancelled) {
  SetFault("NameSpace.Logon", E_FAIL, 0);
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), testing::IsEmpty());
  session->ClickButton(kNextButton);
  EXPECT_TRUE(session->IsOn(Page::kFolders));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logoff"), 0);
}

TEST_F(OutlookWizardTest, StopInTheMiddleOfAFolderShowsWhatWasFound) {
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

TEST_F(OutlookWizardTest, CancelClosesTheWindowWhileTheWorkerHangsInOutlook) {
  for (const char* const call : {"IMAPISession.GetMsgStoresTable", "Folder.DefaultItemType"}) {
    SCOPED_TRACE(call);
    SetFault(call, 0, kHangMs);
    const auto session = StartOnFolderPage();
    RequireHang();
    session->ClickButton(IDCANCEL);
    WizardSession::Require([&] { return session->Sheet() == nullptr; }, "the window stays");
    EXPECT_TRUE(m_outlook.Peer().IsHanging()) << "the window waited for Outlook";
    EXPECT_EQ(session->Result(), kWizardCancelled);
    // The worker still calls Outlook; it ends by itself.
    m_outlook.Peer().SetFault({.call = 1, .andLater = true, .result = E_FAIL});
    EXPECT_TRUE(WaitUntil([this] { return m_outlook.Peer().Live() == 0; }));
  }
}

TEST_F(OutlookWizardTest, CancelWhileTheCollectionHangsTellsThatItWaits) {
  SetFault("Items.Item", 0, kHangMs);
  const auto session = StartAtAddresses();
  session->WaitForPage(Page::kPrefill);
  RequireHang();
  session->ClickButton(IDCANCEL);
  WizardSession::Require(
      [&] { return session->Sheet() == nullptr || !::IsWindowEnabled(session->Sheet()); },
      "the wizard takes input");
  EXPECT_TRUE(m_outlook.Peer().IsHanging()) << "the hang was over before the wizard told so";
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

TEST_F(OutlookWizardTest, SilentHarvestLogsOnFillsTheAllowedListAndLetsOutlookGo) {
  m_module->StartWhitelistPrefill();
  EXPECT_TRUE(WaitUntil([] { return Whitelist().size() == 5; }));
  EXPECT_TRUE(WaitUntil([this] { return m_outlook.Peer().Live() == 0; }));
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logon"), 1);
  EXPECT_EQ(m_outlook.Peer().CallsOf("NameSpace.Logoff"), 1);
}

class OutlookProgramWizardTest : public OutlookWizardTest {
 protected:
  OutlookProgramWizardTest() : OutlookWizardTest(OutlookClassServer::kProgram) {}
};

TEST_F(OutlookProgramWizardTest, ProgramThatDoesNotRunIsStartedForTheRun) {
  RunToTheEnd();
}

TEST_F(OutlookProgramWizardTest, CancelClosesTheWindowWhileTheProgramHangs) {
  SetFault("Folder.DefaultItemType", 0, kHangMs);
  const auto session = StartOnFolderPage();
  ASSERT_TRUE(m_outlook.WaitUntilProgramHangs());
  const auto start = std::chrono::steady_clock::now();
  session->ClickButton(IDCANCEL);
  WizardSession::Require([&] { return session->Sheet() == nullptr; }, "the window stays");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kHangMs / 2));
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

TEST_F(OutlookProgramWizardTest, LogonThatHangsShowsTheWaitCursorAndCancelEndsTheRun) {
  SetFault("NameSpace.Logon", 0, kHangMs);
  const auto session = StartOnFolderPage();
  ASSERT_TRUE(m_outlook.WaitUntilProgramHangs());
  const DWORD thread = ::GetWindowThreadProcessId(session->Sheet(), nullptr);
  ASSERT_TRUE(::AttachThreadInput(::GetCurrentThreadId(), thread, TRUE));
  EXPECT_EQ(::GetCursor(), ::LoadCursorW(nullptr, IDC_WAIT));
  ::AttachThreadInput(::GetCurrentThreadId(), thread, FALSE);
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

}  // namespace
}  // namespace postmarker::test
