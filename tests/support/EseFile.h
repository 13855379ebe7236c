// Small ESE databases for tests, whole and valid; a test may harm them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/EsePages.h"

namespace postmarker::test {

// Types of columns, as the format numbers them.
enum EseType : uint32_t {
  kEseBit = 1,
  kEseByte = 2,
  kEseShort = 3,
  kEseLong = 4,
  kEseCurrency = 5,
  kEseBinary = 9,
  kEseText = 10,
  kEseLongBinary = 11,
  kEseLongText = 12,
  kEseLongLong = 15,
  kEseGuid = 16,
  kEseUnsignedShort = 17,
};

struct EseColumn {
  std::string name;
  uint32_t id = 0;  // up to 127 fixed, up to 255 variable, above tagged
  uint32_t type = kEseLong;
  uint32_t size = 4;  // of a fixed column
  uint32_t codePage = 0;
  std::optional<std::string> defaultValue = std::nullopt;
};

// What a record holds of a column. In the tagged part, `info` comes before the value if it is not
// 0, and on large pages always.
struct EseCell {
  std::optional<std::string> bytes;  // nothing: null
  uint8_t info = 0;
};

struct EseRow {
  std::map<uint32_t, EseCell> cells;  // by column id; fixed and variable ids between are null
  std::string key = {};               // of the table; empty: a counter
};

struct EseIndex {
  std::string name;
  std::vector<uint32_t> columns;
  bool isPrimary = false;
  std::vector<std::pair<std::string, size_t>> entries = {};  // key and number of the row
  bool isDescending = false;
};

struct EseTable {
  std::string name;
  std::vector<EseColumn> columns;
  std::vector<EseRow> rows = {};
  std::vector<EseIndex> indexes = {};
  std::vector<EseEntry> longValues = {};  // entries of the tree of long values
  size_t entriesPerPage = 1000;
  uint32_t flags = 0;
  std::string templateName = {};
};

struct EseOptions {
  size_t pageSize = 4096;
  uint32_t state = 3;
  uint32_t pageFlags = kEseNewRecords | kEseNewChecksum;
  bool hasCatalogCopy = true;
  bool sharesPrefixes = false;
  size_t catalogEntriesPerPage = 20;
};

class EseFileBuilder {
 public:
  explicit EseFileBuilder(EseOptions options = {})
      : m_options(options), m_nextPage(options.hasCatalogCopy ? 25 : 5) {}

  void AddTable(const EseTable& table) {
    const uint32_t objectId = m_nextObject++;
    const uint32_t root = AddTableTree(table, objectId);
    AddCatalogTable(table, objectId, root);
    uint32_t offset = 4;
    for (const EseColumn& column : table.columns) {
      AddCatalogColumn(column, objectId, offset);
      offset += column.id <= 127 ? column.size : 0;
    }
    for (const EseIndex& index : table.indexes) {
      AddIndex(index, table, objectId, root);
    }
    if (!table.longValues.empty()) {
      const uint32_t tree = m_nextObject++;
      const uint32_t page = m_nextPage++;
      PutTree(page, tree, kEseLongValues, table.longValues, table.entriesPerPage);
      AddCatalogRow(objectId, 4, tree, {{4, {EseBytes(page)}}, {128, {"LV"}}});
    }
  }

  // The file. Nothing may be added afterwards.
  std::string Build() {
    std::sort(m_catalog.begin(), m_catalog.end(),
              [](const EseEntry& a, const EseEntry& b) { return a.key < b.key; });
    PutTree(4, 2, 0, m_catalog, m_options.catalogEntriesPerPage);
    if (m_options.hasCatalogCopy) {
      PutTree(24, 3, 0, m_catalog, m_options.catalogEntriesPerPage);
    }
    std::string file = MakeHeader() + MakeHeader();
    for (uint32_t number = 1; number < m_nextPage; ++number) {
      const auto page = m_pages.find(number);
      file += page == m_pages.end() ? std::string(m_options.pageSize, '\0') : page->second;
    }
    return file;
  }

  // The header's checksum is over the page; call it after any change.
  static void SealHeader(std::string* header) {
    PutEse(header, 0, EseXor(std::string_view(*header).substr(4), kEseSeed));
  }

  // The record of a row in the layout that the options ask for.
  [[nodiscard]] std::string EncodeRecord(const EseRow& row,
                                         const std::vector<EseColumn>& columns) const {
    uint32_t lastFixed = 0;
    uint32_t lastVariable = 127;
    for (const auto& [id, cell] : row.cells) {
      lastFixed = id <= 127 ? std::max(lastFixed, id) : lastFixed;
      lastVariable = id > 127 && id <= 255 ? std::max(lastVariable, id) : lastVariable;
    }
    std::string fixed;
    std::string nulls((lastFixed + 7) / 8, '\xFF');
    for (uint32_t id = 1; id <= lastFixed; ++id) {
      const auto cell = row.cells.find(id);
      const bool isNull = cell == row.cells.end() || !cell->second.bytes;
      // As the engine leaves them, the bytes under a null bit are not zero.
      fixed += isNull ? std::string(SizeOf(id, columns), '\x2A') : *cell->second.bytes;
      if (!isNull) {
        nulls[(id - 1) / 8] = static_cast<char>(nulls[(id - 1) / 8] & ~(1 << (id - 1) % 8));
      }
    }
    const auto end = static_cast<uint16_t>(4 + fixed.size() + nulls.size());
    std::string ends;
    std::string variable;
    for (uint32_t id = 128; id <= lastVariable; ++id) {
      const auto cell = row.cells.find(id);
      const bool isNull = cell == row.cells.end() || !cell->second.bytes;
      variable += isNull ? "" : *cell->second.bytes;
      ends += EseBytes(static_cast<uint16_t>(variable.size() | (isNull ? 0x8000 : 0)));
    }
    return std::string(1, static_cast<char>(lastFixed)) + static_cast<char>(lastVariable) +
           EseBytes(end) + fixed + nulls + ends + variable + EncodeTagged(row);
  }

 private:
  static uint32_t SizeOf(uint32_t id, const std::vector<EseColumn>& columns) {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [id](const EseColumn& column) { return column.id == id; });
    return found == columns.end() ? 0 : found->size;
  }

  [[nodiscard]] std::string EncodeTagged(const EseRow& row) const {
    const bool isLarge = IsLargeEse(m_options.pageSize);
    const bool isNew = (m_options.pageFlags & kEseNewRecords) != 0;
    std::string table;
    std::string data;
    const auto count = static_cast<size_t>(std::count_if(
        row.cells.begin(), row.cells.end(), [](const auto& cell) { return cell.first > 255; }));
    for (const auto& [id, cell] : row.cells) {
      if (id <= 255) {
        continue;
      }
      const std::string bytes = cell.bytes.value_or("");
      if (!isNew) {
        // The older layout knows only whether a value is separated.
        const std::string value =
            cell.info != 0 ? static_cast<char>(cell.info == 4) + bytes : bytes;
        const size_t word =
            value.size() | (cell.bytes ? 0 : 0x4000) | (cell.info != 0 ? 0x8000 : 0);
        table +=
            EseBytes(static_cast<uint16_t>(id)) + EseBytes(static_cast<uint16_t>(word)) + value;
        continue;
      }
      size_t word = count * 4 + data.size();
      const auto info = static_cast<char>(cell.info | (isLarge && !cell.bytes ? 0x20 : 0));
      if (isLarge || cell.info != 0) {
        word |= isLarge ? 0 : 0x4000;
        data += info;
      }
      word |= !isLarge && !cell.bytes ? 0x2000 : 0;
      data += bytes;
      table += EseBytes(static_cast<uint16_t>(id)) + EseBytes(static_cast<uint16_t>(word));
    }
    return table + data;
  }

  uint32_t AddTableTree(const EseTable& table, uint32_t objectId) {
    std::vector<EseEntry> records;
    m_keys.clear();
    for (const EseRow& row : table.rows) {
      m_keys.push_back(row.key.empty() ? EseBigEndian(static_cast<uint32_t>(m_keys.size() + 1))
                                       : row.key);
      records.push_back({m_keys.back(), EncodeRecord(row, table.columns)});
    }
    std::sort(records.begin(), records.end(),
              [](const EseEntry& a, const EseEntry& b) { return a.key < b.key; });
    const uint32_t root = m_nextPage++;
    PutTree(root, objectId, 0, records, table.entriesPerPage);
    return root;
  }

  void AddIndex(const EseIndex& index, const EseTable& table, uint32_t objectId, uint32_t root) {
    uint32_t tree = objectId;
    if (!index.isPrimary) {
      tree = m_nextObject++;
      root = m_nextPage++;
      std::vector<EseEntry> entries;
      for (const auto& [key, row] : index.entries) {
        entries.push_back({key, row < m_keys.size() ? m_keys[row] : "no such row"});
      }
      std::sort(entries.begin(), entries.end(), [](const EseEntry& a, const EseEntry& b) {
        return std::pair(a.key, a.data) < std::pair(b.key, b.data);
      });
      PutTree(root, tree, kEseIndex, entries, table.entriesPerPage);
    }
    std::string columns;
    for (const uint32_t id : index.columns) {
      columns += EseBytes(static_cast<uint16_t>(index.isDescending ? 0x40 : 0)) +
                 EseBytes(static_cast<uint16_t>(id));
    }
    const uint32_t flags = 0x10000U | 0xEU | (index.isPrimary ? 0x21U : 0U);
    AddCatalogRow(
        objectId, 3, tree,
        {{4, {EseBytes(root)}}, {6, {EseBytes(flags)}}, {128, {index.name}}, {132, {columns}}});
  }

  void AddCatalogTable(const EseTable& table, uint32_t objectId, uint32_t root) {
    EseRow row = {{{4, {EseBytes(root)}}, {6, {EseBytes(table.flags)}}, {128, {table.name}}}};
    if (!table.templateName.empty()) {
      row.cells[130] = {table.templateName};
    }
    AddCatalogRow(objectId, 1, objectId, row.cells);
  }

  void AddCatalogColumn(const EseColumn& column, uint32_t objectId, uint32_t offset) {
    std::map<uint32_t, EseCell> cells = {{4, {EseBytes(column.type)}},
                                         {5, {EseBytes(column.size)}},
                                         {6, {EseBytes(uint32_t{0})}},
                                         {7, {EseBytes(column.codePage)}},
                                         {128, {column.name}}};
    if (column.id <= 127) {
      cells[9] = {EseBytes(static_cast<uint16_t>(offset))};
    }
    if (column.defaultValue) {
      cells[131] = {*column.defaultValue};
    }
    AddCatalogRow(objectId, 2, column.id, cells);
  }

  void AddCatalogRow(uint32_t objectId, uint16_t type, uint32_t id,
                     std::map<uint32_t, EseCell> cells) {
    static const std::vector<EseColumn> kColumns = {{"", 1, 4, 4}, {"", 2, 3, 2}, {"", 3, 4, 4},
                                                    {"", 4, 4, 4}, {"", 5, 4, 4}, {"", 6, 4, 4},
                                                    {"", 7, 4, 4}, {"", 8, 1, 1}, {"", 9, 3, 2}};
    cells[1] = {EseBytes(objectId)};
    cells[2] = {EseBytes(type)};
    cells[3] = {EseBytes(id)};
    const auto part = [](uint32_t number) { return EseKey(static_cast<int32_t>(number)); };
    const std::string key =
        part(objectId) + "\x7F" + EseBigEndian(static_cast<uint16_t>(type ^ 0x8000U)) + part(id);
    m_catalog.push_back({key, EncodeRecord({std::move(cells)}, kColumns)});
  }

  // A tree with this root: leaves of so many entries, and branches above them.
  void PutTree(uint32_t root, uint32_t objectId, uint32_t kind,
               const std::vector<EseEntry>& entries, size_t perPage) {
    std::vector<EseEntry> level = entries;
    uint32_t levelFlags = kEseLeaf;
    while (level.size() > perPage) {
      level = PutLevel(level, perPage, objectId, kind | levelFlags);
      levelFlags = levelFlags == kEseLeaf ? kEseParent : 0;
    }
    PutPage({root, 0, 0, objectId, kind | levelFlags | kEseRoot, std::string(16, '\0'), level});
  }

  // The pages of a level; gives the entries for the level above it.
  std::vector<EseEntry> PutLevel(const std::vector<EseEntry>& entries, size_t perPage,
                                 uint32_t objectId, uint32_t flags) {
    std::vector<EseEntry> above;
    const uint32_t first = m_nextPage;
    const auto count = static_cast<uint32_t>((entries.size() + perPage - 1) / perPage);
    m_nextPage += count;
    for (uint32_t i = 0; i < count; ++i) {
      const auto begin = entries.begin() + static_cast<std::ptrdiff_t>(i * perPage);
      const bool isLast = i + 1 == count;
      const std::vector<EseEntry> part(
          begin, isLast ? entries.end() : begin + static_cast<std::ptrdiff_t>(perPage));
      // What all keys of the page begin with is written once.
      std::string prefix;
      if (m_options.sharesPrefixes) {
        prefix = part.front().key.substr(0, 6);
      }
      PutPage({first + i, i == 0 ? 0 : first + i - 1, isLast ? 0 : first + i + 1, objectId, flags,
               prefix, part});
      // A leaf's bound is the first key of the next one; a branch's is its last entry's own.
      const bool isLeaf = (flags & kEseLeaf) != 0;
      std::string bound = isLeaf ? "" : part.back().key;
      if (isLeaf && !isLast) {
        bound = (begin + static_cast<std::ptrdiff_t>(perPage))->key;
      }
      above.push_back({bound, EseBytes(first + i)});
    }
    return above;
  }

  void PutPage(EsePage page) {
    page.flags |= m_options.pageFlags;
    m_pages[page.number] = MakeEsePage(page, m_options.pageSize);
  }

  [[nodiscard]] std::string MakeHeader() const {
    std::string header(m_options.pageSize, '\0');
    PutEse(&header, 4, kEseSeed);
    PutEse(&header, 8, uint32_t{0x620});
    PutEse(&header, 52, m_options.state);
    PutEse(&header, 232, uint32_t{0x11});
    PutEse(&header, 236, static_cast<uint32_t>(m_options.pageSize));
    SealHeader(&header);
    return header;
  }

  EseOptions m_options;
  std::map<uint32_t, std::string> m_pages;
  std::vector<EseEntry> m_catalog;
  std::vector<std::string> m_keys;  // of the rows of the table that is being added
  uint32_t m_nextPage;              // after those of the catalog and its copy
  uint32_t m_nextObject = 4;
};

// A database with these tables.
inline std::string MakeEseFile(const std::vector<EseTable>& tables, EseOptions options = {}) {
  EseFileBuilder builder(options);
  for (const EseTable& table : tables) {
    builder.AddTable(table);
  }
  return builder.Build();
}

// A page of a file, and its place in it.
inline size_t EsePagePlace(uint32_t number, size_t pageSize) {
  return (size_t{number} + 1) * pageSize;
}

// Applies `harm` to a page and writes its checksum again, so that a reader looks at what was
// harmed.
template <class Harm>
void HarmEsePage(std::string* file, uint32_t number, size_t pageSize, Harm harm) {
  std::string page = file->substr(EsePagePlace(number, pageSize), pageSize);
  harm(&page);
  SealEsePage(&page, number);
  file->replace(EsePagePlace(number, pageSize), pageSize, page);
}

}  // namespace postmarker::test
