// The sample store of the demo, made by its scripts and read as the module reads a client's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "clients/incredimail/ImAddressFile.h"
#include "clients/incredimail/ImFolderTree.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSentMail.h"
#include "clients/incredimail/ImSqlCursor.h"
#include "clients/incredimail/ImStore.h"
#include "clients/livemail/LiveStore.h"
#include "clients/livemail/LiveStoreId.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::TempFolder;
using Names = std::vector<std::string>;

constexpr char kNora[] = "{7C1A5E40-93D2-4B1F-8E07-2F6B1D9C0A11}";
constexpr char kClub[] = "{B28F61D3-0A4E-4C7B-9D35-51E8C7F4A622}";

class DemoStore : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_folder = new TempFolder;
    ASSERT_EQ(Run("make-store \"" + StorePath() + "\""), 0);
    ASSERT_EQ(Run("make-older-store \"" + OlderPath() + "\""), 0);
  }
  static void TearDownTestSuite() { delete s_folder; }

  static std::string StorePath() { return (s_folder->Path() / "it's a store").string(); }

  static std::string OlderPath() { return (s_folder->Path() / "older").string(); }

  static std::wstring OlderIdentityPath(const std::string& identity) {
    return WidenUtf8(OlderPath() + "/Identities/" + identity);
  }

  // The addresses of an identity's sent mail and of its address book.
  static AddressSet SentAddresses(const std::wstring& identityPath) {
    ImAddressCollector collector;
    PacedStop never;
    CollectSentOf(identityPath, &never, &collector);
    AddressSet addresses;
    collector.AddTo(&addresses);
    return addresses;
  }
  static AddressSet Contacts(const std::wstring& identityPath) {
    AddressSet addresses;
    PacedStop never;
    CollectContactsOf(identityPath, &never, &addresses);
    return addresses;
  }

  static int Run(const std::string& command) {
    return std::system((PM_DEMO_DIR "/" + command).c_str());
  }

  static std::wstring IdentityPath(const std::string& identity) {
    return WidenUtf8(StorePath() + "/Identities/" + identity);
  }

  static MailFolderList Folders(const std::string& identity, std::wstring_view rootLabel) {
    ImContainerMap containers = ReadContainerRows(ContainersDatabasePath(IdentityPath(identity)));
    FillPaths(&containers, rootLabel);
    MailFolderList folders;
    AppendFolders(containers, WidenUtf8(identity), &folders);
    return folders;
  }

  static Names FolderNames(const std::string& identity, std::wstring_view rootLabel) {
    Names names;
    for (const MailFolderRef& folder : Folders(identity, rootLabel)) {
      names.push_back(NarrowUtf8(folder.name));
    }
    return names;
  }

  // The first column of each row.
  static Names Query(const std::string& identity, const std::string& file,
                     const std::wstring& statement) {
    Names texts;
    const std::wstring path = IdentityPath(identity) + WidenUtf8("/" + file);
    for (ImSqlCursor cursor(path, statement); cursor.HasRow(); cursor.Next()) {
      texts.push_back(NarrowUtf8(cursor.Text(0)));
    }
    return texts;
  }

  static inline TempFolder* s_folder = nullptr;
};

TEST_F(DemoStore, HasTwoIdentities) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(StorePath() + "/Identities")) {
    names.insert(entry.path().filename().string());
  }
  EXPECT_EQ(names, (std::set<std::string>{kNora, kClub}));
}

TEST_F(DemoStore, FirstIdentityHasNestedFoldersOfManyScripts) {
  EXPECT_EQ(FolderNames(kNora, L"\\\\N"),
            (Names{"\\\\N", "\\\\N\\Inbox", "\\\\N\\Outbox", "\\\\N\\Sent Items",
                   "\\\\N\\Deleted Items", "\\\\N\\Drafts", "\\\\N\\Junk Mail", "\\\\N\\Kunden",
                   "\\\\N\\Kunden\\Ελληνικά", "\\\\N\\Kunden\\Ελληνικά\\Αθήνα – Συμβόλαια",
                   "\\\\N\\Kunden\\Русский", "\\\\N\\Kunden\\Русский\\Договоры 2008",
                   "\\\\N\\Kunden\\日本語", "\\\\N\\Kunden\\日本語\\東京支社", "\\\\N\\Rechnungen",
                   "\\\\N\\Rechnungen\\Überfällig", "\\\\N\\Privat", "\\\\N\\Privat\\Familie",
                   "\\\\N\\Privat\\Familie\\Großeltern"}));
}

TEST_F(DemoStore, SecondIdentityHasNestedFoldersToo) {
  EXPECT_EQ(
      FolderNames(kClub, L"\\\\C"),
      (Names{"\\\\C", "\\\\C\\Inbox", "\\\\C\\Outbox", "\\\\C\\Sent Items", "\\\\C\\Deleted Items",
             "\\\\C\\Drafts", "\\\\C\\Mitglieder", "\\\\C\\Mitglieder\\Anträge",
             "\\\\C\\Mitglieder\\Beiträge", "\\\\C\\Turniere", "\\\\C\\Turniere\\Kořenný memoriál",
             "\\\\C\\Turniere\\Łódź Open", "\\\\C\\Turniere\\Łódź Open\\Paarungen"}));
}

TEST_F(DemoStore, FoldersCarryTheirIdentity) {
  for (const char* const identity : {kNora, kClub}) {
    for (const MailFolderRef& folder : Folders(identity, L"\\\\X")) {
      EXPECT_EQ(folder.firstId.size(), 38U);
      EXPECT_EQ(folder.secondId, identity);
      EXPECT_EQ(folder.flag, 1U);
    }
  }
}

TEST_F(DemoStore, SentItemsAreTheThirdOfTheSpecialFolders) {
  const ImContainerMap nora = ReadContainerRows(ContainersDatabasePath(IdentityPath(kNora)));
  EXPECT_EQ(nora.Find(FindRootChild(nora, 2))->Label, L"Sent Items");
  const std::wstring statement =
      L"SELECT ToSender FROM Headers WHERE ContainerID='" + FindRootChild(nora, 2) + L"';";
  const Names recipients = Query(kNora, "Message Store/Containers.db", statement);
  EXPECT_EQ(recipients.size(), 300U);
  EXPECT_EQ(std::set<std::string>(recipients.begin(), recipients.end()).size(), 40U);
}

TEST_F(DemoStore, AddressBooksHaveContacts) {
  const std::wstring statement = L"SELECT Email, DisplayName FROM Contacts;";
  EXPECT_EQ(Query(kNora, "AddressBook/AddrBook.db3", statement).size(), 12U);
  EXPECT_EQ(Query(kClub, "AddressBook/AddrBook.db3", statement).size(), 5U);
}

TEST_F(DemoStore, OlderFormHasTheSameFolders) {
  for (const char* const identity : {kNora, kClub}) {
    const MailFolderList folders = Folders(identity, L"\\\\X");
    ImContainerMap containers = ReadStoredContainers(OlderIdentityPath(identity), L"\\\\X");
    FillPaths(&containers, L"\\\\X");
    MailFolderList older;
    AppendFolders(containers, WidenUtf8(identity), &older);
    ASSERT_EQ(older.size(), folders.size());
    // The root has no id of its own in the older form, and names are no longer whole where they
    // are not Latin.
    for (size_t i = 1; i < folders.size(); ++i) {
      EXPECT_EQ(older[i].firstId, folders[i].firstId);
      const auto isLatin = [](wchar_t unit) { return unit < 0x100; };
      if (std::all_of(folders[i].name.begin(), folders[i].name.end(), isLatin)) {
        EXPECT_EQ(older[i].name, folders[i].name);
      }
    }
  }
}

TEST_F(DemoStore, OlderFormHasTheSameRecipientsAndContacts) {
  for (const char* const identity : {kNora, kClub}) {
    const AddressSet contacts = Contacts(IdentityPath(identity));
    EXPECT_EQ(Contacts(OlderIdentityPath(identity)).size(), contacts.size());
    // Some messages of the older form went to contacts as well.
    AddressSet expected = SentAddresses(IdentityPath(identity));
    EXPECT_GT(expected.size(), contacts.size());
    expected.insert(contacts.begin(), contacts.end());
    EXPECT_EQ(SentAddresses(OlderIdentityPath(identity)), expected);
  }
}

TEST_F(DemoStore, MakingItAgainReplacesIt) {
  EXPECT_EQ(Run("make-store \"" + StorePath() + "\""), 0);
  EXPECT_EQ(FolderNames(kNora, L"\\\\N").size(), 19U);
}

TEST_F(DemoStore, StoreOfWindowsLiveMailHasFoldersOfManyScriptsAddressesAndAnId) {
  const std::string path = (s_folder->Path() / "Mail.MSMessageStore").string();
  const std::string maker = PM_LIVE_STORE_MAKER;
  ASSERT_EQ(std::system((maker + " " PM_DEMO_DIR "/live-mail.txt \"" + path + "\"").c_str()), 0);
  MailFolderList folders;
  livemail::ListStoreFolders(WidenUtf8(path), {}, &folders);
  Names names;
  for (const MailFolderRef& folder : folders) {
    names.push_back(NarrowUtf8(folder.name));
  }
  const std::string person = "\\\\Nora Weiß (Gärtnerei)";
  const std::string storage = "\\\\Storage folders";
  EXPECT_EQ(names,
            (Names{person, person + "\\Inbox", person + "\\Sent Items", person + "\\Deleted Items",
                   person + "\\Drafts", person + "\\Junk E-mail", storage, storage + "\\Kunden",
                   storage + "\\Kunden\\Ελληνικά",
                   storage + "\\Kunden\\Ελληνικά\\Αθήνα – Συμβόλαια", storage + "\\Kunden\\Русский",
                   storage + "\\Kunden\\日本語", storage + "\\Kunden\\日本語\\東京支社",
                   storage + "\\Rechnungen", storage + "\\Rechnungen\\Überfällig"}));
  PacedStop never;
  AddressSet addresses;
  livemail::CollectStoreAddresses(WidenUtf8(path), &never, &addresses);
  EXPECT_EQ(addresses, (AddressSet{L"info@gaertnerei.example", L"nora.weiss@schachclub.example",
                                   L"nora@gaertnerei.example"}));
  EXPECT_EQ(livemail::ReadLiveMessageStoreId(WidenUtf8(path), L""),
            "\x5C\x3A\x91\xE0\x7F\x2B\x46\xD8");
}

TEST_F(DemoStore, WrongUsageIsToldByTheExitCode) {
  EXPECT_NE(Run("make-store 2>/dev/null"), 0);
  EXPECT_NE(Run("make-older-store 2>/dev/null"), 0);
  EXPECT_NE(Run("make-registry 2>/dev/null"), 0);
}

TEST_F(DemoStore, RegistryFileNamesStoreProgramAndIdentities) {
  const std::string path = (s_folder->Path() / "client.reg").string();
  ASSERT_EQ(Run("make-registry 'C:\\My \"Mail\"' 'D:\\IM\\IncMail.exe' >'" + path + "'"), 0);
  const std::string bytes = test::ReadFile(WidenUtf8(path));
  ASSERT_EQ(bytes.size() % 2, 0U);
  std::wstring units;
  for (size_t i = 0; i < bytes.size(); i += 2) {
    units += static_cast<wchar_t>(static_cast<uint8_t>(bytes[i]) |
                                  (static_cast<uint8_t>(bytes[i + 1]) << 8));
  }
  const std::string text = NarrowUtf8(units);
  EXPECT_TRUE(text.starts_with("\xEF\xBB\xBFWindows Registry Editor Version 5.00\r\n\r\n"));
  for (const char* const part :
       {"\r\n[HKEY_CURRENT_USER\\Software\\IncrediMail]\r\n"
        "\"ApplicationPath\"=\"C:\\\\My \\\"Mail\\\"\"\r\n",
        "\\App Paths\\IncrediMail.exe]\r\n@=\"D:\\\\IM\\\\IncMail.exe\"\r\n",
        "\\Identities]\r\n@=\"{7C1A5E40-93D2-4B1F-8E07-2F6B1D9C0A11}\"\r\n",
        "\\{7C1A5E40-93D2-4B1F-8E07-2F6B1D9C0A11}]\r\n\"Identity\"=\"Nora Weiß\"\r\n"
        "\"UILanguage\"=dword:00000009\r\n",
        "\\{B28F61D3-0A4E-4C7B-9D35-51E8C7F4A622}]\r\n"
        "\"Identity\"=\"Schachclub Lindenau\"\r\n\"UILanguage\"=dword:00000009\r\n"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
}

}  // namespace
}  // namespace postmarker
