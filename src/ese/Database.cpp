#include "ese/Database.h"

#include <algorithm>
#include <optional>

#include "ese/Catalog.h"
#include "ese/Compression.h"
#include "ese/LongValue.h"

namespace postmarker::ese {
namespace {

using State = ReadOutcome::State;

ReadOutcome Give(std::string_view whole, size_t limit, std::string* value) {
  value->assign(whole.substr(0, limit));
  return {State::kValue, whole.size()};
}

}  // namespace

Database::Database(std::string_view bytes) : m_file(bytes), m_status(m_file.Status()) {
  if (m_status != FileStatus::kOpen) {
    return;
  }
  m_tables = ReadCatalog(m_file);
  if (m_tables.empty()) {
    m_status = FileStatus::kDamaged;
  }
}

const Table* Database::FindTable(std::string_view name) const {
  const auto found = std::find_if(m_tables.begin(), m_tables.end(), [name](const Table& table) {
    return IsSameName(table.name, name);
  });
  return found == m_tables.end() ? nullptr : &*found;
}

ReadOutcome ReadValue(const Database& database, const Table& table, const Record& record,
                      const Column& column, size_t number, size_t limit, std::string* value) {
  value->clear();
  const StoredValue stored = record.Find(column, number);
  switch (stored.state) {
    case StoredValue::State::kNull:
      return {State::kNull, 0};
    case StoredValue::State::kDamaged:
      return {State::kDamaged, 0};
    case StoredValue::State::kDefault:
      return column.defaultValue ? Give(*column.defaultValue, limit, value)
                                 : ReadOutcome{State::kNull, 0};
    case StoredValue::State::kPresent:
      break;
  }
  if (stored.isSeparated) {
    size_t fullSize = 0;
    if (!ReadLongValue(database.File(), table.longValues, stored.bytes, limit, value, &fullSize)) {
      value->clear();
      return {State::kDamaged, 0};
    }
    return {State::kValue, fullSize};
  }
  if (!stored.isCompressed) {
    return Give(stored.bytes, limit, value);
  }
  const std::optional<std::string> whole = Decompress(stored.bytes);
  return whole ? Give(*whole, limit, value) : ReadOutcome{State::kDamaged, 0};
}

}  // namespace postmarker::ese
