#include "ese/Catalog.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>

#include "ese/ByteAccess.h"
#include "ese/Record.h"
#include "support/Text.h"

namespace postmarker::ese {
namespace {

constexpr TreeRoot kCatalogRoot = {4, 2};
constexpr TreeRoot kCopyRoot = {24, 3};

// The columns of the catalog that a reader needs.
enum CatalogColumn : uint32_t {
  kTableId = 1,
  kRowType = 2,
  kId = 3,
  kTypeOrRoot = 4,
  kSize = 5,
  kFlags = 6,
  kPagesOrLocale = 7,
  kRecordOffset = 9,
  kKeyMost = 11,
  kName = 128,
  kTemplateTable = 130,
  kDefaultValue = 131,
  kKeyColumns = 132,
};

// The fixed columns of the catalog from 1 on, each with its place in the record.
struct FixedColumn {
  uint32_t offset;
  uint32_t size;
};
constexpr auto kFixedColumns = std::to_array<FixedColumn>({
    {4, 4},
    {8, 2},
    {10, 4},
    {14, 4},
    {18, 4},
    {22, 4},
    {26, 4},
    {30, 1},
    {31, 2},
    {33, 4},
    {37, 2},
});

constexpr uint32_t kTableRow = 1;
constexpr uint32_t kColumnRow = 2;
constexpr uint32_t kIndexRow = 3;
constexpr uint32_t kLongValueRow = 4;

constexpr uint32_t kTemplateFlag = 0x20000000;        // of a table
constexpr uint32_t kWideKeyColumnsFlag = 0x00010000;  // of an index
constexpr uint32_t kFixedStart = 4;                   // of the first fixed column in a record

class CatalogRow {
 public:
  explicit CatalogRow(const Record& record) : m_record(&record) {}

  // 0 if the column is null or can't be read.
  [[nodiscard]] uint32_t Number(CatalogColumn id) const {
    const FixedColumn fixed = kFixedColumns[id - 1];
    Column column;
    column.id = id;
    column.offset = fixed.offset;
    column.size = fixed.size;
    const StoredValue value = m_record->Find(column);
    if (value.state != StoredValue::State::kPresent) {
      return 0;
    }
    return fixed.size == sizeof(uint32_t) ? LoadAt<uint32_t>(value.bytes, 0)
                                          : LoadAt<uint16_t>(value.bytes, 0);
  }

  [[nodiscard]] std::optional<std::string> Bytes(CatalogColumn id) const {
    Column column;
    column.id = id;
    const StoredValue value = m_record->Find(column);
    return value.state == StoredValue::State::kPresent ? std::optional(std::string(value.bytes))
                                                       : std::nullopt;
  }

  [[nodiscard]] TreeRoot Root() const { return {Number(kTypeOrRoot), Number(kId)}; }

 private:
  const Record* m_record;
};

std::optional<Column> ReadColumn(const CatalogRow& row) {
  Column column;
  column.name = row.Bytes(kName).value_or("");
  column.id = row.Number(kId);
  column.type = static_cast<ColumnType>(row.Number(kTypeOrRoot));
  if (column.name.empty() || column.id == 0 || column.id > 0xFFFF ||
      column.type == ColumnType::kNone) {
    return std::nullopt;
  }
  column.codePage = row.Number(kPagesOrLocale);
  column.offset = row.Number(kRecordOffset);
  const uint32_t typeSize = FixedSize(column.type);
  column.size = typeSize > 0 ? typeSize : row.Number(kSize);
  column.defaultValue = row.Bytes(kDefaultValue);
  return column;
}

std::vector<KeyColumn> ReadKeyColumns(std::string_view bytes, bool isWide) {
  constexpr uint32_t kDescending = 0x40;
  constexpr uint32_t kTemplate = 0x80;
  constexpr size_t kMaxKeyColumns = 16;
  bytes = bytes.substr(0, kMaxKeyColumns * (isWide ? 4 : 2));
  std::vector<KeyColumn> columns;
  if (isWide) {
    for (size_t place = 0; place + 4 <= bytes.size(); place += 4) {
      const uint32_t flags = ByteAt(bytes, place);
      columns.push_back({LoadAt<uint16_t>(bytes, place + 2), (flags & kDescending) != 0,
                         (flags & kTemplate) != 0});
    }
    return columns;
  }
  for (size_t place = 0; place + 2 <= bytes.size(); place += 2) {
    const int id = LoadAt<int16_t>(bytes, place);
    columns.push_back({static_cast<uint32_t>(id < 0 ? -id : id), id < 0, false});
  }
  return columns;
}

Index ReadIndex(const CatalogRow& row) {
  Index index;
  index.name = row.Bytes(kName).value_or("");
  index.root = row.Root();
  index.flags = row.Number(kFlags);
  if (const uint32_t keyMost = row.Number(kKeyMost); keyMost != 0) {
    index.keyMost = keyMost;
  }
  index.columns =
      ReadKeyColumns(row.Bytes(kKeyColumns).value_or(""), (index.flags & kWideKeyColumnsFlag) != 0);
  return index;
}

void AddRow(const CatalogRow& row, Table* table) {
  switch (row.Number(kRowType)) {
    case kTableRow:
      table->name = row.Bytes(kName).value_or("");
      table->root = row.Root();
      table->flags = row.Number(kFlags);
      table->templateName = row.Bytes(kTemplateTable).value_or("");
      break;
    case kColumnRow:
      if (std::optional<Column> column = ReadColumn(row)) {
        table->columns.push_back(*std::move(column));
      }
      break;
    case kIndexRow:
      if (Index index = ReadIndex(row); !index.name.empty()) {
        table->indexes.push_back(std::move(index));
      }
      break;
    case kLongValueRow:
      table->longValues = row.Root();
      break;
    default:
      break;
  }
}

std::map<uint32_t, Table> ReadRows(const PageFile& file, TreeRoot root) {
  std::map<uint32_t, Table> tables;
  TreeCursor cursor(file, root);
  Record record;
  for (bool isThere = cursor.MoveFirst(); isThere; isThere = cursor.MoveNext()) {
    if (record.Assign(cursor.Leaf(), cursor.Entry().data)) {
      const CatalogRow row(record);
      AddRow(row, &tables[row.Number(kTableId)]);
    }
  }
  return tables;
}

// The rows about the fixed columns of the catalog and its copy all tell the same place.
void PlaceFixedColumns(Table* table) {
  uint32_t offset = kFixedStart;
  for (Column& column : table->columns) {
    if (column.id <= kLastFixedId) {
      column.offset = offset;
      offset += column.size;
    }
  }
}

void LinkTemplates(std::vector<Table>* tables) {
  std::map<std::string, Table*> templates;
  for (Table& table : *tables) {
    if ((table.flags & kTemplateFlag) != 0) {
      templates.emplace(NarrowUtf8(ToLower(WidenUtf8(table.name))), &table);
      for (Column& column : table.columns) {
        column.isFromTemplate = true;
      }
    }
  }
  for (Table& table : *tables) {
    const auto found = templates.find(NarrowUtf8(ToLower(WidenUtf8(table.templateName))));
    if (found != templates.end() && found->second != &table) {
      table.templateTable = found->second;
    }
  }
}

}  // namespace

std::vector<Table> ReadCatalog(const PageFile& file) {
  std::vector<Table> tables;
  for (const TreeRoot root : {kCatalogRoot, kCopyRoot}) {
    for (auto& [objectId, table] : ReadRows(file, root)) {
      if (table.name.empty()) {
        continue;
      }
      if (objectId == kCatalogRoot.objectId || objectId == kCopyRoot.objectId) {
        PlaceFixedColumns(&table);
      }
      tables.push_back(std::move(table));
    }
    if (!tables.empty()) {
      break;
    }
  }
  LinkTemplates(&tables);
  return tables;
}

}  // namespace postmarker::ese
