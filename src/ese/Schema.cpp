#include "ese/Schema.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker::ese {
namespace {

template <class Named>
const Named* FindNamed(const std::vector<Named>& all, std::string_view name) {
  const auto found = std::find_if(all.begin(), all.end(),
                                  [name](const Named& one) { return IsSameName(one.name, name); });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace

uint32_t FixedSize(ColumnType type) {
  switch (type) {
    case ColumnType::kBit:
    case ColumnType::kUnsignedByte:
      return 1;
    case ColumnType::kShort:
    case ColumnType::kUnsignedShort:
      return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle:
    case ColumnType::kUnsignedLong:
      return 4;
    case ColumnType::kCurrency:
    case ColumnType::kDouble:
    case ColumnType::kDate:
    case ColumnType::kLongLong:
    case ColumnType::kUnsignedLongLong:
      return 8;
    case ColumnType::kGuid:
      return 16;
    default:
      return 0;
  }
}

std::vector<const Column*> Table::AllColumns() const {
  std::vector<const Column*> all;
  for (const Table* table : {templateTable, this}) {
    if (table != nullptr) {
      for (const Column& column : table->columns) {
        all.push_back(&column);
      }
    }
  }
  return all;
}

const Column* Table::FindColumn(std::string_view columnName) const {
  const Column* const own = FindNamed(columns, columnName);
  return own != nullptr || templateTable == nullptr ? own
                                                    : FindNamed(templateTable->columns, columnName);
}

const Index* Table::FindIndex(std::string_view indexName) const {
  return FindNamed(indexes, indexName);
}

const Column* Table::FindColumn(const KeyColumn& key) const {
  for (const Table* table : {templateTable, this}) {
    if (table == nullptr) {
      continue;
    }
    const auto found =
        std::find_if(table->columns.begin(), table->columns.end(), [&key](const Column& column) {
          // Only the ids of tagged columns can be the same in a table and its template.
          return column.id == key.columnId &&
                 (column.id <= kLastVariableId || column.isFromTemplate == key.isFromTemplate);
        });
    if (found != table->columns.end()) {
      return &*found;
    }
  }
  return nullptr;
}

bool IsSameName(std::string_view a, std::string_view b) {
  return EqualNoCase(a, b);
}

}  // namespace postmarker::ese
