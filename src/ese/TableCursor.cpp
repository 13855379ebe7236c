#include "ese/TableCursor.h"

#include <algorithm>
#include <utility>

namespace postmarker::ese {

// Rows by key. It stands on one, or on none.
class TableCursor::Order {
 public:
  Order() = default;
  Order(const Order&) = delete;
  Order& operator=(const Order&) = delete;
  virtual ~Order() = default;
  virtual bool MoveFirst() = 0;
  virtual bool MoveNext() = 0;
  virtual bool Seek(std::string_view key) = 0;
  // Of the current row with `key`: negative, 0 or positive.
  [[nodiscard]] virtual int Compare(std::string_view key) const = 0;
  // False if the row is missing or damaged.
  virtual bool Load(Record* record) = 0;
};

// The tree of the table itself.
class TableCursor::TreeOrder : public Order {
 public:
  TreeOrder(const PageFile& file, TreeRoot table) : m_rows(file, table) {}
  bool MoveFirst() override { return m_rows.MoveFirst(); }
  bool MoveNext() override { return m_rows.MoveNext(); }
  bool Seek(std::string_view key) override { return m_rows.Seek(key); }
  [[nodiscard]] int Compare(std::string_view key) const override {
    return CompareKey(m_rows.Entry(), key);
  }
  bool Load(Record* record) override { return record->Assign(m_rows.Leaf(), m_rows.Entry().data); }

 private:
  TreeCursor m_rows;
};

// An index of the file, whose entries tell the keys of rows in the table's tree.
class TableCursor::IndexOrder : public Order {
 public:
  IndexOrder(const PageFile& file, TreeRoot index, TreeRoot table)
      : m_keys(file, index), m_rows(file, table) {}
  bool MoveFirst() override { return m_keys.MoveFirst(); }
  bool MoveNext() override { return m_keys.MoveNext(); }
  bool Seek(std::string_view key) override { return m_keys.Seek(key); }
  [[nodiscard]] int Compare(std::string_view key) const override {
    return CompareKey(m_keys.Entry(), key);
  }
  bool Load(Record* record) override {
    return m_rows.Find(m_keys.Entry().data) && record->Assign(m_rows.Leaf(), m_rows.Entry().data);
  }

 private:
  TreeCursor m_keys;
  TreeCursor m_rows;
};

class TableCursor::MemoryOrder : public Order {
 public:
  MemoryOrder(const PageFile& file, TreeRoot table, std::shared_ptr<const MemoryIndex> index)
      : m_file(&file), m_table(table), m_index(std::move(index)) {}
  bool MoveFirst() override { return MoveTo(0); }
  bool MoveNext() override { return MoveTo(m_row + 1); }
  bool Seek(std::string_view key) override { return MoveTo(m_index->FirstNotBelow(key)); }
  [[nodiscard]] int Compare(std::string_view key) const override {
    return m_index->KeyAt(m_row).compare(key);
  }
  bool Load(Record* record) override {
    const auto found = ReadEntry(*m_file, m_table, m_index->PlaceAt(m_row));
    return found && record->Assign(found->leaf, found->entry.data);
  }

 private:
  bool MoveTo(size_t row) {
    m_row = std::min(row, m_index->RowCount());
    return m_row < m_index->RowCount();
  }

  const PageFile* m_file;
  TreeRoot m_table;
  std::shared_ptr<const MemoryIndex> m_index;
  size_t m_row = 0;
};

bool HasKnownOrder(const Table& table, const Index& index) {
  return !index.IsUnfinished() && !index.columns.empty() &&
         std::all_of(index.columns.begin(), index.columns.end(), [&table](const KeyColumn& key) {
           const Column* const column = table.FindColumn(key);
           return column != nullptr &&
                  !(IsText(column->type) && column->codePage == kCodePageUtf16);
         });
}

TableCursor::TableCursor(const Database& database, const Table& table)
    : m_database(&database), m_table(&table) {
  OrderByTable();
}

TableCursor::~TableCursor() = default;

void TableCursor::OrderByTable() {
  m_order = std::make_unique<TreeOrder>(m_database->File(), m_table->root);
  m_upperLimit.reset();
  m_hasRow = false;
}

void TableCursor::OrderBy(const Index& index) {
  if (index.IsPrimary()) {
    OrderByTable();
    return;
  }
  m_order = std::make_unique<IndexOrder>(m_database->File(), index.root, m_table->root);
  m_upperLimit.reset();
  m_hasRow = false;
}

void TableCursor::OrderBy(std::shared_ptr<const MemoryIndex> index) {
  m_order = std::make_unique<MemoryOrder>(m_database->File(), m_table->root, std::move(index));
  m_upperLimit.reset();
  m_hasRow = false;
}

bool TableCursor::Settle(bool isThere) {
  m_hasRow = false;
  while (isThere && !(m_upperLimit && m_order->Compare(*m_upperLimit) > 0)) {
    if (m_order->Load(&m_record)) {
      m_hasRow = true;
      return true;
    }
    isThere = m_order->MoveNext();
  }
  return false;
}

bool TableCursor::MoveFirst() {
  m_upperLimit.reset();
  return Settle(m_order->MoveFirst());
}

bool TableCursor::MoveNext() {
  return m_hasRow && Settle(m_order->MoveNext());
}

Found TableCursor::Seek(std::string_view key) {
  m_upperLimit.reset();
  if (!Settle(m_order->Seek(key))) {
    return Found::kNone;
  }
  return m_order->Compare(key) == 0 ? Found::kEqual : Found::kGreater;
}

bool TableCursor::SetUpperLimit(std::string_view key) {
  m_upperLimit = std::string(key);
  m_hasRow = m_order->Compare(key) <= 0;
  return m_hasRow;
}

ReadOutcome TableCursor::Read(const Column& column, size_t number, size_t limit,
                              std::string* value) const {
  return ReadValue(*m_database, *m_table, m_record, column, number, limit, value);
}

}  // namespace postmarker::ese
