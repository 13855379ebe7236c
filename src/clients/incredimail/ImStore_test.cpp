#include "clients/incredimail/ImStore.h"
#include "clients/incredimail/ImPaths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "clients/incredimail/ImFolderTree.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSqlCursor.h"
#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/MappedFile.h"
#include "support/Prefixes.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::ImGuid;
using test::ImRow;
using test::TempFolder;

std::vector<ImRow> SmallTree() {
  return {{ImGuid(1), L"", 0, L"", L"", 0},
          {ImGuid(2), ImGuid(1), 0, L"Inbox", L"Inbox", 12},
          {ImGuid(3), ImGuid(1), 1, L"Entw\u00FCrfe", L"Drafts", 3},
          {ImGuid(4), ImGuid(2), 0, L"\u0414\u0440\u0443\u0437\u044C\u044F", L"Friends", 40}};
}

// Of the many ways to harm a file only some are tried where opening files takes its time.
#if defined(_WIN32)
constexpr size_t kThinning = 17;
#else
constexpr size_t kThinning = 1;
#endif

class ImStoreTest : public testing::Test {
 protected:
  TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("Containers.db");
};

TEST_F(ImStoreTest, DatabaseLiesInTheMessageStoreOfTheIdentity) {
  const std::wstring path = ContainersDatabasePath(L"ID");
  EXPECT_EQ(std::filesystem::path(path),
            std::filesystem::path("ID") / "Message Store" / "Containers.db");
}

TEST_F(ImStoreTest, ReadsAllColumns) {
  test::MakeContainersDatabase(m_path, SmallTree());
  const ImContainerMap map = ReadContainerRows(m_path);
  ASSERT_EQ(map.Size(), 4U);
  const ImContainer* const friends = map.Find(ImGuid(4));
  ASSERT_NE(friends, nullptr);
  EXPECT_EQ(friends->ParentContainerID, ImGuid(2));
  EXPECT_EQ(friends->IndexInParent, 0U);
  EXPECT_EQ(friends->Label, L"\u0414\u0440\u0443\u0437\u044C\u044F");
  EXPECT_EQ(friends->FileName, L"Friends");
  EXPECT_EQ(friends->MsgsCount, 40U);
  EXPECT_EQ(friends->Path, L"");
}

TEST_F(ImStoreTest, LabelIsReadUpToItsFirstNul) {
  test::MakeContainersDatabase(m_path, {{ImGuid(1), L"", 0, L""}});
  ImDatabase(m_path).Run(
      "INSERT INTO Containers(ContainerID, ParentContainerID, Label) VALUES"
      " ('a', 'b', 'In' || char(0) || 'box')");
  EXPECT_EQ(ReadContainerRows(m_path).Find(L"a")->Label, L"In");
}

TEST_F(ImStoreTest, DatabaseIsReadAndNotTheOlderStoreBesideIt) {
  const test::ImIdentityFolder identity(m_folder.Path() / "{1}");
  identity.WriteFolders({{ImGuid(7), L"Older", L"Older"}});
  EXPECT_NE(ReadStoredContainers(identity.Directory(), L"Root").Find(ImGuid(7)), nullptr);
  EXPECT_NE(ReadStoredContainers(identity.Directory(), L"Root").Find(L"Root"), nullptr);
  test::MakeContainersDatabase(identity.StoreFile("Containers.db"), SmallTree());
  EXPECT_EQ(ReadStoredContainers(identity.Directory(), L"Root").Size(), 4U);
  test::WriteFile(identity.StoreFile("Containers.db"), "no database");
  EXPECT_TRUE(ReadStoredContainers(identity.Directory(), L"Root").IsEmpty());
}

TEST_F(ImStoreTest, IdentityWithoutAnyStoreHasNoFolders) {
  EXPECT_TRUE(ReadStoredContainers(m_folder.PathOf("gone"), L"Root").IsEmpty());
}

TEST_F(ImStoreTest, NegativeIndexSortsBehindAllOthers) {
  test::MakeContainersDatabase(m_path, {{ImGuid(1), L"", 0, L""},
                                        {ImGuid(2), ImGuid(1), -1, L"A"},
                                        {ImGuid(3), ImGuid(1), 5, L"B"}});
  const ImContainerMap map = ReadContainerRows(m_path);
  EXPECT_EQ(map.Find(ImGuid(2))->IndexInParent, 0xFFFFFFFFU);
  EXPECT_EQ(OrderContainers(map).back()->Label, L"A");
}

TEST_F(ImStoreTest, MissingDatabaseIsNotMade) {
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
  EXPECT_FALSE(CanOpenForReading(m_path));
}

TEST_F(ImStoreTest, EmptyFileGivesAnEmptyTree) {
  test::WriteFile(m_path, "");
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
}

TEST_F(ImStoreTest, FileThatIsNoDatabaseGivesAnEmptyTree) {
  test::WriteFile(m_path, std::string(10'000, '\x7F'));
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
}

TEST_F(ImStoreTest, DatabaseWithoutTheTableGivesAnEmptyTree) {
  ImDatabase(m_path).Run("CREATE TABLE Headers(HeaderID TEXT)");
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
}

TEST_F(ImStoreTest, TableWithoutAColumnGivesAnEmptyTree) {
  ImDatabase(m_path).Run(
      "CREATE TABLE Containers(ContainerID, ParentContainerID); INSERT INTO Containers"
      " VALUES('{1}', '')");
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
}

TEST_F(ImStoreTest, RowsOfNullsAndNumbersAreRead) {
  ImDatabase database(m_path);
  database.AddContainersTable();
  database.Run(
      "INSERT INTO Containers(ContainerID, IndexInParent, Label) VALUES"
      " (NULL, 'x', 7), (5, 99999999999, x'4142')");
  const ImContainerMap map = ReadContainerRows(m_path);
  ASSERT_EQ(map.Size(), 2U);
  EXPECT_EQ(map.Find(L"")->Label, L"7");
  EXPECT_EQ(map.Find(L"")->IndexInParent, 0U);
  EXPECT_NE(map.Find(L"5"), nullptr);
}

TEST_F(ImStoreTest, StopEndsTheReadingOfALongTreeBetweenItsRows) {
  constexpr size_t kRows = 50'000;
  {
    ImDatabase database(m_path);
    database.AddContainersTable();
    database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 50000)"
        " INSERT INTO Containers(ContainerID, Label) SELECT i, 'Folder' FROM n");
  }
  int asked = 0;
  const StopQuery stop = [&asked] { return ++asked >= 2; };
  const size_t size = ReadContainerRows(m_path, stop).Size();
  EXPECT_GT(size, 0U);
  EXPECT_LT(size, kRows);
  EXPECT_EQ(ReadContainerRows(m_path).Size(), kRows);
}

TEST_F(ImStoreTest, LockedDatabaseGivesAnEmptyTree) {
  test::MakeContainersDatabase(m_path, SmallTree());
  ImDatabase client(m_path);
  client.Run("BEGIN EXCLUSIVE");
  EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty());
}

TEST_F(ImStoreTest, DatabaseThatTheClientReadsIsReadToo) {
  test::MakeContainersDatabase(m_path, SmallTree());
  ImDatabase client(m_path);
  client.Run("BEGIN; SELECT * FROM Containers");
  EXPECT_EQ(ReadContainerRows(m_path).Size(), 4U);
}

TEST_F(ImStoreTest, DatabaseInAReadOnlyFolderIsRead) {
  test::MakeContainersDatabase(m_path, SmallTree());
  using std::filesystem::perms;
  const auto file = m_folder.Path() / "Containers.db";
  std::filesystem::permissions(file, perms::owner_read | perms::group_read);
  std::filesystem::permissions(m_folder.Path(), perms::owner_read | perms::owner_exec);
  EXPECT_EQ(ReadContainerRows(m_path).Size(), 4U);
  std::filesystem::permissions(m_folder.Path(), perms::owner_all);
  std::filesystem::permissions(file, perms::owner_all);
}

// Whatever is left of a tree must go through all that follows.
void ExpectUsable(ImContainerMap map) {
  FillPaths(&map, L"\\\\Ann");
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  EXPECT_LE(folders.size(), map.Size());
}

TEST_F(ImStoreTest, DatabaseThatLacksAPageGivesAnEmptyTree) {
  test::MakeContainersDatabase(m_path, SmallTree());
  const std::string bytes = test::ReadFile(m_path);
  constexpr size_t kPage = 4096;  // the file has three
  ASSERT_EQ(bytes.size(), 3 * kPage);
  for (size_t length = 0; length <= 2 * kPage; length += length < 200 ? kThinning : 97) {
    test::WriteFile(m_path, std::string_view(bytes).substr(0, length));
    EXPECT_TRUE(ReadContainerRows(m_path).IsEmpty()) << "cut at " << length;
  }
}

// Small pages make a database of a few folders small enough for every cut.
TEST_F(ImStoreTest, EveryCutOfADatabaseEndsWell) {
  {
    ImDatabase database(m_path);
    database.Run("PRAGMA page_size=512");
    database.AddContainersTable();
    database.AddRows(SmallTree());
  }
  const std::string bytes = test::ReadFile(m_path);
  for (size_t length = 0; length < bytes.size(); length += kThinning) {
    test::WriteFile(m_path, std::string_view(bytes).substr(0, length));
    const ImContainerMap map = ReadContainerRows(m_path);
    EXPECT_LE(map.Size(), SmallTree().size());
    EXPECT_FALSE(AddFolder(m_path, {L"it's", L"", 0, L"", L""}));
  }
}

TEST_F(ImStoreTest, DatabaseCutShortInItsLastPageGivesNoFolderThatWasNotThere) {
  std::vector<ImRow> rows;
  for (uint32_t i = 0; i < 40; ++i) {
    rows.push_back({ImGuid(i), L"", static_cast<int>(i), L"Folder"});
  }
  {
    ImDatabase database(m_path);
    database.Run("PRAGMA page_size=1024");
    database.AddContainersTable();
    database.AddRows(rows);
  }
  const std::string bytes = test::ReadFile(m_path);
  for (size_t length = bytes.size() - 1023; length < bytes.size(); length += 31) {
    test::WriteFile(m_path, std::string_view(bytes).substr(0, length));
    const ImContainerMap map = ReadContainerRows(m_path);
    EXPECT_LE(map.Size(), rows.size());
    for (const ImContainer& container : map.Containers()) {
      ASSERT_LT(container.IndexInParent, rows.size());
      EXPECT_EQ(container.ContainerID, rows[container.IndexInParent].id) << "cut at " << length;
    }
  }
}

TEST_F(ImStoreTest, FlippedBytesNeverCrash) {
  {
    ImDatabase database(m_path);
    database.Run("PRAGMA page_size=512");
    database.AddContainersTable();
    database.AddRows(SmallTree());
  }
  const std::string bytes = test::ReadFile(m_path);
  ASSERT_GT(bytes.size(), 1000U);
  std::string harmed = bytes;
  for (size_t place = 0; place < bytes.size(); place += kThinning) {
    // Most of a page is empty.
    if (bytes[place] == 0 && place % 8 != 0 && kThinning == 1) {
      continue;
    }
    harmed[place] = static_cast<char>(~bytes[place]);
    test::WriteFile(m_path, harmed);
    ExpectUsable(ReadContainerRows(m_path));
    harmed[place] = bytes[place];
  }
}

TEST_F(ImStoreTest, LargeTreeIsReadWhole) {
  std::vector<ImRow> rows = {{ImGuid(1), L"", 0, L""}};
  for (uint32_t i = 2; i <= 5000; ++i) {
    rows.push_back({ImGuid(i), ImGuid(i / 8 + (i < 8 ? 1 : 0)), static_cast<int>(i),
                    L"Folder " + std::to_wstring(i)});
  }
  test::MakeContainersDatabase(m_path, rows);
  ImContainerMap map = ReadContainerRows(m_path);
  FillPaths(&map, L"\\\\Ann");
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  EXPECT_EQ(folders.size(), 5000U);
}

TEST_F(ImStoreTest, StatementForAFolder) {
  EXPECT_EQ(AddFolderStatement({L"{N}", L"{P}", 7, L"My Label", L"My Label1"}),
            L"INSERT OR REPLACE INTO Containers(ContainerID, ParentContainerID, IndexInParent, "
            L"Label, FileName, SortField, SortOrder, Color, MsgsCount, NewMsgsCount) "
            L"VALUES('{N}','{P}',7,'My Label','My Label1',1,0,0,0,0);");
}

TEST_F(ImStoreTest, AddedFolderIsARowOfTheTable) {
  test::MakeContainersDatabase(m_path, SmallTree());
  ASSERT_TRUE(AddFolder(m_path, {ImGuid(9), ImGuid(2), 1, L"\u03A3\u03C0\u03B1\u03BC", L"f"}));
  ImSqlCursor row(m_path,
                  L"SELECT ParentContainerID, IndexInParent, Label, FileName, SortField, "
                  L"SortOrder, Color, MsgsCount, NewMsgsCount FROM Containers WHERE ContainerID='" +
                      ImGuid(9) + L"';");
  ASSERT_TRUE(row.HasRow());
  EXPECT_EQ(row.Text(0), ImGuid(2));
  EXPECT_EQ(row.Integer(1), 1);
  EXPECT_EQ(row.Text(2), L"\u03A3\u03C0\u03B1\u03BC");
  EXPECT_EQ(row.Text(3), L"f");
  EXPECT_EQ(row.Integer(4), 1);
  for (const int column : {5, 6, 7, 8}) {
    EXPECT_EQ(row.Text(column), L"0");
  }
}

TEST_F(ImStoreTest, LabelWithAQuoteIsNotAddedAndChangesNothing) {
  test::MakeContainersDatabase(m_path, SmallTree());
  const std::string before = test::ReadFile(m_path);
  for (const wchar_t* text : {L"Ann's", L"Ann''s", L"'", L"x', 'y', 1,0,0,0,0); --"}) {
    EXPECT_FALSE(AddFolder(m_path, {ImGuid(9), ImGuid(2), 1, text, L"f"})) << Narrow(text);
    EXPECT_FALSE(AddFolder(m_path, {ImGuid(9), ImGuid(2), 1, L"l", text})) << Narrow(text);
    EXPECT_FALSE(AddFolder(m_path, {ImGuid(9), text, 1, L"l", L"f"})) << Narrow(text);
    EXPECT_FALSE(AddFolder(m_path, {text, ImGuid(2), 1, L"l", L"f"})) << Narrow(text);
  }
  EXPECT_EQ(test::ReadFile(m_path), before);
}

TEST_F(ImStoreTest, FolderIsNotAddedToALockedDatabase) {
  test::MakeContainersDatabase(m_path, SmallTree());
  {
    ImDatabase client(m_path);
    client.Run("BEGIN IMMEDIATE");
    EXPECT_FALSE(AddFolder(m_path, {ImGuid(9), ImGuid(2), 1, L"Spam", L"Spam"}));
  }
  EXPECT_EQ(ReadContainerRows(m_path).Size(), 4U);
}

TEST_F(ImStoreTest, ChildrenAreCountedWhateverTheCaseOfTheParentsId) {
  test::MakeContainersDatabase(m_path, {{L"{r}", L"", 0, L""},
                                        {L"{1}", L"{R}", 0, L"A"},
                                        {L"{2}", L"{r}", 1, L"B"},
                                        {L"{3}", L"{rr}", 1, L"C"}});
  EXPECT_EQ(CountChildren(ReadContainerRows(m_path), L"{R}"), 2U);
}

}  // namespace
}  // namespace postmarker
