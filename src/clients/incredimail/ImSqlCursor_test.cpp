#include "clients/incredimail/ImSqlCursor.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/ImDatabase.h"
#include "support/MappedFile.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::TempFolder;

class ImSqlCursorTest : public testing::Test {
 protected:
  void Make(const std::string& statements) { ImDatabase(m_path).Run(statements); }

  TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("test.db");
};

TEST_F(ImSqlCursorTest, WalksTheRowsAndClosesBehindTheLast) {
  Make("CREATE TABLE t(a TEXT, b INTEGER); INSERT INTO t VALUES('x', 1), ('y', -2)");
  ImSqlCursor cursor(m_path, L"SELECT a, b FROM t;");
  ASSERT_TRUE(cursor.HasRow());
  EXPECT_FALSE(cursor.IsDone());
  EXPECT_EQ(cursor.Text(0), L"x");
  EXPECT_EQ(cursor.Integer(1), 1);
  cursor.Next();
  ASSERT_TRUE(cursor.HasRow());
  EXPECT_EQ(cursor.Text(0), L"y");
  EXPECT_EQ(cursor.Integer(1), -2);
  cursor.Next();
  EXPECT_FALSE(cursor.HasRow());
  EXPECT_FALSE(cursor.IsDone());
  cursor.Next();
  EXPECT_FALSE(cursor.HasRow());
}

TEST_F(ImSqlCursorTest, StatementWithoutRowsIsDone) {
  Make("CREATE TABLE t(a TEXT)");
  const ImSqlCursor empty(m_path, L"SELECT a FROM t;");
  EXPECT_FALSE(empty.HasRow());
  EXPECT_TRUE(empty.IsDone());
  EXPECT_TRUE(ImSqlCursor(m_path, L"INSERT INTO t VALUES('x');").IsDone());
  EXPECT_TRUE(ImSqlCursor(m_path, L"SELECT a FROM t;").HasRow());
}

TEST_F(ImSqlCursorTest, OnlyTheFirstStatementRuns) {
  Make("CREATE TABLE t(a TEXT)");
  EXPECT_TRUE(ImSqlCursor(m_path, L"INSERT INTO t VALUES('x'); DROP TABLE t;").IsDone());
  EXPECT_TRUE(ImSqlCursor(m_path, L"SELECT a FROM t;").HasRow());
}

TEST_F(ImSqlCursorTest, ColumnsAreEmptyWithoutARow) {
  Make("CREATE TABLE t(a TEXT)");
  ImSqlCursor done(m_path, L"SELECT a FROM t;");
  EXPECT_EQ(done.Text(0), L"");
  EXPECT_EQ(done.Integer(0), 0);
  ImSqlCursor failed(m_path, L"SELECT a FROM missing;");
  EXPECT_EQ(failed.Text(0), L"");
  EXPECT_EQ(failed.Integer(0), 0);
}

TEST_F(ImSqlCursorTest, NullsAndColumnsThatAreNotThereAreEmpty) {
  Make("CREATE TABLE t(a TEXT); INSERT INTO t VALUES(NULL)");
  ImSqlCursor cursor(m_path, L"SELECT a FROM t;");
  ASSERT_TRUE(cursor.HasRow());
  EXPECT_EQ(cursor.Text(0), L"");
  EXPECT_EQ(cursor.Integer(0), 0);
  EXPECT_EQ(cursor.Text(7), L"");
}

TEST_F(ImSqlCursorTest, TextEndsAtItsFirstNul) {
  Make("CREATE TABLE t(a TEXT); INSERT INTO t VALUES('ab' || char(0) || 'cd')");
  ImSqlCursor cursor(m_path, L"SELECT a FROM t;");
  EXPECT_EQ(cursor.Text(0), L"ab");
}

TEST_F(ImSqlCursorTest, TextIsUtf16InDatabasesOfBothEncodings) {
  const std::wstring path16 = m_folder.PathOf("utf16.db");
  const std::string make =
      "CREATE TABLE t(a TEXT); INSERT INTO t VALUES(char(0xFC, 0x3B1, 0x44F, 0x5E73, 0x1F4E7))";
  Make("PRAGMA encoding='UTF-8';" + make);
  ImDatabase(path16).Run("PRAGMA encoding='UTF-16le';" + make);
  const std::wstring expected = {0xFC, 0x3B1, 0x44F, 0x5E73, 0xD83D, 0xDCE7};
  for (const std::wstring& path : {m_path, path16}) {
    ImSqlCursor cursor(path, L"SELECT a FROM t;");
    EXPECT_EQ(cursor.Text(0), expected);
  }
}

TEST_F(ImSqlCursorTest, StatementTextMayHoldAnyCharacter) {
  Make("CREATE TABLE t(a TEXT)");
  EXPECT_TRUE(ImSqlCursor(m_path, L"INSERT INTO t VALUES('\u00FC\u03B1\u044F\u5E73');").IsDone());
  ImSqlCursor cursor(m_path, L"SELECT a FROM t;");
  EXPECT_EQ(cursor.Text(0), L"\u00FC\u03B1\u044F\u5E73");
}

TEST_F(ImSqlCursorTest, PathMayHoldAnyCharacter) {
  const std::wstring path = m_folder.PathOf("") + L"\u00FC\u03B1\u5E73.db";
  ImDatabase(path).Run("CREATE TABLE t(a TEXT); INSERT INTO t VALUES('x')");
  EXPECT_TRUE(ImSqlCursor(path, L"SELECT a FROM t;").HasRow());
  EXPECT_TRUE(CanOpenForReading(path));
}

TEST_F(ImSqlCursorTest, FolderInPlaceOfADatabaseGivesAClosedCursor) {
  const ImSqlCursor cursor(m_folder.PathOf(""), L"SELECT 1;");
  EXPECT_FALSE(cursor.HasRow());
  EXPECT_FALSE(cursor.IsDone());
}

TEST_F(ImSqlCursorTest, FileThatIsNoDatabaseGivesAClosedCursor) {
  test::WriteFile(m_path, std::string(4096, 'x'));
  const ImSqlCursor cursor(m_path, L"SELECT * FROM sqlite_master;");
  EXPECT_FALSE(cursor.HasRow());
  EXPECT_FALSE(cursor.IsDone());
}

TEST_F(ImSqlCursorTest, FailureInAStepClosesTheCursor) {
  Make("CREATE TABLE t(a TEXT UNIQUE); INSERT INTO t VALUES('x')");
  const ImSqlCursor cursor(m_path, L"INSERT INTO t VALUES('x');");
  EXPECT_FALSE(cursor.IsDone());
}

TEST_F(ImSqlCursorTest, DatabaseLockedByAnotherConnectionHasNoRows) {
  Make("CREATE TABLE t(a TEXT); INSERT INTO t VALUES('x')");
  ImDatabase client(m_path);
  client.Run("BEGIN EXCLUSIVE");
  EXPECT_FALSE(ImSqlCursor(m_path, L"SELECT a FROM t;").HasRow());
  client.Run("COMMIT");
  EXPECT_TRUE(ImSqlCursor(m_path, L"SELECT a FROM t;").HasRow());
}

TEST_F(ImSqlCursorTest, TableThatNeverEndsIsLeft) {
  Make(
      "CREATE VIEW t AS WITH RECURSIVE c(a) AS (SELECT 1 UNION ALL SELECT a + 1 FROM c)"
      " SELECT a FROM c");
  size_t rows = 0;
  for (ImSqlCursor cursor(m_path, L"SELECT a FROM t;"); cursor.HasRow(); cursor.Next()) {
    ++rows;
  }
  EXPECT_GT(rows, 100'000U);
  EXPECT_FALSE(ImSqlCursor(m_path, L"SELECT count(*) FROM t;").HasRow());
}

TEST_F(ImSqlCursorTest, StopIsAskedWhileNoRowComes) {
  Make(
      "CREATE VIEW t AS WITH RECURSIVE c(a) AS (SELECT 1 UNION ALL SELECT a + 1 FROM c)"
      " SELECT a FROM c WHERE a < 0");
  int asked = 0;
  const ImSqlCursor cursor(m_path, L"SELECT a FROM t;", [&asked] { return ++asked == 3; });
  EXPECT_FALSE(cursor.HasRow());
  EXPECT_FALSE(cursor.IsDone());
  EXPECT_EQ(asked, 3);
}

TEST_F(ImSqlCursorTest, TextOfMoreThanFourMebibytesEndsTheRows) {
  Make(
      "CREATE TABLE t(a TEXT); INSERT INTO t VALUES('first'), (hex(zeroblob(1024 * 1024))),"
      " (hex(zeroblob(2 * 1024 * 1024 + 1))), ('last')");
  std::vector<size_t> sizes;
  for (ImSqlCursor cursor(m_path, L"SELECT a FROM t;"); cursor.HasRow(); cursor.Next()) {
    sizes.push_back(cursor.Text(0).size());
  }
  EXPECT_EQ(sizes, (std::vector<size_t>{5, 2 * 1024 * 1024}));
}

}  // namespace
}  // namespace postmarker
