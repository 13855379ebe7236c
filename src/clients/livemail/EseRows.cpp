#include "clients/livemail/EseRows.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "ese/IndexKey.h"

namespace postmarker {
namespace {

// What one walk over a table may cost, for each byte of the file. Rows of real files have many more
// bytes for each column that is read of them.
constexpr uint64_t kReadsPerByte = 64;
constexpr uint64_t kBytesPerByte = 64;
constexpr uint64_t kValueOverhead = 16;
constexpr uint64_t kReadsAtLeast = 1024;

constexpr jet::ColumnId kFromTemplate = 0x80000000;

bool FileExists(const std::wstring& path) {
  std::error_code failure;
  const std::u16string units(path.begin(), path.end());
  return std::filesystem::exists(std::filesystem::path(units), failure);
}

}  // namespace

std::shared_ptr<EseAttachment> EseAttachment::Open(const std::wstring& path, jet::Code* error) {
  std::shared_ptr<EseAttachment> attachment(new EseAttachment(path));
  MappedFile& file = attachment->m_file.emplace(path, uint8_t{1});
  if (Failed(file.Status())) {
    *error = FileExists(path) ? jet::kFileAccessDenied : jet::kFileNotFound;
    return nullptr;
  }
  attachment->m_size = file.Size();
  std::string_view bytes = file.Bytes();
  if (!ese::PageFile(bytes).Header().isClean) {
    // Its program may be running: what is read must not change meanwhile.
    attachment->m_copy = bytes;
    bytes = attachment->m_copy;
    attachment->m_file.reset();
  }
  const ese::Database& database = attachment->m_database.emplace(bytes);
  if (database.Status() != ese::FileStatus::kOpen) {
    *error = database.Status() == ese::FileStatus::kUnsupported ? jet::kInvalidDatabaseVersion
                                                                : jet::kDatabaseCorrupted;
    return nullptr;
  }
  return attachment;
}

std::vector<const ese::Index*> EseAttachment::IndexesOf(const ese::Table& table) const {
  std::vector<const ese::Index*> indexes;
  for (const ese::Index& index : table.indexes) {
    indexes.push_back(&index);
  }
  if (const auto created = m_created.find(&table); created != m_created.end()) {
    for (const std::unique_ptr<ese::Index>& index : created->second) {
      indexes.push_back(index.get());
    }
  }
  return indexes;
}

void EseAttachment::AddIndex(const ese::Table& table, ese::Index definition) {
  m_created[&table].push_back(std::make_unique<ese::Index>(std::move(definition)));
}

std::shared_ptr<const ese::MemoryIndex> EseAttachment::InMemory(const ese::Table& table,
                                                                const ese::Index& index) {
  std::shared_ptr<const ese::MemoryIndex>& built = m_inMemory[&index];
  if (!built) {
    built = std::make_shared<const ese::MemoryIndex>(*m_database, table, index);
  }
  return built;
}

jet::Code EseListing::Move(int32_t step) {
  if (step != jet::kMoveFirst && step != jet::kMoveNext) {
    return jet::kInvalidParameter;
  }
  m_next = step == jet::kMoveFirst ? 1 : std::min(m_next, m_rows.size()) + 1;
  return m_next <= m_rows.size() ? jet::kSuccess : jet::kNoCurrentRecord;
}

jet::Code EseListing::Read(jet::ColumnId column, size_t limit, std::string* value,
                           size_t* fullSize) {
  if (m_next == 0 || m_next > m_rows.size()) {
    return jet::kNoCurrentRecord;
  }
  const Row& row = m_rows[m_next - 1];
  if (column == 0 || column > row.size()) {
    return jet::kColumnNotFound;
  }
  const std::optional<std::string>& stored = row[column - 1];
  if (!stored) {
    return jet::kColumnNull;
  }
  *value = stored->substr(0, limit);
  *fullSize = stored->size();
  return jet::kSuccess;
}

EseStoredRows::EseStoredRows(std::shared_ptr<EseAttachment> file, const ese::Table& table)
    : m_file(std::move(file)),
      m_table(&table),
      m_cursor(m_file->Database(), table),
      m_readsLeft(m_file->Size() * kReadsPerByte + kReadsAtLeast),
      m_bytesLeft(m_file->Size() * kBytesPerByte) {
  for (const ese::Column* const column : table.AllColumns()) {
    m_columns.emplace(IdOf(*column), column);
  }
  const auto primary = std::find_if(table.indexes.begin(), table.indexes.end(),
                                    [](const ese::Index& index) { return index.IsPrimary(); });
  m_index = primary == table.indexes.end() ? nullptr : &*primary;
}

jet::ColumnId EseStoredRows::IdOf(const ese::Column& column) {
  const bool needsMark = column.isFromTemplate && column.id > ese::kLastVariableId;
  return column.id | (needsMark ? kFromTemplate : 0);
}

jet::Code EseStoredRows::Move(int32_t step) {
  if (step != jet::kMoveFirst && step != jet::kMoveNext) {
    return jet::kInvalidParameter;
  }
  const bool isThere = step == jet::kMoveFirst ? m_cursor.MoveFirst() : m_cursor.MoveNext();
  return isThere ? jet::kSuccess : jet::kNoCurrentRecord;
}

jet::Code EseStoredRows::Read(jet::ColumnId column, size_t limit, std::string* value,
                              size_t* fullSize) {
  const auto found = m_columns.find(column);
  if (found == m_columns.end()) {
    return jet::kColumnNotFound;
  }
  if (!m_cursor.HasRow()) {
    return jet::kNoCurrentRecord;
  }
  if (m_readsLeft == 0) {
    return jet::kOutOfMemory;
  }
  --m_readsLeft;
  const ese::ReadOutcome outcome = m_cursor.Read(*found->second, 0, limit, value);
  if (outcome.state == ese::ReadOutcome::State::kNull) {
    return jet::kColumnNull;
  }
  const uint64_t cost = value->size() + kValueOverhead;
  if (outcome.state == ese::ReadOutcome::State::kDamaged || cost > m_bytesLeft) {
    return jet::kDatabaseCorrupted;
  }
  m_bytesLeft -= cost;
  *fullSize = outcome.fullSize;
  return jet::kSuccess;
}

jet::Code EseStoredRows::SetCurrentIndex(const std::string& name) {
  const std::vector<const ese::Index*> indexes = m_file->IndexesOf(*m_table);
  const auto found = std::find_if(indexes.begin(), indexes.end(), [&](const ese::Index* index) {
    return ese::IsSameName(index->name, name);
  });
  if (found == indexes.end()) {
    return jet::kIndexNotFound;
  }
  m_index = *found;
  m_key.reset();
  m_isInMemory = m_index->root.page == 0 || !ese::HasKnownOrder(*m_table, *m_index);
  if (m_isInMemory) {
    m_cursor.OrderBy(m_file->InMemory(*m_table, *m_index));
  } else {
    m_cursor.OrderBy(*m_index);
  }
  return jet::kSuccess;
}

jet::Code EseStoredRows::MakeKey(const void* data, size_t size, jet::Grbit grbit) {
  if (m_index == nullptr) {
    return jet::kNoCurrentIndex;
  }
  if (grbit != jet::kNewKey && grbit != 0) {
    return jet::kInvalidGrbit;
  }
  if (grbit == jet::kNewKey) {
    m_key = std::string();
    m_keyColumns = 0;
  }
  if (!m_key) {
    return jet::kKeyNotMade;
  }
  if (m_keyColumns == m_index->columns.size()) {
    return jet::kKeyIsMade;
  }
  const ese::KeyColumn& part = m_index->columns[m_keyColumns];
  const ese::Column* const column = m_table->FindColumn(part);
  if (column == nullptr) {
    return jet::kColumnNotFound;
  }
  std::optional<std::string_view> value;
  if (data != nullptr) {
    value.emplace(static_cast<const char*>(data), size);
  }
  const ese::KeyRule rule = {part.isDescending, m_index->HasNullsLast()};
  const ese::KeyOutcome outcome = m_isInMemory
                                      ? ese::AppendOwnKeyPiece(*column, rule, value, &*m_key)
                                      : ese::AppendKeyPiece(*column, rule, value, &*m_key);
  if (outcome != ese::KeyOutcome::kMade) {
    m_key.reset();
    return jet::kInvalidBufferSize;
  }
  ++m_keyColumns;
  if (!m_isInMemory) {
    m_key->resize(std::min<size_t>(m_key->size(), m_index->keyMost));
  }
  return jet::kSuccess;
}

jet::Code EseStoredRows::Seek(jet::Grbit grbit) {
  if (grbit != jet::kSeekGreaterOrEqual) {
    return jet::kInvalidGrbit;
  }
  const std::optional<std::string> key = std::exchange(m_key, std::nullopt);
  if (!key) {
    return jet::kKeyNotMade;
  }
  switch (m_cursor.Seek(*key)) {
    case ese::Found::kEqual:
      return jet::kSuccess;
    case ese::Found::kGreater:
      return jet::kSeekNotEqual;
    default:
      return jet::kRecordNotFound;
  }
}

jet::Code EseStoredRows::SetIndexRange(jet::Grbit grbit) {
  if (grbit != (jet::kRangeInclusive | jet::kRangeUpperLimit)) {
    return jet::kInvalidGrbit;
  }
  const std::optional<std::string> key = std::exchange(m_key, std::nullopt);
  if (!key) {
    return jet::kKeyNotMade;
  }
  return m_cursor.HasRow() && m_cursor.SetUpperLimit(*key) ? jet::kSuccess : jet::kNoCurrentRecord;
}

}  // namespace postmarker
