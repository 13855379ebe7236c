// IncrediMail's folder databases, made in tests from a description. Needs the SQLite library.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace postmarker::test {

// One row of the table Containers.
struct ImRow {
  std::wstring id;
  std::wstring parent;
  int index = 0;
  std::wstring label;
  std::wstring fileName = {};
  int messages = 0;
};

// One row of the table Headers, as far as tests tell rows apart.
struct ImHeaderRow {
  std::wstring id;
  std::wstring container;
  std::wstring to;
  std::wstring from = {};
  std::wstring subject = {};
  std::wstring account = {};
  int size = 0;
  int lightSize = 0;
  int position = 0;
};

// A connection to a database, for building one and for being in the way of others. Throws if
// something can't be done.
class ImDatabase {
 public:
  // Opens or makes the file. `path` is UTF-16.
  explicit ImDatabase(const std::wstring& path) {
    Require(::sqlite3_open16(Units(path).c_str(), &m_database));
  }
  ImDatabase(const ImDatabase&) = delete;
  ImDatabase& operator=(const ImDatabase&) = delete;
  ~ImDatabase() { ::sqlite3_close(m_database); }

  // Runs statements; their rows, if any, are dropped.
  void Run(const std::string& statements) {
    Require(::sqlite3_exec(m_database, statements.c_str(), nullptr, nullptr, nullptr));
  }

  // The client's table of folders, without a row.
  void AddContainersTable() {
    Run("CREATE TABLE Containers (ContainerID TEXT PRIMARY KEY, ParentContainerID TEXT,"
        " IndexInParent INTEGER, Label TEXT, FileName TEXT, SortField INTEGER,"
        " SortOrder INTEGER, Color INTEGER, MsgsCount INTEGER, NewMsgsCount INTEGER)");
  }

  void AddRows(const std::vector<ImRow>& rows) {
    Run("BEGIN");
    sqlite3_stmt* insert = nullptr;
    Require(::sqlite3_prepare_v2(m_database, "INSERT INTO Containers VALUES(?,?,?,?,?,1,0,0,?,0)",
                                 -1, &insert, nullptr));
    for (const ImRow& row : rows) {
      BindText(insert, 1, row.id);
      BindText(insert, 2, row.parent);
      ::sqlite3_bind_int(insert, 3, row.index);
      BindText(insert, 4, row.label);
      BindText(insert, 5, row.fileName);
      ::sqlite3_bind_int(insert, 6, row.messages);
      ::sqlite3_step(insert);
      Require(::sqlite3_reset(insert));
    }
    ::sqlite3_finalize(insert);
    Run("COMMIT");
  }

  // The client's table of message headers, without a row.
  void AddHeadersTable() {
    Run("CREATE TABLE Headers (HeaderID TEXT PRIMARY KEY, ContainerID TEXT, FromSender TEXT,"
        " ToSender TEXT, Subject TEXT, Account TEXT, ReceivedDate INTEGER, SentDate INTEGER,"
        " Unread INTEGER, Flagged INTEGER, OnlineImages INTEGER, HighlightColor INTEGER,"
        " Priority INTEGER, MsgSize INTEGER, LightMsgSize INTEGER, MsgPos INTEGER,"
        " Deleted INTEGER)");
  }

  // The numbers that a row does not give are 1 to 7 in their order, and 8 for Deleted.
  void AddHeaderRows(const std::vector<ImHeaderRow>& rows) {
    Run("BEGIN");
    sqlite3_stmt* insert = nullptr;
    Require(::sqlite3_prepare_v2(m_database,
                                 "INSERT INTO Headers VALUES(?,?,?,?,?,?,1,2,3,4,5,6,7,?,?,?,8)",
                                 -1, &insert, nullptr));
    for (const ImHeaderRow& row : rows) {
      BindText(insert, 1, row.id);
      BindText(insert, 2, row.container);
      BindText(insert, 3, row.from);
      BindText(insert, 4, row.to);
      BindText(insert, 5, row.subject);
      BindText(insert, 6, row.account);
      ::sqlite3_bind_int(insert, 7, row.size);
      ::sqlite3_bind_int(insert, 8, row.lightSize);
      ::sqlite3_bind_int(insert, 9, row.position);
      ::sqlite3_step(insert);
      Require(::sqlite3_reset(insert));
    }
    ::sqlite3_finalize(insert);
    Run("COMMIT");
  }

  // The client's table of contacts with these addresses.
  void AddContacts(const std::vector<std::wstring>& addresses) {
    Run("CREATE TABLE Contacts (Email TEXT, DisplayName TEXT)");
    sqlite3_stmt* insert = nullptr;
    Require(::sqlite3_prepare_v2(m_database, "INSERT INTO Contacts VALUES(?,'A Name')", -1, &insert,
                                 nullptr));
    for (const std::wstring& address : addresses) {
      BindText(insert, 1, address);
      ::sqlite3_step(insert);
      Require(::sqlite3_reset(insert));
    }
    ::sqlite3_finalize(insert);
  }

 private:
  static std::u16string Units(const std::wstring& wide) { return {wide.begin(), wide.end()}; }

  static void BindText(sqlite3_stmt* statement, int parameter, const std::wstring& text) {
    const std::u16string units = Units(text);
    ::sqlite3_bind_text16(statement, parameter, units.c_str(),
                          static_cast<int>(units.size() * sizeof(char16_t)), SQLITE_TRANSIENT);
  }

  void Require(int result) const {
    if (result != SQLITE_OK) {
      throw std::runtime_error(std::string("a test's database: ") + ::sqlite3_errmsg(m_database));
    }
  }

  sqlite3* m_database = nullptr;
};

// Makes a folder database with these rows; its texts are in UTF-8.
inline void MakeContainersDatabase(const std::wstring& path, const std::vector<ImRow>& rows) {
  ImDatabase database(path);
  database.Run("PRAGMA encoding='UTF-8'");
  database.AddContainersTable();
  database.AddRows(rows);
}

// "{00000000-0000-4000-8000-000000001234}" for 0x1234.
inline std::wstring ImGuid(uint32_t number) {
  static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring guid = L"{00000000-0000-4000-8000-000000000000}";
  for (size_t place = guid.size() - 2; number != 0; number >>= 4, --place) {
    guid[place] = kDigits[number & 0xF];
  }
  return guid;
}

}  // namespace postmarker::test
