#include "clients/ClientTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace postmarker {
namespace {

TEST(ClientTable, OffersTheSixClientsInOrder) {
  std::vector<std::wstring> names;
  for (const ClientRow& row : AllClients()) {
    names.emplace_back(row.displayName);
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Microsoft Outlook", L"Windows Mail",
                                              L"Outlook Express", L"Windows Live Mail",
                                              L"Mozilla Thunderbird", L"IncrediMail"}));
}

TEST(ClientTable, EveryRowHasAnAdapter) {
  for (const ClientRow& row : AllClients()) {
    EXPECT_NE(row.adapter, nullptr);
  }
}

TEST(ClientTable, FindsARowWhateverTheCase) {
  EXPECT_EQ(FindClient(L"INCREDIMAIL")->displayName, L"IncrediMail");
  EXPECT_EQ(FindClient(L"windows live mail")->displayName, L"Windows Live Mail");
}

TEST(ClientTable, WindowsMailSharesTheSettingsOfOutlookExpress) {
  EXPECT_EQ(ClientSettingsName(L"Windows Mail"), L"Outlook Express");
}

TEST(ClientTable, OtherClientsHaveSettingsOfTheirOwnName) {
  for (const ClientRow& row : AllClients()) {
    if (row.displayName != L"Windows Mail") {
      EXPECT_EQ(row.settingsName, row.displayName);
    }
  }
}

TEST(ClientTable, SettingsNameIsSpeltAsInTheTable) {
  EXPECT_EQ(ClientSettingsName(L"mozilla THUNDERBIRD"), L"Mozilla Thunderbird");
}

TEST(ClientTable, UnknownClientHasItsOwnNameAsSettingsName) {
  EXPECT_EQ(ClientSettingsName(L"Some Other Mailer"), L"Some Other Mailer");
  EXPECT_EQ(ClientSettingsName(L""), L"");
}

TEST(ClientTable, UnknownClientHasNoFoldersNoDefaultAndNoNewFolder) {
  const ClientRow* const row = FindClient(L"Some Other Mailer");
  ASSERT_NE(row, nullptr);
  EXPECT_TRUE(row->settingsName.empty());
  EXPECT_TRUE(row->hookModule.empty());
  MailFolderList folders;
  row->adapter->ListFolders({}, &folders);
  EXPECT_TRUE(folders.empty());
  EXPECT_EQ(row->adapter->FindDefaultFolder({}, folders), MailFolderRef());
  EXPECT_TRUE(row->adapter->CanCreateFolder());
  MailFolderRef created;
  EXPECT_EQ(row->adapter->CreateFolder({}, L"Spam", {}, &created), kFail);
  EXPECT_EQ(created, MailFolderRef());
}

TEST(ClientTable, HookModules) {
  EXPECT_EQ(FindClient(L"Outlook Express")->hookModule, L"StoreShim.dll");
  EXPECT_EQ(FindClient(L"Windows Mail")->hookModule, L"StoreShim.dll");
  EXPECT_EQ(FindClient(L"IncrediMail")->hookModule, L"IncrediMailShim.dll");
  EXPECT_EQ(FindClient(L"Windows Live Mail")->hookModule, L"WindowsLiveShim.dll");
  EXPECT_TRUE(FindClient(L"Microsoft Outlook")->hookModule.empty());
  EXPECT_TRUE(FindClient(L"Mozilla Thunderbird")->hookModule.empty());
}

TEST(ClientTable, LocalFolderIdsAndMoving) {
  for (const ClientRow& row : AllClients()) {
    const bool isLocal = row.displayName == L"Outlook Express" ||
                         row.displayName == L"Windows Mail" ||
                         row.displayName == L"Windows Live Mail";
    EXPECT_EQ(row.hasLocalFolderIds, isLocal);
    EXPECT_EQ(row.canMoveEmails, row.displayName != L"IncrediMail");
  }
}

TEST(ClientTable, HarvestTurnsAreFixedAndTheSharedStoreHasOne) {
  std::map<int, std::wstring> turns;
  for (const ClientRow& row : AllClients()) {
    if (row.harvestTurn != 0) {
      turns[row.harvestTurn] = row.displayName;
    }
  }
  EXPECT_EQ(turns, (std::map<int, std::wstring>{{1, L"Microsoft Outlook"},
                                                {2, L"Outlook Express"},
                                                {3, L"Mozilla Thunderbird"},
                                                {4, L"IncrediMail"},
                                                {5, L"Windows Live Mail"}}));
}

TEST(ClientTable, ScopedTableReplacesTheRowsAndGivesThemBack) {
  const MailClientAdapter adapter;
  const ClientRow rows[] = {{.displayName = L"Test", .settingsName = L"Test", .adapter = &adapter}};
  {
    const ScopedClientTable table(rows);
    EXPECT_EQ(AllClients().size(), 1U);
    EXPECT_EQ(FindClient(L"test")->adapter, &adapter);
    EXPECT_TRUE(FindClient(L"IncrediMail")->settingsName.empty());
  }
  EXPECT_EQ(AllClients().size(), 6U);
}

}  // namespace
}  // namespace postmarker
