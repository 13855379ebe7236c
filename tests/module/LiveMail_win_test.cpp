// Windows Live Mail from its store, or from the suite's module inside it, to the settings and the
// list of allowed addresses.
#include <windows.h>

#include <gmock/gmock.h>

#include "module/ModuleFixture_win.h"
#include "settings/FilterSettings.h"
#include "support/LiveMailInstallation_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kNewFolderButton = 10022;

const std::string kStoreId("\xF0\xE4\xA3\x29\x00\xB9\xDE\xEA", 8);

json ModuleFolder(const char* name, const char* id) {
  return {{"name", name}, {"firstId", id}, {"secondId", "1"}, {"flag", 1}};
}

class LiveMailWizardTest : public testing::Test {
 protected:
  LiveMailWizardTest() {
    LiveMailContent content = {.folders = {{1, 0, u"Anna", 0, 2, u"Anna\\"},
                                           {2, 1, u"Inbox", 1, 3, u"Inbox\\"},
                                           {5, 2, u"Gr\u00FC\u00DFe", 0, 2, u"Gr\\"},
                                           {3, 1, u"Sent Items", 3, 3, u"Sent\\"},
                                           {4, 1, u"Deleted Items", 0, 3, u"Deleted\\"},
                                           {6, 1, u"Junk E-mail", 6, 3, u"Junk\\"}},
                               .messages = {{11, 3, 2, u"Anna <Anna@example.com>", u"ben@x"},
                                            {12, 3, 3, u"me@example.com", u"carl@x"}},
                               .userData = {LiveStoreIdRow(kStoreId)}};
    m_client.WriteStore(content);
    m_request.clientName = L"Windows Live Mail";
    m_module = std::make_unique<Module>();
  }

  void StartModuleInsideTheClient() {
    m_client.StartModule(
        {{"folders",
          {ModuleFolder("\\\\Module", "1"), ModuleFolder("\\\\Module\\Papierkorb", "4"),
           ModuleFolder("\\\\Module\\Werbung", "9")}},
         {"contacts", {"Friend@Example.com"}},
         {"sent", {"ben@example.com"}}});
  }

  std::unique_ptr<WizardSession> StartAtFolders() {
    auto session = std::make_unique<WizardSession>(
        [this](WizardRequest* request) { return m_module->ShowWizard(request); }, &m_request);
    session->WaitForPage(Page::kWelcome);
    session->ClickButton(kNextButton);
    session->WaitForPage(Page::kFolders);
    return session;
  }

  // From the folder page to the end.
  void Finish(const WizardSession& session, const std::wstring& folder) {
    session.WaitForTree();
    session.ClickItem(folder);
    session.ClickButton(kNextButton);
    session.WaitForAddresses();
    m_addresses = session.Addresses();
    session.PassAddresses();
    session.ClickButton(kFinishButton);
  }

  // That the client has to be started again.
  static void PassNotice(const WizardSession& session) {
    HWND button = nullptr;
    WizardSession::Require([&] { return (button = NoticeButton(session)) != nullptr; },
                           "there was no notice");
    ::PostMessageW(button, BM_CLICK, 0, 0);
  }

  static HWND NoticeButton(const WizardSession& session) {
    for (HWND window = nullptr;
         (window = ::FindWindowExW(nullptr, window, L"#32770", L"Kestrelon")) != nullptr;) {
      DWORD process = 0;
      ::GetWindowThreadProcessId(window, &process);
      if (process == ::GetCurrentProcessId() && window != session.Sheet() &&
          ::IsWindowVisible(window) && ::GetDlgItem(window, 0xFFFF) != nullptr) {
        return ::GetDlgItem(window, IDOK);
      }
    }
    return nullptr;
  }

  static std::string SavedStoreId() {
    std::string id(100, '\0');
    auto size = static_cast<uint32_t>(id.size());
    FilterSettings(L"Windows Live Mail").GetMessageStoreId(id.data(), &size);
    id.resize(size);
    return id;
  }

  LiveMailInstallation m_client;
  WizardRequest m_request;
  std::unique_ptr<Module> m_module;
  std::vector<std::wstring> m_addresses;
};

TEST_F(LiveMailWizardTest, WithoutTheModuleInsideTheClientItsStoreIsRead) {
  const std::string before = ReadFile(m_client.DatabasePath());
  const auto session = StartAtFolders();
  session->WaitForTree();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Anna*", "  Inbox", "    Grüße", "  Sent Items",
                                                "  Deleted Items", "  Junk E-mail"));
  EXPECT_EQ(session->SelectedText(), L"Deleted Items");
  Finish(*session, L"Junk E-mail");
  PassNotice(*session);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_THAT(m_addresses, ElementsAre(L"anna@example.com", L"me@example.com"));
  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{L"\\\\Anna\\Junk E-mail", "6", "1", 1}));
  EXPECT_EQ(FilterSettings(L"Windows Live Mail").GetSpamFolderId(), "6");
  EXPECT_EQ(SavedStoreId(), kStoreId);
  EXPECT_EQ(Whitelist(), (AddressSet{L"anna@example.com", L"me@example.com"}));
  const RegistryKey notes =
      RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers", KEY_READ);
  EXPECT_EQ(notes.ReadString(L"Rule", 64), L"[KSSpam]");
  EXPECT_TRUE(ReadFile(m_client.DatabasePath()) == before) << "the store was written";
}

TEST_F(LiveMailWizardTest, ModuleInsideTheClientIsAskedFirst) {
  StartModuleInsideTheClient();
  const auto session = StartAtFolders();
  session->WaitForTree();
  EXPECT_THAT(session->TreeLines(), ElementsAre("Module*", "  Papierkorb", "  Werbung"));
  Finish(*session, L"Werbung");
  PassNotice(*session);
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_THAT(m_addresses, ElementsAre(L"ben@example.com", L"friend@example.com"));
  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{L"\\\\Module\\Werbung", "9", "1", 1}));
  EXPECT_EQ(SavedStoreId(), kStoreId) << "the id is the store's own";
}

TEST_F(LiveMailWizardTest, DefaultFolderIsSavedAsZero) {
  const auto session = StartAtFolders();
  Finish(*session, L"Deleted Items");
  EXPECT_EQ(session->Result(), kWizardFinished);
  EXPECT_EQ(m_request.spamFolder.firstId, "0");
  EXPECT_EQ(FilterSettings(L"Windows Live Mail").GetSpamFolderId(), "0");
}

TEST_F(LiveMailWizardTest, NoNewFolderIsOffered) {
  const auto session = StartAtFolders();
  session->WaitForTree();
  EXPECT_FALSE(::IsWindowEnabled(session->Control(kNewFolderButton)));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
}

TEST_F(LiveMailWizardTest, ModuleThatCanNotBeReachedLeavesTheTreeEmpty) {
  m_client.OwnEventOfModule();
  const auto session = StartAtFolders();
  session->WaitForTree();
  EXPECT_THAT(session->TreeLines(), IsEmpty()) << "the store was read";
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
}

}  // namespace
}  // namespace postmarker::test
