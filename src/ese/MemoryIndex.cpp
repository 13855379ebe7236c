#include "ese/MemoryIndex.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "ese/IndexKey.h"

namespace postmarker::ese {
namespace {

// As much of a value as takes part in a key.
constexpr size_t kKeyBytes = 255;

struct KeyPart {
  const Column* column;
  KeyRule rule;
};

// Nothing if the catalog lacks one of the columns.
std::optional<std::vector<KeyPart>> FindParts(const Table& table, const Index& definition) {
  std::vector<KeyPart> parts;
  for (const KeyColumn& key : definition.columns) {
    const Column* const column = table.FindColumn(key);
    if (column == nullptr) {
      return std::nullopt;
    }
    parts.push_back({column, {key.isDescending, definition.HasNullsLast()}});
  }
  return parts;
}

std::optional<std::string> MakeKey(const Database& database, const Table& table,
                                   const Record& record, const std::vector<KeyPart>& parts) {
  std::string key;
  std::string value;
  for (const KeyPart& part : parts) {
    const ReadOutcome read = ReadValue(database, table, record, *part.column, 0, kKeyBytes, &value);
    const auto piece = read.state == ReadOutcome::State::kValue
                           ? std::optional<std::string_view>(value)
                           : std::nullopt;
    if (read.state == ReadOutcome::State::kDamaged ||
        AppendOwnKeyPiece(*part.column, part.rule, piece, &key) != KeyOutcome::kMade) {
      return std::nullopt;
    }
  }
  return key;
}

}  // namespace

MemoryIndex::MemoryIndex(const Database& database, const Table& table, const Index& definition) {
  const auto parts = FindParts(table, definition);
  if (!parts) {
    return;
  }
  TreeCursor cursor(database.File(), table.root);
  Record record;
  for (bool isThere = cursor.MoveFirst(); isThere; isThere = cursor.MoveNext()) {
    if (!record.Assign(cursor.Leaf(), cursor.Entry().data)) {
      continue;
    }
    if (std::optional<std::string> key = MakeKey(database, table, record, *parts)) {
      m_rows.push_back({*std::move(key), cursor.Place()});
    }
  }
  std::stable_sort(m_rows.begin(), m_rows.end(),
                   [](const Row& a, const Row& b) { return a.key < b.key; });
}

size_t MemoryIndex::FirstNotBelow(std::string_view key) const {
  const auto found =
      std::lower_bound(m_rows.begin(), m_rows.end(), key,
                       [](const Row& row, std::string_view wanted) { return row.key < wanted; });
  return static_cast<size_t>(found - m_rows.begin());
}

}  // namespace postmarker::ese
