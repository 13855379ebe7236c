// Tables, columns and indexes, as the catalog of a database tells them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ese/TreeCursor.h"

namespace postmarker::ese {

enum class ColumnType : uint32_t {
  kNone = 0,  // a deleted column
  kBit = 1,
  kUnsignedByte = 2,
  kShort = 3,
  kLong = 4,
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kLongBinary = 11,
  kLongText = 12,
  kUnsignedLong = 14,
  kLongLong = 15,
  kGuid = 16,
  kUnsignedShort = 17,
  kUnsignedLongLong = 18,
};

inline constexpr uint32_t kCodePageLatin = 1252;
inline constexpr uint32_t kCodePageUtf16 = 1200;

// The kind of a column follows from its id.
inline constexpr uint32_t kLastFixedId = 127;
inline constexpr uint32_t kLastVariableId = 255;

// The number of bytes of a value; 0 for types whose values differ in size.
uint32_t FixedSize(ColumnType type);

constexpr bool IsText(ColumnType type) {
  return type == ColumnType::kText || type == ColumnType::kLongText;
}

// Names are ASCII and compared without regard to case.
struct Column {
  std::string name;
  uint32_t id = 0;
  ColumnType type = ColumnType::kNone;
  uint32_t size = 0;      // of a fixed column; of others the largest, 0 if the catalog doesn't say
  uint32_t codePage = 0;  // as the catalog says; the bytes of a text need not agree
  uint32_t offset = 0;    // of a fixed column, in the record
  bool isFromTemplate = false;  // of a table that others are derived from
  std::optional<std::string> defaultValue;
};

// A column of a key, and how it takes part.
struct KeyColumn {
  uint32_t columnId = 0;
  bool isDescending = false;
  bool isFromTemplate = false;
};

struct Index {
  std::string name;
  TreeRoot root;
  uint32_t flags = 0;
  uint32_t keyMost = 255;  // longer keys are cut
  std::vector<KeyColumn> columns;

  // The table's own order.
  [[nodiscard]] bool IsPrimary() const { return (flags & 0x0020) != 0; }
  // Null sorts after all values.
  [[nodiscard]] bool HasNullsLast() const { return (flags & 0x0800) != 0; }
  // The engine had not finished it.
  [[nodiscard]] bool IsUnfinished() const { return (flags & 0x00040000) != 0; }
};

struct Table {
  std::string name;
  TreeRoot root;
  TreeRoot longValues;  // the tree of values that stand outside of the records
  uint32_t flags = 0;
  std::string templateName;
  const Table* templateTable = nullptr;  // whose columns this table has before its own
  std::vector<Column> columns;           // its own, by id
  std::vector<Index> indexes;

  // All columns, those of the template first.
  [[nodiscard]] std::vector<const Column*> AllColumns() const;

  // Null if there is none of this name.
  [[nodiscard]] const Column* FindColumn(std::string_view columnName) const;
  [[nodiscard]] const Index* FindIndex(std::string_view indexName) const;

  // The column that a key is made of; null if the catalog doesn't have it.
  [[nodiscard]] const Column* FindColumn(const KeyColumn& key) const;
};

// True if the names are equal without regard to the case of ASCII letters.
bool IsSameName(std::string_view a, std::string_view b);

}  // namespace postmarker::ese
