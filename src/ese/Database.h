// A database of the Extensible Storage Engine, read without the engine.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ese/PageFile.h"
#include "ese/Record.h"
#include "ese/Schema.h"

namespace postmarker::ese {

// The tables of a database file. Nothing is ever written. Log files are not read: of a database
// that was not closed cleanly, the newest changes may be missing. A damaged page costs what it
// holds, never more. From one thread at a time.
class Database {
 public:
  // `bytes` is the whole file, which must outlive this object and stay as it is.
  explicit Database(std::string_view bytes);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Anything but kOpen: there are no tables.
  [[nodiscard]] FileStatus Status() const { return m_status; }
  [[nodiscard]] const FileHeader& Header() const { return m_file.Header(); }

  // All tables, those of the engine included.
  [[nodiscard]] const std::vector<Table>& Tables() const { return m_tables; }

  // By name, without regard to case; null if there is none.
  [[nodiscard]] const Table* FindTable(std::string_view name) const;

  [[nodiscard]] const PageFile& File() const { return m_file; }

 private:
  PageFile m_file;
  std::vector<Table> m_tables;
  FileStatus m_status;
};

// A value that was read.
struct ReadOutcome {
  enum class State { kValue, kNull, kDamaged };
  State state = State::kNull;
  size_t fullSize = 0;  // of the value, also if less of it was read
};

// Reads a column of a record of `table`, decompressed and fetched from where it stands. Not more
// than `limit` bytes are put into *value, which is empty if there is none. `number` is as for
// Record::Find.
ReadOutcome ReadValue(const Database& database, const Table& table, const Record& record,
                      const Column& column, size_t number, size_t limit, std::string* value);

}  // namespace postmarker::ese
