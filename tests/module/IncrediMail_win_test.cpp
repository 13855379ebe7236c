// IncrediMail from its stores to the list of allowed addresses, in the form of databases and in the
// older form of files.
#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <tuple>

#include "module/ModuleFixture_win.h"
#include "settings/FilterSettings.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

enum class Form { kDatabase, kOlderFiles };

// One of the client's two identities: Anna's mails have the number 1 in them, Ben's the number 2.
struct Person {
  const wchar_t* identity;
  const wchar_t* name;
  uint32_t number;
};

constexpr Person kPeople[] = {{L"{ANNA}", L"Anna", 1}, {L"{BEN}", L"Ben", 2}};

class IncrediMailWizardTest : public ModuleFixture {
 protected:
  void MakeStores(Form form) const {
    for (const Person& person : kPeople) {
      const ImIdentityFolder folder = m_client.IdentityFolder(person.identity);
      std::filesystem::remove(folder.StoreFile("Containers.db"));
      if (form == Form::kDatabase) {
        MakeDatabases(folder, person);
      } else {
        MakeFiles(folder, person);
      }
    }
  }

  // A folder's id tells whose it is.
  static std::wstring FolderId(const Person& person, uint32_t folder) {
    return ImGuid(person.number * 0x100 + folder);
  }

  static std::wstring Address(const std::wstring& name, const Person& person) {
    return name + std::to_wstring(person.number) + L"@example.com";
  }

  static std::string StoreIdOf(const FilterSettings& settings) {
    std::string id(100, '\0');
    auto size = static_cast<uint32_t>(id.size());
    settings.GetMessageStoreId(id.data(), &size);
    id.resize(size);
    return id;
  }

 private:
  static void MakeDatabases(const ImIdentityFolder& folder, const Person& person) {
    const std::wstring root = FolderId(person, 0);
    const std::wstring path = folder.StoreFile("Containers.db");
    MakeContainersDatabase(path, {{root, L"", 0, L""},
                                  {FolderId(person, 1), root, 0, L"Inbox"},
                                  {FolderId(person, 2), FolderId(person, 1), 0, L"Gr\u00FC\u00DFe"},
                                  {FolderId(person, 3), root, 1, L"Outbox"},
                                  {FolderId(person, 4), root, 2, L"Sent Items"},
                                  {FolderId(person, 5), root, 3, L"Junk"}});
    ImDatabase database(path);
    database.AddHeadersTable();
    database.AddHeaderRows(
        {{ImGuid(900), FolderId(person, 4),
          L"\"Sent, To\" <" + Address(L"To", person) + L">, " + Address(L"cc", person)}});
    ImDatabase(folder.AddressFile("AddrBook.db3")).AddContacts({Address(L"Friend", person)});
  }

  static void MakeFiles(const ImIdentityFolder& folder, const Person& person) {
    folder.WriteFolders({{FolderId(person, 1),
                          L"Inbox",
                          L"Inbox",
                          {{FolderId(person, 2), L"Gr\u00FC\u00DFe", L"Folder2"}}},
                         {FolderId(person, 3), L"Outbox", L"Outbox"},
                         {FolderId(person, 4), L"Sent Items", L"Sent Items"},
                         {FolderId(person, 5), L"Junk", L"Junk"}});
    ImMessages messages;
    messages.Add({900, L"Sent To <" + Address(L"To", person) + L">", L"me@example.com", L"Hello"},
                 "From: me@example.com\r\nCc: " + Narrow(Address(L"cc", person)) +
                     "\r\nSubject: Hello\r\n\r\nHello.\r\n");
    folder.WriteMessages("Sent Items", messages);
    WriteFile(folder.AddressFile("AddressBook.imb"),
              MakeImAddressFile({Address(L"Friend", person)}));
  }
};

class IncrediMailFormsTest : public IncrediMailWizardTest,
                             public testing::WithParamInterface<std::tuple<Form, size_t>> {};

TEST_P(IncrediMailFormsTest, FolderAddressesAndRuleReachTheirPlaces) {
  const auto [form, index] = GetParam();
  const Person& person = kPeople[index];
  MakeStores(form);
  m_client.SetDefaultIdentity(person.identity);
  Load();
  const auto session = StartAtFolders();
  const std::string root = Narrow(person.name) + "*";
  EXPECT_THAT(session->TreeLines(),
              ElementsAre(root, "  Inbox", "    Grüße", "  Outbox", "  Sent Items", "  Junk"));
  session->ClickItem(L"Junk");
  session->ClickButton(kNextButton);
  session->PassAddresses();
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kWizardFinished);

  const std::string id = Narrow(FolderId(person, 5));
  const std::wstring path = L"\\\\" + std::wstring(person.name) + L"\\Junk";
  EXPECT_EQ(m_request.spamFolder, (MailFolderRef{path, id, Narrow(person.identity), 1}));
  const FilterSettings settings(L"IncrediMail");
  EXPECT_EQ(settings.GetSpamFolderId(), id);
  EXPECT_EQ(settings.GetSpamFolderName(), path + L"\\");
  EXPECT_EQ(StoreIdOf(settings), Narrow(person.identity));
  EXPECT_THAT(Whitelist(),
              ElementsAre(L"cc1@example.com", L"cc2@example.com", L"friend1@example.com",
                          L"friend2@example.com", L"to1@example.com", L"to2@example.com"));
  const RegistryKey notes =
      RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers", KEY_READ);
  EXPECT_EQ(notes.ReadString(L"Rule", 64), L"[KSSpam]");
  EXPECT_EQ(notes.ReadDword(L"Rules"), 1U);
}

INSTANTIATE_TEST_SUITE_P(Stores, IncrediMailFormsTest,
                         testing::Combine(testing::Values(Form::kDatabase, Form::kOlderFiles),
                                          testing::Values(size_t{0}, size_t{1})),
                         [](const auto& tested) {
                           const bool isDatabase = std::get<0>(tested.param) == Form::kDatabase;
                           return std::string(isDatabase ? "Database" : "OlderFiles") +
                                  (std::get<1>(tested.param) == 0 ? "Anna" : "Ben");
                         });

TEST_F(IncrediMailWizardTest, SpecialFoldersAreShownInTheIdentitysLanguage) {
  MakeStores(Form::kOlderFiles);
  constexpr uint32_t kGerman = 7;
  m_client.AddIdentity(L"{ANNA}", L"Anna", kGerman);
  std::filesystem::create_directories(m_client.ProgramFolder());
  std::filesystem::copy(
      TestProgramFolder().parent_path().parent_path() / "src" / "clients" / "ImSuppRU.dll",
      m_client.ProgramFolder());
  Load();
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Anna*", "  Posteingang", "    Grüße", "  Postausgang",
                          "  Gesendete Objekte", "  Gelöschte Objekte"));
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
}

}  // namespace
}  // namespace postmarker::test
