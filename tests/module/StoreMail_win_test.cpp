// The wizard with Outlook Express and with Windows Mail, whose store stands in as an object of this
// process and whose module of the suite as a process of its own.
#include <windows.h>

#include <gmock/gmock.h>

#include "clients/storeapi/StoreAdapter_win.h"
#include "module/ModuleFixture_win.h"
#include "settings/FilterSettings.h"
#include "support/HookModuleFixture_win.h"
#include "support/StoreInstallation_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kDbxId("\x01\x23\x45\x67\x89\xAB\xCD\xEF", 8);
const std::string kDatabaseId("\xFE\xDC\xBA\x98\x76\x54\x32\x10", 8);

// The suite's module inside the client, as a process, while this lives.
class StoreShim {
 public:
  explicit StoreShim(const json& more = json::object()) {
    json state = {
        {"module", "StoreShim.dll"},
        {"text", ""},
        {"folders",
         {ToJson({L"\\\\Module", "0", "m", 1}), ToJson({L"\\\\Module\\Inbox", "4", "m", 1}),
          ToJson({L"\\\\Module\\Trash", "7", "m", 1})}},
        {"lookup", {{"4", ToJson({L"\\\\Module\\Trash", "7", "m", 1})}}},
        {"contacts", {"friend@module.example"}},
        {"sent", {"sent@module.example"}}};
    state.update(more);
    WriteFile(m_file, state.dump());
    m_process.emplace(StartPeer(PeerPath(L"hookmodule\\hookmodule.exe"), {m_file}));
  }

 private:
  TempFolder m_folder;
  std::wstring m_file = m_folder.PathOf("state.json");
  std::optional<PeerProcess> m_process;
};

class StoreMail : public testing::Test {
 protected:
  StoreMail() {
    m_store.Peer().SetState(StoreInstallation::UsualStore());
    m_store.WriteAddressBook({L"book@x.example"});
    WriteFile(m_store.DbxPath(), MakeDbxFile(kDbxId));
    WriteFile(m_store.DatabasePath(), StoreInstallation::DatabaseWith(kDatabaseId));
    SetClient(L"Windows Mail");
    m_module = std::make_unique<Module>();
  }
  ~StoreMail() override {
    m_module.reset();
    EXPECT_TRUE(WaitUntil([this] { return m_store.Peer()->countLive() == 0; }))
        << "objects were left";
  }

  void SetClient(const wchar_t* name) {
    m_request = {};
    m_request.clientName = name;
  }

  std::unique_ptr<WizardSession> StartAtFolders() {
    auto session = std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    session->WaitForTree();
    return session;
  }

  // From the folder page to Finish, and through the notice if one is expected.
  static void Finish(WizardSession* session, bool expectsNotice) {
    session->ClickButton(kNextButton);
    session->PassAddresses();
    session->ClickButton(kFinishButton);
    if (expectsNotice) {
      const HWND notice = WaitForNotice(*session);
      EXPECT_THAT(NarrowUtf8(TextOf(::GetDlgItem(notice, 0xFFFF))), HasSubstr("please close it"));
      ::PostMessageW(::GetDlgItem(notice, IDOK), BM_CLICK, 0, 0);
    }
    EXPECT_EQ(session->Result(), kWizardFinished);
  }

  // The message box over the sheet.
  static HWND WaitForNotice(const WizardSession& session) {
    HWND notice = nullptr;
    WizardSession::Require(
        [&] {
          HWND window = nullptr;
          while ((window = ::FindWindowExW(nullptr, window, L"#32770", L"Kestrelon")) != nullptr) {
            DWORD process = 0;
            ::GetWindowThreadProcessId(window, &process);
            if (process == ::GetCurrentProcessId() && window != session.Sheet() &&
                ::IsWindowVisible(window)) {
              notice = window;
            }
          }
          return notice != nullptr;
        },
        "the notice did not come");
    return notice;
  }

  static std::string StoreIdOf(const FilterSettings& settings) {
    std::string id(100, '\0');
    auto size = static_cast<uint32_t>(id.size());
    settings.GetMessageStoreId(id.data(), &size);
    id.resize(size);
    return id;
  }
  static std::optional<std::wstring> Rule() {
    return RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers", KEY_READ)
        .ReadString(L"Rule", 64);
  }

  StoreInstallation m_store;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
};

class StoreMailOfBothClients : public StoreMail,
                               public testing::WithParamInterface<const wchar_t*> {};

TEST_P(StoreMailOfBothClients, FoldersAddressesIdAndRuleReachTheirPlaces) {
  SetClient(GetParam());
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Local Folders*", "  Inbox", "    Spam", "  Outbox",
                                                "  Sent Items", "  Deleted Items", "  Drafts"));
  EXPECT_EQ(session->SelectedText(), L"Deleted Items");
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Junk");
  WizardSession::Require([&] { return session->SelectedText() == L"Junk"; }, "no new folder");
  Finish(session.get(), true);

  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{L"\\\\Local Folders\\Inbox\\Junk", "10", "0", 1}));
  EXPECT_STREQ(m_store.Peer()->journal(), "create 10 below 4 Junk\ncontacts for Kestrelon 8.0\n");
  const FilterSettings settings(L"Outlook Express");
  EXPECT_EQ(settings.GetSpamFolderId(), "10");
  EXPECT_EQ(settings.GetSpamFolderName(), L"\\\\Local Folders\\Inbox\\Junk\\");
  EXPECT_EQ(StoreIdOf(settings),
            std::wstring(GetParam()) == L"Windows Mail" ? kDatabaseId : kDbxId);
  EXPECT_EQ(Whitelist(), (AddressSet{L"ann@x.example", L"ben@x.example", L"book@x.example",
                                     L"cd@x.example", L"friend@x.example"}));
  EXPECT_EQ(Rule(), L"[KSSpam]");
}

INSTANTIATE_TEST_SUITE_P(Clients, StoreMailOfBothClients,
                         testing::Values(L"Outlook Express", L"Windows Mail"),
                         [](const auto& tested) {
                           std::string name = NarrowUtf8(tested.param);
                           std::erase(name, ' ');
                           return name;
                         });

TEST_F(StoreMail, DeletedItemsAreSavedAsZeroAndTheNextRunFindsThemWhereverTheyAre) {
  {
    const auto session = StartAtFolders();
    session->ClickItem(L"Deleted Items");
    // The id "0" is what a first run has, and the switch stays: nothing changes.
    Finish(session.get(), false);
  }
  EXPECT_EQ(m_request.spamFolder.firstId, "0");
  EXPECT_EQ(FilterSettings(L"Outlook Express").GetSpamFolderId(), "0");
  json store = StoreInstallation::UsualStore();
  store["root"]["children"][3]["id"] = 77;
  store["root"]["children"][3]["name"] = "Trash";
  m_store.Peer().SetState(store);
  SetClient(L"Windows Mail");
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Trash");
  EXPECT_EQ(m_request.spamFolder.firstId, "77");
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

TEST_F(StoreMail, OneClientFindsWhatTheOtherHasSaved) {
  SetClient(L"Outlook Express");
  {
    const auto session = StartAtFolders();
    session->ClickItem(L"Spam");
    Finish(session.get(), true);
  }
  SetClient(L"Windows Mail");
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Spam");
  // The same folder and switch: no notice.
  Finish(session.get(), false);
  EXPECT_EQ(FilterSettings(L"Outlook Express").GetSpamFolderId(), "9");
  EXPECT_EQ(StoreIdOf(FilterSettings(L"Outlook Express")), kDatabaseId);
}

TEST_F(StoreMail, IdThatCanNotBeReadLeavesTheSavedOne) {
  {
    FilterSettings settings(L"Outlook Express");
    settings.SetMessageStoreId("earlier", 7);
  }
  WriteFile(m_store.DatabasePath(), StoreInstallation::DatabaseWith(std::string(8, '\0')));
  const auto session = StartAtFolders();
  Finish(session.get(), false);
  EXPECT_EQ(StoreIdOf(FilterSettings(L"Outlook Express")), "earlier");
}

TEST_F(StoreMail, ModuleThatAnswersKeepsTheStoreClosed) {
  const StoreShim shim;
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Module*", "  Inbox", "  Trash"));
  EXPECT_EQ(session->SelectedText(), L"Trash");
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Junk");
  WizardSession::Require([&] { return session->SelectedText() == L"Junk"; }, "no new folder");
  Finish(session.get(), true);
  EXPECT_EQ(m_request.spamFolder.firstId, "new-1");
  EXPECT_EQ(Whitelist(), (AddressSet{L"friend@module.example", L"sent@module.example"}));
  EXPECT_EQ(m_store.Peer()->countCalls(""), 0);
}

TEST_F(StoreMail, ModuleThatIsSilentMeansNoFoldersAndTheStoreStaysClosed) {
  const StoreShim shim(json::object({{"tunnel", false}}));
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(), IsEmpty());
  EXPECT_EQ(m_store.Peer()->countCalls(""), 0);
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), kWizardCancelled);
}

// Without the wizard, for what its pages don't show.

TEST_F(StoreMail, EmptyRecordFromTheModuleIsAFailureWithoutTheStore) {
  const StoreShim shim(
      json::object({{"fault", {{"do", "text"}, {"command", 5}, {"message", 0}, {"value", ""}}}}));
  const StoreAdapter adapter(storeapi::StoreClient::kWindowsMail);
  MailFolderRef created = {L"as before", "1", "s", 1};
  EXPECT_EQ(adapter.CreateFolder({}, L"Junk", {L"\\\\Module", "0", "m", 1}, &created), kFail);
  EXPECT_EQ(created.name, L"as before");
  EXPECT_EQ(m_store.Peer()->countCalls(""), 0);
}

TEST_F(StoreMail, SilentModuleMakesEachOperationEndEmpty) {
  const StoreShim shim(json::object({{"tunnel", false}}));
  const StoreAdapter adapter(storeapi::StoreClient::kOutlookExpress);
  EXPECT_EQ(adapter.FindDefaultFolder({}, {}), MailFolderRef());
  MailFolderRef created = {L"as before", "1", "s", 1};
  EXPECT_EQ(adapter.CreateFolder({}, L"Junk", {L"\\\\Module", "0", "m", 1}, &created), kFail);
  EXPECT_EQ(created.name, L"as before");
  AddressSet addresses;
  EXPECT_EQ(adapter.CollectSentAddresses({}, nullptr, &addresses), kOk);
  EXPECT_THAT(addresses, IsEmpty());
  EXPECT_EQ(m_store.Peer()->countCalls(""), 0);
}

TEST_F(StoreMail, ModuleIsAskedForTheDeletedItemsByTheirKind) {
  const StoreShim shim;
  const StoreAdapter adapter(storeapi::StoreClient::kOutlookExpress);
  EXPECT_EQ(adapter.FindDefaultFolder({}, {}).firstId, "7");
  MailFolderRef folder;
  EXPECT_EQ(storeapi::GetStoreSpecialFolder(storeapi::StoreFolderKind::kSent, {}, true, &folder),
            kOk);
  EXPECT_EQ(folder, MailFolderRef());
}

TEST_F(StoreMail, SilentHarvestFillsTheAllowedList) {
  m_module->StartWhitelistPrefill();
  EXPECT_TRUE(WaitUntil([] { return Whitelist().size() == 5; }));
}

}  // namespace
}  // namespace postmarker::test
