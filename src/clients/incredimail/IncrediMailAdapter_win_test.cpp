#include "clients/incredimail/IncrediMailAdapter_win.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "clients/ClientTable.h"
#include "clients/incredimail/ImStore.h"
#include "support/ImInstallation_win.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::ImGuid;
using test::ImInstallation;
using test::ImRow;
using Names = std::vector<std::wstring>;

Names NamesOf(const MailFolderList& folders) {
  Names names;
  for (const MailFolderRef& folder : folders) {
    names.push_back(folder.name);
  }
  return names;
}

std::vector<ImRow> SmallTree(const std::wstring& inbox) {
  return {{ImGuid(1), L"", 0, L""},
          {ImGuid(2), ImGuid(1), 0, inbox},
          {ImGuid(3), ImGuid(1), 3, L"Deleted Items"},
          {ImGuid(4), ImGuid(2), 0, L"Bills"}};
}

// Sets the current directory for a scope.
class ScopedDirectory {
 public:
  explicit ScopedDirectory(const std::filesystem::path& path)
      : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ScopedDirectory(const ScopedDirectory&) = delete;
  ScopedDirectory& operator=(const ScopedDirectory&) = delete;
  ~ScopedDirectory() { std::filesystem::current_path(m_before); }

 private:
  std::filesystem::path m_before;
};

class IncrediMailTest : public testing::Test {
 protected:
  IncrediMailTest() {
    m_client.RegisterProgram();
    m_client.RegisterData();
    std::filesystem::create_directories(m_client.ProgramFolder());
  }

  void AddIdentity(const std::wstring& name, const std::wstring& displayName,
                   const std::wstring& inbox, uint32_t language = 9) {
    m_client.AddIdentity(name, displayName, language);
    m_database = m_client.AddStore(name, SmallTree(inbox));
  }

  void InstallMessages() {
    std::filesystem::copy(test::TestProgramFolder() / "ImSuppRU.dll", m_client.ProgramFolder());
  }

  // What the wizard gets.
  static MailFolderList List() {
    MailFolderList folders;
    FindClient(L"IncrediMail")->adapter->ListFolders({}, &folders);
    return folders;
  }

  static MailFolderList ListOf(const std::wstring& filter) {
    MailFolderList folders;
    EXPECT_EQ(incredimail::ListFolders(filter, {}, &folders), kOk);
    return folders;
  }

  ImInstallation m_client;
  std::wstring m_database;  // of the identity added last
};

TEST_F(IncrediMailTest, TableHasTheAdapterOfTheClient) {
  EXPECT_NE(dynamic_cast<const IncrediMailAdapter*>(FindClient(L"IncrediMail")->adapter), nullptr);
}

TEST_F(IncrediMailTest, FoldersOfTheDefaultIdentity) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  AddIdentity(L"{2}", L"J\u00FCrgen", L"Eingang");
  m_client.SetDefaultIdentity(L"{2}");
  const MailFolderList folders = List();
  EXPECT_EQ(NamesOf(folders),
            (Names{L"\\\\J\u00FCrgen", L"\\\\J\u00FCrgen\\Eingang",
                   L"\\\\J\u00FCrgen\\Eingang\\Bills", L"\\\\J\u00FCrgen\\Deleted Items"}));
  EXPECT_EQ(folders[1], (MailFolderRef{L"\\\\J\u00FCrgen\\Eingang", Narrow(ImGuid(2)), "{2}", 1}));
}

TEST_F(IncrediMailTest, WithoutADefaultValueEveryIdentityIsListed) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  AddIdentity(L"{2}", L"Ben", L"Inbox");
  const MailFolderList folders = List();
  ASSERT_EQ(folders.size(), 8U);
  EXPECT_EQ(folders[0].name, L"\\\\Ann");
  EXPECT_EQ(folders[4].name, L"\\\\Ben");
  EXPECT_EQ(folders[4].secondId, "{2}");
}

TEST_F(IncrediMailTest, FilterTakesTheIdentityWhateverTheCase) {
  AddIdentity(L"{a}", L"Ann", L"Inbox");
  AddIdentity(L"{b}", L"Ben", L"Inbox");
  EXPECT_EQ(ListOf(L"{B}").size(), 4U);
  EXPECT_EQ(ListOf(L"{B}")[0].name, L"\\\\Ben");
  EXPECT_TRUE(ListOf(L"{c}").empty());
  EXPECT_EQ(ListOf(L"").size(), 8U);
}

TEST_F(IncrediMailTest, FoldersAreAppendedToTheList) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  MailFolderList folders(1);
  FindClient(L"IncrediMail")->adapter->ListFolders({}, &folders);
  EXPECT_EQ(folders.size(), 5U);
}

TEST_F(IncrediMailTest, IdentityWithoutADisplayNameIsCalledAfterTheClient) {
  AddIdentity(L"{1}", L"", L"Inbox");
  EXPECT_EQ(List()[1].name, L"\\\\IncrediMail\\Inbox");
}

TEST_F(IncrediMailTest, IdentityWithoutADatabaseAddsNothingAndTheOthersGoOn) {
  m_client.AddIdentity(L"{0}", L"Nobody");
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  EXPECT_EQ(List().size(), 4U);
}

TEST_F(IncrediMailTest, LockedDatabaseGivesNoFolders) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  ImDatabase client(m_database);
  client.Run("BEGIN EXCLUSIVE");
  EXPECT_TRUE(List().empty());
}

TEST_F(IncrediMailTest, DatabaseHeldOpenForWritingIsRead) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  const FileHandle held(::CreateFileW(m_database.c_str(), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                      nullptr));
  ASSERT_TRUE(held);
  EXPECT_EQ(List().size(), 4U);
}

TEST_F(IncrediMailTest, NoInstallationGivesNoFolders) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  RegistryKey::Open(HKEY_CURRENT_USER, ImInstallation::kClientKey, KEY_ALL_ACCESS)
      .DeleteValue(L"ApplicationPath");
  EXPECT_TRUE(List().empty());
  MailFolderRef created;
  EXPECT_EQ(incredimail::CreateFolder(L"Spam", {}, &created), kFail);
}

TEST_F(IncrediMailTest, SpecialFoldersHaveTheNamesOfTheIdentitysLanguage) {
  InstallMessages();
  AddIdentity(L"{1}", L"Ann", L"Inbox", 7);
  EXPECT_EQ(NamesOf(List()),
            (Names{L"\\\\Ann", L"\\\\Ann\\Posteingang", L"\\\\Ann\\Posteingang\\Bills",
                   L"\\\\Ann\\Gel\u00F6schte Objekte"}));
}

TEST_F(IncrediMailTest, ListingThatIsStoppedAppendsNoPartOfAnIdentity) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  ASSERT_FALSE(List().empty());
  int asked = 0;
  MailFolderList folders;
  EXPECT_EQ(incredimail::ListFolders(
                L"", [&asked] { return ++asked > 1; }, &folders),
            kOk);
  EXPECT_GE(asked, 2);
  EXPECT_TRUE(folders.empty());
}

TEST_F(IncrediMailTest, IdentityInEnglishNeverTouchesTheMessages) {
  InstallMessages();  // has English names that differ from those of the store
  AddIdentity(L"{1}", L"Ann", L"In");
  EXPECT_EQ(List()[1].name, L"\\\\Ann\\In");
}

TEST_F(IncrediMailTest, WithoutTheMessagesTheNamesOfTheStoreStay) {
  AddIdentity(L"{1}", L"Ann", L"Inbox", 7);
  ImContainerMap containers;
  EXPECT_EQ(incredimail::ReadContainers(L"{1}", m_client.DataFolder() + L"\\Identities\\{1}", 7, {},
                                        &containers),
            kFail);
  EXPECT_EQ(containers.Find(ImGuid(2))->Path, L"\\\\Ann\\Inbox");
  EXPECT_EQ(List()[1].name, L"\\\\Ann\\Inbox");
}

TEST_F(IncrediMailTest, WithAMessageMissingTheNamesOfTheStoreStay) {
  InstallMessages();
  constexpr uint32_t kFrench = 12;  // lacks three names in the stand-in
  AddIdentity(L"{1}", L"Ann", L"Inbox", kFrench);
  EXPECT_EQ(List()[1].name, L"\\\\Ann\\Inbox");
}

// Below the root of an older store the folders stand as in a database.
TEST_F(IncrediMailTest, FoldersOfAnOlderStore) {
  m_client.AddIdentity(L"{1}", L"Ann");
  m_client.IdentityFolder(L"{1}").WriteFolders(
      {{ImGuid(2), L"Inbox", L"Inbox", {{ImGuid(4), L"Bills", L"Bills"}}},
       {ImGuid(3), L"Deleted Items", L"Deleted Items"}});
  const MailFolderList folders = List();
  EXPECT_EQ(NamesOf(folders), (Names{L"\\\\Ann", L"\\\\Ann\\Inbox", L"\\\\Ann\\Inbox\\Bills",
                                     L"\\\\Ann\\Deleted Items"}));
  ASSERT_EQ(folders.size(), 4U);
  EXPECT_EQ(folders[0], (MailFolderRef{L"\\\\Ann", "\\\\Ann", "{1}", 1}));
  EXPECT_EQ(folders[2], (MailFolderRef{L"\\\\Ann\\Inbox\\Bills", Narrow(ImGuid(4)), "{1}", 1}));
}

TEST_F(IncrediMailTest, SpecialFoldersOfAnOlderStoreHaveTheNamesOfTheLanguage) {
  InstallMessages();
  m_client.AddIdentity(L"{1}", L"Ann", 7);
  m_client.IdentityFolder(L"{1}").WriteFolders(
      {{ImGuid(2), L"Inbox", L"Inbox", {{ImGuid(4), L"Bills", L"Bills"}}},
       {ImGuid(3), L"Outbox", L"Outbox"}});
  EXPECT_EQ(NamesOf(List()), (Names{L"\\\\Ann", L"\\\\Ann\\Posteingang",
                                    L"\\\\Ann\\Posteingang\\Bills", L"\\\\Ann\\Postausgang"}));
  std::wstring id;
  incredimail::FindWellKnownContainer(1, L"", &id);
  EXPECT_EQ(id, ImGuid(3));
}

TEST_F(IncrediMailTest, OlderStoreGetsNoNewFolder) {
  m_client.AddIdentity(L"{1}", L"Ann");
  m_client.IdentityFolder(L"{1}").WriteFolders({{ImGuid(2), L"Inbox", L"Inbox"}});
  const std::string before =
      test::ReadFile(m_client.IdentityFolder(L"{1}").StoreFile("Folders.imm"));
  MailFolderRef created;
  EXPECT_EQ(incredimail::CreateFolder(L"Spam", List()[1], &created), kFail);
  EXPECT_EQ(test::ReadFile(m_client.IdentityFolder(L"{1}").StoreFile("Folders.imm")), before);
}

TEST_F(IncrediMailTest, FoldersCanNotBeCreatedWithOrWithoutADatabase) {
  const MailClientAdapter* const adapter = FindClient(L"IncrediMail")->adapter;
  EXPECT_FALSE(adapter->CanCreateFolder());
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  EXPECT_FALSE(adapter->CanCreateFolder());
  EXPECT_EQ(incredimail::CanCreateFolder(), 0);
}

TEST_F(IncrediMailTest, DefaultFolderIsAnEmptyRecord) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  EXPECT_EQ(FindClient(L"IncrediMail")->adapter->FindDefaultFolder({}, List()), MailFolderRef());
}

TEST_F(IncrediMailTest, CreatedFolderIsTheLastOfItsParentsChildren) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  const MailFolderRef parent = List()[1];
  MailFolderRef created;
  ASSERT_EQ(FindClient(L"IncrediMail")->adapter->CreateFolder({}, L"Sp\u00E4m", parent, &created),
            kOk);
  EXPECT_EQ(created.name, L"\\\\Ann\\Inbox\\Sp\u00E4m");
  EXPECT_EQ(created.secondId, "{1}");
  EXPECT_EQ(created.flag, 1U);
  const ImContainerMap rows = ReadContainerRows(m_database);
  const ImContainer* const row = rows.Find(Widen(created.firstId));
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->ParentContainerID, ImGuid(2));
  EXPECT_EQ(row->IndexInParent, 1U);
  EXPECT_EQ(row->FileName, L"Sp\u00E4m");
  EXPECT_EQ(List()[3], created);
}

TEST_F(IncrediMailTest, IdOfACreatedFolderIsANewGuidInBraces) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  MailFolderRef first;
  MailFolderRef second;
  ASSERT_EQ(incredimail::CreateFolder(L"Spam", List()[1], &first), kOk);
  ASSERT_EQ(incredimail::CreateFolder(L"Spam", List()[1], &second), kOk);
  EXPECT_EQ(first.firstId.size(), 38U);
  EXPECT_EQ(first.firstId.front(), '{');
  EXPECT_EQ(first.firstId.back(), '}');
  EXPECT_NE(first.firstId, second.firstId);
}

TEST_F(IncrediMailTest, ParentsIdentityIsFoundWhateverTheCase) {
  AddIdentity(L"{a}", L"Ann", L"Inbox");
  MailFolderRef parent = List()[1];
  parent.secondId = "{A}";
  MailFolderRef created;
  EXPECT_EQ(incredimail::CreateFolder(L"Spam", parent, &created), kOk);
  EXPECT_EQ(created.secondId, "{A}");
}

TEST_F(IncrediMailTest, LabelWithAQuoteFailsAndChangesNothing) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  MailFolderRef created{L"before", "1", "2", 3};
  for (const wchar_t* label : {L"Ann's", L"Ann''s", L"'", L"''"}) {
    EXPECT_EQ(incredimail::CreateFolder(label, List()[1], &created), kFail) << Narrow(label);
  }
  EXPECT_EQ(created, (MailFolderRef{L"before", "1", "2", 3}));
  EXPECT_EQ(ReadContainerRows(m_database).Size(), 4U);
}

TEST_F(IncrediMailTest, FolderOfAnUnknownIdentityIsNotCreated) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  MailFolderRef parent = List()[1];
  parent.secondId = "{2}";
  MailFolderRef created;
  EXPECT_EQ(incredimail::CreateFolder(L"Spam", parent, &created), kFail);
}

TEST_F(IncrediMailTest, StoreWithoutADatabaseGetsNoNewFolder) {
  m_client.AddIdentity(L"{1}", L"Ann");
  MailFolderRef created;
  EXPECT_EQ(incredimail::CreateFolder(L"Spam", {L"\\\\Ann", "{x}", "{1}", 1}, &created), kFail);
  EXPECT_FALSE(std::filesystem::exists(m_client.DataFolder() + L"\\Identities"));
}

TEST_F(IncrediMailTest, NamesTakenInTheCurrentDirectoryAreAvoided) {
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  const ScopedDirectory directory(m_client.Folder().Path());
  test::WriteFile(m_client.Folder().PathOf("Spam.imm"), "x");
  test::WriteFile(m_client.Folder().PathOf("Spam1.imm"), "x");
  MailFolderRef created;
  ASSERT_EQ(incredimail::CreateFolder(L"Spam", List()[1], &created), kOk);
  const ImContainerMap rows = ReadContainerRows(m_database);
  const ImContainer* const row = rows.Find(Widen(created.firstId));
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->Label, L"Spam");
  EXPECT_EQ(row->FileName, L"Spam11");
}

TEST_F(IncrediMailTest, WellKnownFolderOfTheFirstIdentityThatHasOne) {
  m_client.AddIdentity(L"{0}", L"Nobody");
  AddIdentity(L"{1}", L"Ann", L"Inbox");
  std::wstring id;
  EXPECT_EQ(incredimail::FindWellKnownContainer(3, L"", &id), kOk);
  EXPECT_EQ(id, ImGuid(3));
  incredimail::FindWellKnownContainer(0, L"{1}", &id);
  EXPECT_EQ(id, ImGuid(2));
  incredimail::FindWellKnownContainer(7, L"", &id);
  EXPECT_EQ(id, L"");
  incredimail::FindWellKnownContainer(3, L"{0}", &id);
  EXPECT_EQ(id, L"");
}

}  // namespace
}  // namespace postmarker
