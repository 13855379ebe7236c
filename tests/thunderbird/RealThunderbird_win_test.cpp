// The wizard with a real Thunderbird, which runs outside of Wine with our extension in it. The
// tests share one that runs where they can, in their order: a start takes seconds.
#include "RealThunderbird_win.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "clients/thunderbird/TbCommands.h"
#include "clients/thunderbird/TbInstallation_win.h"
#include "clients/thunderbird/ThunderbirdConnection_win.h"
#include "module/ModuleFixture_win.h"
#include "settings/FilterSettings.h"
#include "support/Text.h"

namespace postmarker::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr int kStopButton = 10043;
constexpr int kProgressBar = 10041;
constexpr int kMoveBox = 13029;
constexpr wchar_t kSuiteKey[] = L"Software\\Kestrelon Ltd.";
// After so long a silence ends the wizard's wait for sent mail, and what came by then counts.
constexpr milliseconds kCommandLimit{kThunderbirdCommandSeconds * 1000};
// So long the wizard waits for a Thunderbird that it has started.
constexpr milliseconds kStartLimit{kThunderbirdStartMilliseconds};
// Within this time it connects to a pipe that is served: it tries every 750 ms.
constexpr milliseconds kTimeToConnect{5'000};

// The addresses in the sample mail.
constexpr int kSentMessages = 2000;
AddressSet Contacts() {
  return {L"ben@freunde.example", L"ben.zwei@freunde.example", L"clara@freunde.example",
          L"julia@freunde.example"};
}
AddressSet AllAddresses() {
  AddressSet all = Contacts();
  all.insert(L"buero@post.example");
  for (int number = 0; number < kSentMessages; ++number) {
    const std::wstring rest = std::to_wstring(number) + L"@kunden.example";
    all.insert(L"to" + rest);
    if (number % 3 == 0) {
      all.insert(L"cc" + rest);
    }
    if (number % 5 == 0) {
      all.insert(L"bcc" + rest);
    }
  }
  return all;
}

class RealThunderbirdTest : public testing::Test {
 protected:
  void SetUp() override {
    if (RealThunderbird::Home().empty()) {
      GTEST_SKIP() << "Thunderbird is not installed (scripts/setup --thunderbird)";
    }
    m_thunderbird = std::make_unique<RealThunderbird>();
    // The prefix is these tests' own, and the native program is to see the same registry.
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kSuiteKey);
    m_module = std::make_unique<Module>();
    ASSERT_TRUE(m_module->IsLoaded());
  }
  void TearDown() override {
    m_session.reset();
    m_module.reset();
    WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; });
    if (m_thunderbird && HasFailure()) {
      m_thunderbird->End();
    }
  }
  static void TearDownTestSuite() {
    if (!RealThunderbird::Home().empty()) {
      RealThunderbird().End();
    }
  }

  // A wizard at its folders, once they are there or Thunderbird has none.
  WizardSession& Start() {
    m_request = {};
    m_request.clientName = L"Mozilla Thunderbird";
    m_servedSince.reset();
    m_session = std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
    m_session->WaitForPage(Page::kWelcome);
    m_session->ClickButton(kNextButton);
    m_session->WaitForPage(Page::kFolders);
    Require(
        [this] {
          if (!m_servedSince && RealThunderbird::IsServed()) {
            m_servedSince = std::chrono::steady_clock::now();
          }
          return ::IsWindowEnabled(m_session->Tree()) != FALSE;
        },
        "no folders");
    return *m_session;
  }

  // The same with a Thunderbird that doesn't run. False if this machine was too slow today for the
  // time that the wizard gives it: each try started one, and that served the pipe, but too late.
  bool StartClosed() {
    for (int attempt = 0; attempt < 3; ++attempt) {
      m_thunderbird->End();
      const int starts = m_thunderbird->Starts();
      const auto start = std::chrono::steady_clock::now();
      Start();
      EXPECT_EQ(m_thunderbird->Starts(), starts + 1);
      if (!m_session->TreeLines().empty() || TimeSince(start) < kStartLimit) {
        return true;
      }
      if (m_servedSince) {
        EXPECT_LT(TimeSince(*m_servedSince), kTimeToConnect) << "the pipe was there";
      }
      Require(&RealThunderbird::IsServed, "the Thunderbird that was started serves no pipe");
      m_slowStart = std::chrono::duration_cast<milliseconds>(
          m_servedSince.value_or(std::chrono::steady_clock::now()) - start);
      Cancel();
    }
    return false;
  }
  [[nodiscard]] std::string WhyTooSlow() const {
    return "Thunderbird's start works, and took " + std::to_string(m_slowStart.count()) + " of " +
           std::to_string(kStartLimit.count()) + " ms that the wizard waits, the third time";
  }

  void Cancel() const {
    m_session->ClickButton(IDCANCEL);
    EXPECT_EQ(m_session->Result(), kWizardCancelled);
  }

  // From the folders to the addresses, while they are being read.
  void BeginHarvest(const std::wstring& folder) const {
    m_session->ClickItem(folder);
    m_session->ClickButton(kNextButton);
    m_session->WaitForPage(Page::kPrefill);
  }
  // The same, up to the middle of it.
  void HarvestHalfWay(const std::wstring& folder) const {
    BeginHarvest(folder);
    Require(
        [this] {
          const HWND bar = m_session->Control(kProgressBar);
          return ::SendMessageW(bar, PBM_GETPOS, 0, 0) * 10 >
                 ::SendMessageW(bar, PBM_GETRANGE, FALSE, 0);
        },
        "the harvest does not get on");
  }
  void WaitForAddresses() const {
    m_session->WaitForPage(Page::kPrefill);
    Require([this] { return ::IsWindowVisible(m_session->AddressGrid()) != FALSE; },
            "no addresses");
  }
  // What Thunderbird tells somebody who waits for all of it.
  static AddressSet AddressesForThePatient() {
    constexpr auto kSeconds = static_cast<int32_t>(kThunderbirdPatience.count() / 1000);
    ThunderbirdConnection connection;
    EXPECT_EQ(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds), kOk);
    EXPECT_EQ(connection.alreadyRunning, 1);
    AddressSet addresses;
    EXPECT_EQ(thunderbird::GiveContacts(&connection, kSeconds, &addresses), kOk);
    EXPECT_EQ(
        thunderbird::GiveAddressesFromSentItems(&connection, 0, nullptr, kSeconds, &addresses),
        kOk);
    AddressSet lower;
    for (const std::wstring& address : addresses) {
      lower.insert(ToLower(address));  // as the page shows them
    }
    return lower;
  }
  [[nodiscard]] AddressSet Addresses() const {
    const std::vector<std::wstring> rows = m_session->Addresses();
    return {rows.begin(), rows.end()};
  }

  // From the addresses to the end.
  void Finish(bool move) const {
    m_session->ClickButton(kNextButton);
    m_session->WaitForPage(Page::kSettings);
    const bool isMoving =
        ::SendMessageW(m_session->Control(kMoveBox), BM_GETCHECK, 0, 0) == BST_CHECKED;
    if (isMoving != move) {
      m_session->ClickControl(kMoveBox);
    }
    m_session->ClickButton(kFinishButton);
    EXPECT_EQ(m_session->Result(), kWizardFinished);
    EXPECT_EQ(m_request.moveEmails, move ? 1 : 0);
  }

  // A whole run, without the addresses of all sent mail.
  void RunWith(const std::wstring& folder, bool move) {
    Start();
    BeginHarvest(folder);
    m_session->ClickControl(kStopButton);
    WaitForAddresses();
    Finish(move);
  }

  static milliseconds TimeSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
  }

  template <class Condition>
  static void Require(Condition condition, const char* otherwise) {
    if (!WaitUntil(condition, kThunderbirdPatience)) {
      throw std::runtime_error(otherwise);
    }
  }

  std::unique_ptr<RealThunderbird> m_thunderbird;
  WizardRequest m_request;
  std::optional<std::chrono::steady_clock::time_point> m_servedSince;  // while Start waits
  milliseconds m_slowStart{};
  std::unique_ptr<Module> m_module;
  std::unique_ptr<WizardSession> m_session;
};

TEST_F(RealThunderbirdTest, TellsItsFoldersMakesOneTellsAllAddressesAndStaysOpen) {
  EXPECT_TRUE(thunderbird::IsThunderbirdExtensionInstalled());
  m_thunderbird->Open();
  const int starts = m_thunderbird->Starts();
  const WizardSession& session = Start();
  EXPECT_THAT(session.TreeLines(), ElementsAre("anna@post.example*", "  Inbox", "  Sent", "  Trash",
                                               "Local Folders*", "  Inbox", "    Büro",
                                               "      Проекты", "    案件", "  Trash", "  Outbox"));
  session.ClickItem(L"Büro");
  session.CreateFolder(L"Спам");
  Require([&] { return session.SelectedText() == L"Спам"; }, "no new folder");
  EXPECT_TRUE(std::filesystem::is_regular_file(
      RealThunderbird::LocalMailFile(L"Inbox.sbd\\Büro.sbd\\Спам")));
  const auto start = std::chrono::steady_clock::now();
  BeginHarvest(L"Спам");
  WaitForAddresses();
  const milliseconds time = TimeSince(start);
  RecordProperty("harvest_ms", static_cast<int>(time.count()));
  const AddressSet addresses = Addresses();
  EXPECT_THAT(addresses, testing::IsSubsetOf(AllAddresses()));
  Finish(true);
  EXPECT_EQ(m_request.spamFolder.name, L"\\\\Local Folders\\Inbox\\Büro\\Спам");
  EXPECT_EQ(m_request.spamFolder.secondId, "account1");
  const FilterSettings settings(L"Mozilla Thunderbird");
  EXPECT_EQ(settings.GetSpamFolderId(), m_request.spamFolder.firstId);
  EXPECT_EQ(settings.GetSpamFolderId().size(), 32U);
  EXPECT_EQ(Whitelist(), addresses);
  EXPECT_EQ(m_thunderbird->Ask("window"), "normal");
  EXPECT_EQ(m_thunderbird->Starts(), starts);
  if (addresses != AllAddresses()) {
    EXPECT_GE(time, kCommandLimit) << "no silence was long enough to end the harvest";
  }
  EXPECT_EQ(AddressesForThePatient(), AllAddresses());
}

TEST_F(RealThunderbirdTest, MovesMarkedMailWhileTheWizardHasToldItTo) {
  m_thunderbird->Open();
  const auto spam = [] {
    return ReadFile(RealThunderbird::LocalMailFile(L"Inbox.sbd\\Büro.sbd\\Проекты"));
  };
  RunWith(L"Проекты", true);
  ASSERT_EQ(m_thunderbird->Ask("move-old"), "Messages moved: 2.");
  EXPECT_THAT(spam(), AllOf(HasSubstr("Subject: Win a prize"), HasSubstr("Subject: Cheap")));
  m_thunderbird->Tell("mail From: a@friends.example\tSubject: Good news");
  m_thunderbird->Tell("mail From: b@spam.example\tSubject: New spam\tX-Postmarker-Spam: yes");
  m_thunderbird->Tell("fetch");
  Require([&] { return spam().find("Subject: New spam") != std::string::npos; },
          "new spam is not moved");
  RunWith(L"Проекты", false);
  m_thunderbird->Tell("mail From: b@spam.example\tSubject: Late spam\tX-Postmarker-Spam: yes");
  m_thunderbird->Tell("fetch");
  EXPECT_EQ(m_thunderbird->Ask("move-old"), "Messages moved: 0.");
  EXPECT_THAT(ReadFile(RealThunderbird::MailFolder() + L"pop.post.example\\Inbox"),
              HasSubstr("Subject: Late spam"));
  EXPECT_THAT(spam(), Not(AnyOf(HasSubstr("Subject: Late spam"), HasSubstr("Subject: Good news"),
                                HasSubstr("Subject: Lunch"))));
}

TEST_F(RealThunderbirdTest, ClosedInTheMiddleOfTheHarvestLeavesWhatCameAndIsStartedForTheEnd) {
  m_thunderbird->Open();
  const int starts = m_thunderbird->Starts();
  Start();
  HarvestHalfWay(L"Büro");
  m_thunderbird->Tell("close");
  WaitForAddresses();
  EXPECT_THAT(Addresses(), testing::IsSubsetOf(AllAddresses()));
  EXPECT_THAT(Addresses(), testing::IsSupersetOf(Contacts()));
  m_thunderbird->WaitUntilGone();
  Finish(true);
  EXPECT_EQ(FilterSettings(L"Mozilla Thunderbird").GetSpamFolderId(), m_request.spamFolder.firstId);
  EXPECT_EQ(m_thunderbird->Starts(), starts + 1);
  m_thunderbird->WaitUntilGone();
}

TEST_F(RealThunderbirdTest, OneThatDoesNotRunIsStartedHiddenServesTheRunAndIsEnded) {
  if (!StartClosed()) {
    GTEST_SKIP() << WhyTooSlow();
  }
  const int starts = m_thunderbird->Starts();
  Require([this] { return m_thunderbird->Ask("window") == "minimized"; }, "it is not hidden");
  m_session->ClickItem(L"Local Folders");
  m_session->CreateFolder(L"Neu");
  Require([this] { return m_session->SelectedText() == L"Neu"; }, "no new folder");
  EXPECT_TRUE(std::filesystem::is_regular_file(RealThunderbird::LocalMailFile(L"Neu")));
  BeginHarvest(L"Neu");
  m_session->ClickControl(kStopButton);
  WaitForAddresses();
  Finish(true);
  m_thunderbird->WaitUntilGone();
  EXPECT_EQ(m_thunderbird->Starts(), starts);
}

TEST_F(RealThunderbirdTest, KilledInTheMiddleOfTheHarvestLeavesWhatCame) {
  if (!StartClosed()) {
    GTEST_SKIP() << WhyTooSlow();
  }
  HarvestHalfWay(L"Büro");
  m_thunderbird->End();
  WaitForAddresses();
  const AddressSet addresses = Addresses();
  EXPECT_THAT(addresses, testing::IsSubsetOf(AllAddresses()));
  EXPECT_GT(addresses.size(), Contacts().size());
  EXPECT_LT(addresses.size(), AllAddresses().size());
  Cancel();
}

}  // namespace
}  // namespace postmarker::test
