// The wizard with Thunderbird, which stands in as a process of its own.
#include <windows.h>

#include <gmock/gmock.h>

#include <chrono>

#include "module/ModuleFixture_win.h"
#include "settings/FilterSettings.h"
#include "support/ThunderbirdInstallation_win.h"

namespace postmarker::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

constexpr int kStopButton = 10043;
constexpr int kMoveBox = 13029;

constexpr char kMailbox[] = R"({
  "pathPrefix": "\\\\",
  "folders": [
    {"name": "Local Folders", "id": "1", "store": "local", "children": [
      {"name": "Trash", "id": "2", "store": "local"},
      {"name": "Рассылки", "id": "3", "store": "local"}]},
    {"name": "anna", "id": "5", "store": "imap", "children": [
      {"name": "Inbox", "id": "6", "store": "imap"}]}],
  "contacts": ["Ben@Post.Example"],
  "sent": ["Дмитрий <Dmitri@post.example>, bond@mi6.example", "clara@post.example"],
  "moveMails": false)";

class ThunderbirdWizardTest : public testing::Test {
 protected:
  ThunderbirdWizardTest() {
    m_client.Register();
    SetMailbox("");
    m_request.clientName = L"Mozilla Thunderbird";
    m_module = std::make_unique<Module>();
  }
  ~ThunderbirdWizardTest() override {
    // A worker may still be at it; it ends with the client.
    m_client.Kill();
    m_module.reset();
    WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; });
  }

  // The mailbox of all tests, and more members of its object.
  void SetMailbox(const std::string& more) const {
    m_client.SetMailbox(kMailbox + (more.empty() ? "" : ", " + more) + "}");
  }

  std::unique_ptr<WizardSession> Start() {
    return std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
  }
  std::unique_ptr<WizardSession> StartAtFolders() {
    auto session = Start();
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    session->WaitForTree();
    return session;
  }
  std::unique_ptr<WizardSession> StartAtAddresses() {
    auto session = StartAtFolders();
    session->ClickItem(L"Рассылки");
    session->ClickButton(kNextButton);
    return session;
  }
  std::unique_ptr<WizardSession> StartAtSettings() {
    auto session = StartAtAddresses();
    session->PassAddresses();
    return session;
  }

  ThunderbirdInstallation m_client;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
};

TEST_F(ThunderbirdWizardTest, ClientThatDoesNotRunIsStartedHiddenServesTheRunAndIsToldToExit) {
  const auto session = StartAtFolders();
  const DWORD process = m_client.Processes().at(0);
  EXPECT_EQ(m_client.Journal().at(0), L"started " + std::to_wstring(process) + L" 0");
  m_client.Require(L"window hidden", "the client's window was not hidden");
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Local Folders*", "  Trash", "  Рассылки", "anna*", "  Inbox"));
  EXPECT_EQ(session->SelectedText(), L"Trash");
  session->ClickItem(L"Рассылки");
  session->CreateFolder(L"Spam");
  WizardSession::Require([&] { return session->SelectedText() == L"Spam"; }, "no new folder");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(), ElementsAre(L"ben@post.example", L"bond@mi6.example",
                                                L"clara@post.example", L"dmitri@post.example"));
  session->PassAddresses();
  session->ClickControl(kMoveBox);
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_EQ(m_request.spamFolder.name, L"\\\\Local Folders\\Рассылки\\Spam");
  EXPECT_EQ(m_request.spamFolder.secondId, "local");
  EXPECT_THAT(m_client.MailboxText(), testing::HasSubstr("\"name\": \"Spam\""));
  EXPECT_EQ(m_client.Count(L"SetMoveMails"), 1);
  EXPECT_EQ(m_client.Count(m_request.moveEmails != 0 ? L"true" : L"false"), 1);
  EXPECT_EQ(Whitelist(), (AddressSet{L"ben@post.example", L"bond@mi6.example",
                                     L"clara@post.example", L"dmitri@post.example"}));
  m_client.Require(L"exit", "the client was not told to exit");
  EXPECT_EQ(m_client.Processes().size(), 1U);
  EXPECT_TRUE(WaitUntil([this] { return !m_client.IsRunning(); }));
}

TEST_F(ThunderbirdWizardTest, ClientThatRunsIsLeftRunningWithItsWindow) {
  m_client.Start();
  const auto session = StartAtSettings();
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_TRUE(m_client.IsRunning());
  EXPECT_EQ(m_client.Processes().size(), 1U);
  EXPECT_EQ(m_client.Count(L"HideThunderbirdWindow"), 0);
  EXPECT_EQ(m_client.Count(L"ExitThunderbird"), 0);
  EXPECT_THAT(m_client.MailboxText(),
              testing::HasSubstr(m_request.moveEmails != 0 ? R"("moveMails": true)"
                                                           : R"("moveMails": false)"));
}

TEST_F(ThunderbirdWizardTest, SlowStartIsWaitedForAndCancelTellsAStartedClientToExit) {
  SetMailbox(R"("start": {"delayMs": 400})");
  const auto session = StartAtFolders();
  EXPECT_EQ(session->TreeLines().size(), 5U);
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
  m_client.Require(L"exit", "the client was not told to exit");
}

TEST_F(ThunderbirdWizardTest, SameFolderAndSwitchMakeNoCallAtFinish) {
  m_client.Start();
  for (const int calls : {1, 1}) {
    m_request = {};
    m_request.clientName = L"Mozilla Thunderbird";
    const auto session = StartAtSettings();
    session->ClickButton(kFinishButton);
    EXPECT_EQ(session->Result(), kWizardFinished);
    EXPECT_EQ(m_client.Count(L"SetMoveMails"), calls);
  }
}

TEST_F(ThunderbirdWizardTest, WithoutTheClientThereIsNoFolderAndTheRunCanBeCancelled) {
  RegistryKey::Open(HKEY_LOCAL_MACHINE, ThunderbirdInstallation::kClientKey, KEY_ALL_ACCESS)
      .DeleteValue(L"CurrentVersion");
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), testing::IsEmpty());
  session->ClickButton(kNextButton);
  EXPECT_TRUE(session->IsOn(Page::kFolders));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

TEST_F(ThunderbirdWizardTest, ClientThatNeverAnswersLeavesThePageWaitingAndCancelClosesIt) {
  SetMailbox(R"("commands": {"GiveAllFolders": {"stopAfter": 0}})");
  m_client.Start();
  const auto session = Start();
  session->WaitForPage(Page::kWelcome);
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kFolders);
  m_client.Require(L"GiveAllFolders", "the folders were not asked for");
  EXPECT_FALSE(::IsWindowEnabled(session->Tree()));
  const auto start = std::chrono::steady_clock::now();
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(3000));
}

TEST_F(ThunderbirdWizardTest, ClientThatDiesWhileItTellsItsFoldersLeavesThoseThatArrived) {
  SetMailbox(R"("commands": {"GiveAllFolders": {"dieAfter": 3}})");
  m_client.Start();
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Local Folders*", "  Trash", "  Рассылки"));
}

TEST_F(ThunderbirdWizardTest, ClientThatDiesWhileItMakesAFolderLeavesThePageUsable) {
  SetMailbox(R"("commands": {"AddNewFolder": {"dieAfter": 0}})");
  m_client.Start();
  const auto session = StartAtFolders();
  session->ClickItem(L"Рассылки");
  session->CreateFolder(L"Spam");
  EXPECT_TRUE(WaitUntil([this] { return !m_client.IsRunning(); }));
  session->ClickItem(L"Trash");
  EXPECT_TRUE(session->IsButtonUsable(kNextButton));
}

TEST_F(ThunderbirdWizardTest, ClientKilledOnTheFolderPageIsStartedForTheAddressesAndTheSwitch) {
  m_client.Start();
  const auto session = StartAtFolders();
  m_client.Kill();
  session->ClickItem(L"Рассылки");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  EXPECT_EQ(session->Addresses().size(), 4U);
  EXPECT_TRUE(WaitUntil([this] { return m_client.Count(L"exit") == 1; }));
  session->PassAddresses();
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_EQ(m_client.Count(L"SetMoveMails"), 1);
  EXPECT_TRUE(WaitUntil([this] { return m_client.Count(L"exit") == 2; }));
  EXPECT_EQ(m_client.Processes().size(), 3U);
}

TEST_F(ThunderbirdWizardTest, ClientThatDiesWhileItTellsItsSentMailLeavesTheAddressesThatArrived) {
  SetMailbox(R"("commands": {"GiveAddressesFromSentItems": {"dieAfter": 2}})");
  m_client.Start();
  const auto session = StartAtAddresses();
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(),
              ElementsAre(L"ben@post.example", L"bond@mi6.example", L"dmitri@post.example"));
}

TEST_F(ThunderbirdWizardTest, ClientThatDiesAtTheMoveSwitchStillGivesTheFinishCode) {
  SetMailbox(R"("commands": {"SetMoveMails": {"dieAfter": 0}})");
  m_client.Start();
  const auto session = StartAtSettings();
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_EQ(m_client.Count(L"SetMoveMails"), 1);
  EXPECT_EQ(FilterSettings(L"Mozilla Thunderbird").GetSpamFolderId(), "3");
}

TEST_F(ThunderbirdWizardTest, StopShowsWhatArrivedOfTheAddresses) {
  SetMailbox(R"("commands": {"GiveAddressesFromSentItems": {"stopAfter": 2}})");
  m_client.Start();
  const auto session = StartAtAddresses();
  session->WaitForPage(Page::kPrefill);
  m_client.Require(L"GiveAddressesFromSentItems", "the addresses were not asked for");
  ::Sleep(250);  // two polls, after which the bridge has read what is there
  session->ClickControl(kStopButton);
  session->WaitForAddresses();
  EXPECT_EQ(session->Addresses().size(), 3U);
}

TEST_F(ThunderbirdWizardTest, CancelWhileAddressesAreCollectedClosesTheWizardWithinOnePoll) {
  SetMailbox(R"("commands": {"GiveContacts": {"stopAfter": 0}})");
  m_client.Start();
  const auto session = StartAtAddresses();
  session->WaitForPage(Page::kPrefill);
  m_client.Require(L"GiveContacts", "the contacts were not asked for");
  const auto start = std::chrono::steady_clock::now();
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
  // A poll of 100 ms, and what windows and a busy machine add.
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(3000));
}

TEST_F(ThunderbirdWizardTest, SilentHarvestStartsTheClientFillsTheAllowedListAndTellsItToExit) {
  m_module->StartWhitelistPrefill();
  EXPECT_TRUE(WaitUntil([] { return Whitelist().size() == 4; }));
  EXPECT_EQ(m_client.Count(L"SentItemsEntries"), 0);
  m_client.Require(L"exit", "the client was not told to exit");
}

}  // namespace
}  // namespace postmarker::test
