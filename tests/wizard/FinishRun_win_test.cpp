#include <gmock/gmock.h>

#include <algorithm>

#include "settings/AddressLists.h"
#include "settings/FilterSettings.h"
#include "settings/GlobalSettings.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kMessageBoxText[] =
    L"You have changed the folder for spam, or the setting to move spam to it.\n\nIf Local is "
    L"open, "
    L"please close it and open it again. Only then does Local use the new settings.";

class FinishRunTest : public WizardFixture {
 protected:
  // The key of the client "Plain".
  static std::wstring ClientKey() { return std::wstring(kSpamfilterKey) + L"\\Plain"; }

  // Runs the wizard to its end over the folder, without a message box.
  int32_t Finish(const std::wstring& folder) {
    const auto session = StartAtFolders();
    GoToSettings(*session, folder);
    session->ClickButton(kFinishButton);
    return session->Result();
  }

  // The message box that stands over the wizard, which has no owner.
  static HWND MessageBoxWindow(const WizardSession& session) {
    HWND box = nullptr;
    WaitUntil([&] {
      for (HWND window = nullptr;
           (window = ::FindWindowExW(nullptr, window, L"#32770", L"Kestrelon")) != nullptr;) {
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (process == ::GetCurrentProcessId() && window != session.Sheet() &&
            ::IsWindowVisible(window)) {
          box = window;
        }
      }
      return box != nullptr;
    });
    return box;
  }

  static ListEntries Whitelist() {
    ListEntries entries;
    GetWhitelistAddresses(&entries);
    return entries;
  }
};

TEST_F(FinishRunTest, AnswersAreSavedUnderTheClientsName) {
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  const FilterSettings settings(L"Plain");
  EXPECT_EQ(settings.GetSpamFolderId(), "2");
  EXPECT_EQ(settings.GetSpamFolderName(), L"\\\\Post\\Inbox\\Friends\\");
  EXPECT_EQ(settings.GetShowWizard(), 0U);
  char id[16] = {};
  uint32_t size = sizeof(id);
  settings.GetMessageStoreId(id, &size);
  EXPECT_EQ(std::string(id, size), "store");
  EXPECT_EQ(GetActionPlugin(), L"Plain");
  EXPECT_EQ(GetLastConfigured(), L"Plain");
}

TEST_F(FinishRunTest, ChosenAddressesMoveToTheWhitelist) {
  AddAddressToBlacklist(L"friend@post.example", false);
  m_clients.client.addresses = {L"friend@post.example", L"other@post.example"};
  Finish(L"Inbox");
  EXPECT_THAT(Whitelist(), ElementsAre(testing::Pair(L"friend@post.example", L""),
                                       testing::Pair(L"other@post.example", L"")));
  EXPECT_FALSE(IsAddressBlacklisted(L"friend@post.example"));
}

TEST_F(FinishRunTest, NoAddressesWriteNothingToTheWhitelist) {
  Finish(L"Inbox");
  EXPECT_THAT(Whitelist(), IsEmpty());
  EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER,
                                 std::wstring(kSpamfilterKey) + kWhitelistAddresses,
                                 KEY_READ | SuiteKeyView()));
}

TEST_F(FinishRunTest, AddressesAreWrittenAgainWithTheSameFolder) {
  Finish(L"Inbox");
  m_request.folders.clear();
  m_clients.client.addresses = {L"later@post.example"};
  Finish(L"Inbox");
  EXPECT_EQ(Whitelist().size(), 1U);
}

TEST_F(FinishRunTest, SetUpRecommendationIsCleared) {
  Finish(L"Inbox");
  const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, kMainKey, KEY_READ | SuiteKeyView());
  EXPECT_EQ(key.ReadDword(L"Recommendations"), 0U);
}

TEST_F(FinishRunTest, DefaultFolderOfALocalClientIsSavedAsZeroAndFoundAgainWhereverItIs) {
  m_request.clientName = L"Outlook Express";
  {
    // The folder is the saved one already, so no message box asks.
    FilterSettings settings(L"Outlook Express");
    settings.SetSpamFolderId("0");
  }
  EXPECT_EQ(Finish(L"Trash"), kFinishButton);
  EXPECT_EQ(FilterSettings(L"Outlook Express").GetSpamFolderId(), "0");
  m_request = {};
  m_request.clientName = L"Outlook Express";
  m_clients.client.defaultFolder = m_clients.client.folders[1];
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Inbox");
}

TEST_F(FinishRunTest, LocalClientsStoreIdComesFromTheClientAndNotFromTheFolder) {
  m_request.clientName = L"Windows Mail";
  m_clients.client.storeId = "store-of-today";
  {
    FilterSettings settings(L"Outlook Express");
    settings.SetSpamFolderId("2");
  }
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  char id[32] = {};
  uint32_t size = sizeof(id);
  FilterSettings(L"Outlook Express").GetMessageStoreId(id, &size);
  EXPECT_EQ(std::string(id, size), "store-of-today");
}

// The saved id after a wizard whose client has none to read.
class UnreadableStoreId : public FinishRunTest {
 protected:
  std::string IdAfterFinish() {
    m_request.clientName = L"Local";
    {
      FilterSettings settings(L"Local");
      settings.SetSpamFolderId("2");
      settings.SetMessageStoreId("saved", 5);
    }
    EXPECT_EQ(Finish(L"Friends"), kFinishButton);
    char id[32] = {};
    uint32_t size = sizeof(id);
    FilterSettings(L"Local").GetMessageStoreId(id, &size);
    return {id, size};
  }
};

TEST_F(UnreadableStoreId, LeavesTheSavedOne) {
  EXPECT_EQ(IdAfterFinish(), "saved");
}

// Its store is on a drive that goes away.
class ClientOfALostDrive : public ScriptedClient {
 public:
  bool ReadStoreId(std::string* out) const override {
    *out = "not read to its end";
    ::RaiseException(EXCEPTION_IN_PAGE_ERROR, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return true;
  }
};

TEST_F(UnreadableStoreId, LeavesTheSavedOneIfItsDriveGoesAway) {
  ClientOfALostDrive client;
  client.folders = m_clients.client.folders;
  ClientRow row = *FindClient(L"Local");
  row.adapter = &client;
  const ScopedClientTable table({&row, 1});
  EXPECT_EQ(IdAfterFinish(), "saved");
}

TEST_F(FinishRunTest, ChangedFolderOfALocalClientShowsTheNoticeAndWaitsForIt) {
  m_request.clientName = L"Local";
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickButton(kFinishButton);
  const HWND box = MessageBoxWindow(*session);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(TextOf(::GetDlgItem(box, 0xFFFF)), kMessageBoxText);
  EXPECT_EQ(::GetWindow(box, GW_OWNER), nullptr);
  ::PostMessageW(::GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_clients.client.moveSwitches, 1);
}

TEST_F(FinishRunTest, ChangedMoveSwitchAloneShowsTheNotice) {
  m_request.clientName = L"Local";
  {
    FilterSettings settings(L"Local");
    settings.SetSpamFolderId("2");
  }
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickControl(13029);
  session->ClickButton(kFinishButton);
  const HWND box = MessageBoxWindow(*session);
  ASSERT_NE(box, nullptr);
  ::PostMessageW(::GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(session->Result(), kFinishButton);
}

TEST_F(FinishRunTest, SameFolderAndSwitchNotifyNobody) {
  m_request.clientName = L"Local";
  {
    FilterSettings settings(L"Local");
    settings.SetSpamFolderId("2");
  }
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  EXPECT_EQ(m_clients.client.moveSwitches, 0);
}

TEST_F(FinishRunTest, ChangeOfAnotherClientShowsNoNoticeButTellsTheClient) {
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  EXPECT_EQ(m_clients.client.moveSwitches, 1);
}

TEST_F(FinishRunTest, RefusingRegistryStillGivesTheFinishCode) {
  for (const std::wstring& key :
       {std::wstring(kMainKey), std::wstring(kSpamfilterKey), ClientKey()}) {
    DenyWrites(m_registry.User(), key);
  }
  const auto before = DumpRegistry(m_registry.User());
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  EXPECT_EQ(DumpRegistry(m_registry.User()), before);
}

std::string WideBytes(const std::wstring& text) {
  std::string hex;
  for (const wchar_t unit : text + L'\0') {
    char bytes[5] = {};
    (void)std::snprintf(bytes, sizeof(bytes), "%02x%02x", unit & 0xFF, (unit >> 8) & 0xFF);
    hex.append(bytes);
  }
  return hex;
}

// The registry after Finish, value by value, type by type, byte by byte. The keys are spelled out,
// since this is what other programs of the suite find.
std::vector<std::string> AfterFinish(const std::string& toolbarLeft, const std::string& addCcs,
                                     const std::vector<std::string>& others) {
  const std::string suite = "Software\\Kestrelon Ltd.\\Kestrelon";
  const std::string filter = suite + "\\Spamfilter";
  const std::string client = filter + "\\Plain";
  const auto dword = [](const std::string& key, const char* name, const std::string& bytes) {
    return key + " | " + name + " | REG_DWORD | " + bytes;
  };
  const std::string zero = "00000000";
  const std::string one = "01000000";
  const std::string unset = "88130000";
  std::vector<std::string> lines = {
      "[Software]",
      "[Software\\Kestrelon Ltd.]",
      "[" + suite + "]",
      "[" + suite + "\\Main]",
      dword(suite + "\\Main", "Recommendations", zero),
      "[" + filter + "]",
      dword(filter, "AddRecipients", one),
      dword(filter, "AddCCS", addCcs),
      dword(filter, "SignEmail", zero),
      filter + " | ActionPlugin | REG_SZ | " + WideBytes(L"Plain"),
      filter + " | LastConfigured | REG_SZ | " + WideBytes(L"Plain"),
      "[" + client + "]",
      dword(client, "AddBLocked", zero),
      dword(client, "AddBlockedDomains", zero),
      dword(client, "AddUnblocked", one),
      dword(client, "AddUnblockedDomains", zero),
      dword(client, "MoveEmails", one),
      client + " | MO SFolder | REG_SZ | " + WideBytes(L"\\\\Post\\Inbox\\Friends\\"),
      dword(client, "ToolbarLeft", toolbarLeft),
      dword(client, "ToolbarTop", unset),
      dword(client, "ToolbarRowIndex", unset),
      dword(client, "ShowWizard", zero),
      client + " | MessageStoreId | REG_BINARY | 73746f7265",
      client + " | SpamFolderId | REG_BINARY | 3200",
  };
  lines.insert(lines.end(), others.begin(), others.end());
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST_F(FinishRunTest, RegistryOfAFreshUserByteByByte) {
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickControl(13029);
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  auto dump = DumpRegistry(m_registry.User());
  std::sort(dump.begin(), dump.end());
  EXPECT_EQ(dump, AfterFinish("88130000", "01000000", {}));
}

TEST_F(FinishRunTest, RegistryOfAUserWithOldValuesByteByByte) {
  const RegistryKey client =
      RegistryKey::Create(HKEY_CURRENT_USER, ClientKey(), KEY_ALL_ACCESS | SuiteKeyView());
  client.WriteDword(L"MoveEmails", 1);
  client.WriteDword(L"AddUnblocked", 1);
  client.WriteDword(L"ShowWizard", 1);
  client.WriteDword(L"ToolbarLeft", 33);
  client.WriteString(L"MO SFolder", L"\\\\Old\\Place\\");
  client.WriteBytes(L"SpamFolderId", REG_BINARY, "99", 3);
  client.WriteBytes(L"MessageStoreId", REG_BINARY, "a much longer old id", 20);
  client.WriteString(L"OfTheEngine", L"kept");
  const RegistryKey filter =
      RegistryKey::Create(HKEY_CURRENT_USER, kSpamfilterKey, KEY_ALL_ACCESS | SuiteKeyView());
  filter.WriteDword(L"AddCCS", 0);
  filter.WriteDword(L"EnableLogs", 7);
  const RegistryKey main =
      RegistryKey::Create(HKEY_CURRENT_USER, kMainKey, KEY_ALL_ACCESS | SuiteKeyView());
  main.WriteDword(L"Recommendations", 0x800);
  EXPECT_EQ(Finish(L"Friends"), kFinishButton);
  const std::string spamfilter = "Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter";
  auto dump = DumpRegistry(m_registry.User());
  std::sort(dump.begin(), dump.end());
  EXPECT_EQ(dump,
            AfterFinish("21000000", "00000000",
                        {spamfilter + " | EnableLogs | REG_DWORD | 07000000",
                         spamfilter + "\\Plain | OfTheEngine | REG_SZ | " + WideBytes(L"kept")}));
}

}  // namespace
}  // namespace postmarker::test
