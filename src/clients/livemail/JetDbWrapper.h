// One database file of the engine, read as lists of named values.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "clients/livemail/JetApi.h"
#include "clients/livemail/JetHandles.h"
#include "clients/livemail/JetValue.h"
#include "support/Results.h"

namespace postmarker {

// From the name of an index to the names of its columns, in their order.
using JetIndexes = std::map<std::wstring, std::vector<std::wstring>>;

// Opens a database in place, without a copy. A file that its owner holds open fails. Wrappers of
// one file in one process share the engine's instance; only the one that created it ends it, so
// that one must be destroyed last. Operations return 0 or 0x80004005; an output is empty after a
// failure. They may be called only while Status is 0. A row or column that can't be read is left
// out and fails nothing. Names travel to the engine in the platform's code page. From one thread at
// a time.
class JetDbWrapper {
 public:
  // Opens the file at `path` (UTF-16) with the engine of this machine (MachineJetApi).
  explicit JetDbWrapper(const std::wstring& path);
  // The same with another engine, which must outlive the object.
  JetDbWrapper(const std::wstring& path, const JetApi& api);
  JetDbWrapper(const JetDbWrapper&) = delete;
  JetDbWrapper& operator=(const JetDbWrapper&) = delete;
  // Closes all.
  virtual ~JetDbWrapper();

  ResultCode Status = kFail;  // 0 once the database is open
  std::wstring DatabasePath;
  JetInstanceHandle Instance;  // none if a running instance has the file
  JetSessionHandle Session;
  JetDatabaseHandle Database;
  std::map<std::wstring, JetIndexes> IndexCache;  // by table; never refreshed

  // All tables, those of the engine included.
  ResultCode GetTableNames(std::set<std::wstring>* names);
  ResultCode GetTableColumns(const std::wstring& table, JetColumns* columns);
  ResultCode GetTableIndexes(const std::wstring& table, JetIndexes* indexes);

  // Adds an index on one column to the database.
  ResultCode CreateSingleColumnIndex(const std::wstring& table, const std::wstring& index,
                                     const std::wstring& column);

  // The name of an index whose columns are those of `filter`, in any order; for a filter of one
  // column that has none, an index is created. Empty if there is none.
  std::wstring FindOrCreateIndex(const std::wstring& table, const JetRow& filter,
                                 std::vector<std::wstring>* columns);

  // The rows that have the values of `filter`, which an index finds, and of `required`, which are
  // compared row by row: a column that is not among `columns`, or can't be read, drops no row. Of
  // each row, `columns` are read. A filter value whose width is not the column's finds nothing.
  ResultCode Query(const std::wstring& table, const JetColumns& columns, const JetRow& filter,
                   const JetRow& required, std::vector<JetRow>* rows);

  // The same, row by row: `visit` gets each one, and ends the query with false. It may run other
  // operations of this object.
  using RowVisitor = std::function<bool(JetRow row)>;
  ResultCode Visit(const std::wstring& table, const JetColumns& columns, const JetRow& filter,
                   const JetRow& required, const RowVisitor& visit);

 private:
  bool Open();
  bool FindRunningInstance(std::optional<jet::Instance>* instance) const;
  bool CreateInstance();
  void Close();

  [[nodiscard]] JetTransaction BeginTransaction() const;
  [[nodiscard]] JetTableHandle OpenTable(const std::wstring& table, jet::Grbit grbit) const;

  const JetApi* m_api;
};

}  // namespace postmarker
