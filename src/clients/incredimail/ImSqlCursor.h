// One SQLite database and one statement on it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/StopQuery.h"
#include "support/UniqueHandle.h"

namespace postmarker {

// Opens a database, prepares a statement and takes its first step, and closes itself after the
// last row and after every failure. There is no transaction, no waiting and no second try: a
// database that the client has locked just has no rows.
// A statement does no more work than reading the whole file several times would need, so that a
// damaged one ends as well; it then counts as failed. So does one with a text of some 4 MiB or
// more, and one that is stopped.
// From one thread at a time.
class ImSqlCursor {
 public:
  // `database` is a path, `statement` the text of one statement, both UTF-16. A database that is
  // missing is made by the library: test for the file first. `stop` is asked every few milliseconds
  // while the library works.
  ImSqlCursor(const std::wstring& database, const std::wstring& statement, StopQuery stop = {});
  ImSqlCursor(const ImSqlCursor&) = delete;
  ImSqlCursor& operator=(const ImSqlCursor&) = delete;
  ~ImSqlCursor();

  // True while the cursor stands on a row.
  [[nodiscard]] bool HasRow() const { return IsOpen() && m_status == SQLITE_ROW; }

  // True if the statement ran to its end without a row, as one that writes does.
  [[nodiscard]] bool IsDone() const { return IsOpen() && m_status == SQLITE_DONE; }

  // Moves to the next row. Without one the cursor is closed.
  void Next();

  // A column of the current row, from 0, up to its first NUL; empty for a null value and without a
  // row. The text lives until the next call of Text or Next.
  [[nodiscard]] std::wstring_view Text(int column);

  // The same text if it is stored in one byte for each character and is ASCII; nothing otherwise,
  // or without a row. The bytes live until the next call of Text, AsciiText or Next.
  [[nodiscard]] std::optional<std::string_view> AsciiText(int column);

  // A column as a 32-bit number; 0 without a row.
  [[nodiscard]] int32_t Integer(int column) const;

 private:
  struct DatabaseTraits {
    using Type = sqlite3*;
    static Type None() noexcept { return nullptr; }
    static bool IsOpen(Type database) noexcept { return database != nullptr; }
    static void Close(Type database) noexcept { ::sqlite3_close(database); }
  };
  struct StatementTraits {
    using Type = sqlite3_stmt*;
    static Type None() noexcept { return nullptr; }
    static bool IsOpen(Type statement) noexcept { return statement != nullptr; }
    static void Close(Type statement) noexcept { ::sqlite3_finalize(statement); }
  };

  [[nodiscard]] bool IsOpen() const { return m_database && m_statement; }
  [[nodiscard]] bool HasUtf8Texts() const;
  void Close();
  template <class Units>
  std::wstring_view Widened(const Units& units);
  static int CountWork(void* cursor);

  UniqueHandle<DatabaseTraits> m_database;
  UniqueHandle<StatementTraits> m_statement;  // closed first
  int m_status = SQLITE_ERROR;
  bool m_isUtf8 = false;
  uint64_t m_workLeft = 0;  // in calls of CountWork
  StopQuery m_stop;
  std::wstring m_text;
};

}  // namespace postmarker
