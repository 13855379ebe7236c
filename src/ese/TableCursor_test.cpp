#include "ese/TableCursor.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "ese/IndexKey.h"
#include "support/EseFile.h"
#include "support/EseReading.h"

namespace postmarker::ese {
namespace {

using test::EseBytes;
using test::EseKey;
using test::EseOptions;
using Numbers = std::vector<int32_t>;

// The table "T" with the rows 1 to `count` by the primary index on "Id", and the index "ByGroup" on
// "Group", which is Id % 10.
class EseTableCursor : public testing::Test {
 protected:
  explicit EseTableCursor(int32_t count = 100) {
    m_table = {.name = "T",
               .columns = {{"Id", 1}, {"Group", 2}},
               .indexes = {{"0", {1}, true}, {"ByGroup", {2}}},
               .entriesPerPage = 3};
    for (int32_t id = 1; id <= count; ++id) {
      m_table.rows.push_back({{{1, {EseBytes(id)}}, {2, {EseBytes(id % 10)}}}, EseKey(id)});
      m_table.indexes[1].entries.emplace_back(EseKey(id % 10), static_cast<size_t>(id) - 1);
    }
  }

  void Build(EseOptions options = {}) {
    m_bytes = test::MakeEseFile({m_table}, options);
    m_database.emplace(m_bytes);
    m_opened = m_database->FindTable("T");
    m_cursor.emplace(*m_database, *m_opened);
  }

  // The ids from the current row on.
  Numbers Rest() {
    Numbers ids;
    while (m_cursor->HasRow()) {
      ids.push_back(Current());
      m_cursor->MoveNext();
    }
    return ids;
  }

  int32_t Current() {
    const std::string value = test::EseValueOf(*m_cursor, *m_opened->FindColumn("Id"));
    int32_t id = 0;
    std::memcpy(&id, value.data(), std::min(value.size(), sizeof(id)));
    return id;
  }

  static Numbers Range(int32_t first, int32_t last, int32_t step = 1) {
    Numbers numbers;
    for (int32_t number = first; number <= last; number += step) {
      numbers.push_back(number);
    }
    return numbers;
  }

  test::EseTable m_table;
  std::string m_bytes;
  std::optional<Database> m_database;
  const Table* m_opened = nullptr;
  std::optional<TableCursor> m_cursor;
};

TEST_F(EseTableCursor, WalksInTheOrderOfTheTable) {
  for (const bool sharesPrefixes : {false, true}) {
    Build({.pageSize = 2048, .sharesPrefixes = sharesPrefixes});
    EXPECT_FALSE(m_cursor->HasRow());
    m_cursor->MoveFirst();
    EXPECT_EQ(Rest(), Range(1, 100));
    EXPECT_FALSE(m_cursor->MoveNext()) << "behind the end";
    m_cursor->MoveFirst();
    EXPECT_EQ(Current(), 1);
  }
}

TEST_F(EseTableCursor, EmptyTableHasNoRows) {
  m_table.rows.clear();
  m_table.indexes[1].entries.clear();
  Build();
  EXPECT_FALSE(m_cursor->MoveFirst());
  EXPECT_EQ(m_cursor->Seek(EseKey(1)), Found::kNone);
  m_cursor->OrderBy(*m_opened->FindIndex("ByGroup"));
  EXPECT_FALSE(m_cursor->MoveFirst());
}

TEST_F(EseTableCursor, SeeksInTheTable) {
  for (const size_t size : {2048U, 16384U}) {
    Build({.pageSize = size, .sharesPrefixes = true});
    for (int32_t id = 1; id <= 100; ++id) {
      ASSERT_EQ(m_cursor->Seek(EseKey(id)), Found::kEqual) << id;
      ASSERT_EQ(Current(), id);
    }
    EXPECT_EQ(m_cursor->Seek(EseKey(0)), Found::kGreater);
    EXPECT_EQ(Rest(), Range(1, 100));
    EXPECT_EQ(m_cursor->Seek(EseKey(101)), Found::kNone);
    EXPECT_FALSE(m_cursor->HasRow());
    EXPECT_EQ(m_cursor->Seek(EseKey(98)), Found::kEqual);
    EXPECT_EQ(Rest(), Range(98, 100));
  }
}

TEST_F(EseTableCursor, IndexGivesTheRowsOfAKey) {
  Build();
  m_cursor->OrderBy(*m_opened->FindIndex("ByGroup"));
  for (int32_t group = 0; group < 10; ++group) {
    ASSERT_EQ(m_cursor->Seek(EseKey(group)), Found::kEqual);
    ASSERT_TRUE(m_cursor->SetUpperLimit(EseKey(group)));
    EXPECT_EQ(Rest(), Range(group == 0 ? 10 : group, 100, 10)) << group;
  }
  EXPECT_EQ(m_cursor->Seek(EseKey(10)), Found::kNone);
  EXPECT_EQ(m_cursor->Seek(EseKey(-1)), Found::kGreater);
  EXPECT_FALSE(m_cursor->SetUpperLimit(EseKey(-1))) << "the row is behind the limit";
  EXPECT_FALSE(m_cursor->HasRow());
}

TEST_F(EseTableCursor, MoveToTheFirstRowDropsTheLimit) {
  Build();
  m_cursor->Seek(EseKey(3));
  m_cursor->SetUpperLimit(EseKey(4));
  EXPECT_EQ(Rest(), Range(3, 4));
  m_cursor->MoveFirst();
  EXPECT_EQ(Rest(), Range(1, 100));
}

TEST_F(EseTableCursor, EntriesWithoutARowArePassedOver) {
  m_table.indexes[1].entries.emplace_back(EseKey(3), 5000);
  m_table.indexes[1].entries.emplace_back(EseKey(11), 5000);
  Build();
  m_cursor->OrderBy(*m_opened->FindIndex("ByGroup"));
  m_cursor->Seek(EseKey(3));
  m_cursor->SetUpperLimit(EseKey(3));
  EXPECT_EQ(Rest(), Range(3, 100, 10));
  EXPECT_EQ(m_cursor->Seek(EseKey(11)), Found::kNone);
}

TEST_F(EseTableCursor, DeletedEntriesArePassedOver) {
  m_table.entriesPerPage = 1000;
  Build({.pageSize = 8192});
  std::string bytes = m_bytes;
  const uint32_t root = m_opened->root.page;
  test::HarmEsePage(&bytes, root, 8192, [](std::string* page) {
    for (const size_t entry : {1U, 50U, 100U}) {
      const size_t place = 8192 - 4 * (entry + 1) + 3;
      (*page)[place] = static_cast<char>((*page)[place] | test::kEseTagDeleted << 5U);
    }
  });
  const Database database(bytes);
  m_cursor.emplace(database, *database.FindTable("T"));
  m_cursor->MoveFirst();
  Numbers expected = Range(1, 100);
  std::erase_if(expected, [](int32_t id) { return id == 1 || id == 50 || id == 100; });
  EXPECT_EQ(Rest(), expected);
  EXPECT_EQ(m_cursor->Seek(EseKey(50)), Found::kGreater);
  EXPECT_EQ(Current(), 51);
  m_cursor.reset();
}

TEST_F(EseTableCursor, MemoryIndexGivesTheSameRows) {
  Build();
  Index definition;
  definition.columns = {{.columnId = 2}};
  auto index = std::make_shared<const MemoryIndex>(*m_database, *m_opened, definition);
  EXPECT_EQ(index->RowCount(), 100U);
  m_cursor->OrderBy(index);
  EXPECT_EQ(m_cursor->Seek(EseKey(7)), Found::kEqual);
  EXPECT_TRUE(m_cursor->SetUpperLimit(EseKey(7)));
  EXPECT_EQ(Rest(), Range(7, 100, 10));
  EXPECT_EQ(m_cursor->Seek(EseKey(10)), Found::kNone);
  m_cursor->MoveFirst();
  EXPECT_EQ(Rest().front(), 10);
  definition.columns = {{.columnId = 77}};
  EXPECT_EQ(MemoryIndex(*m_database, *m_opened, definition).RowCount(), 0U);
}

TEST_F(EseTableCursor, MemoryIndexFindsTextsWhateverTheirCase) {
  test::EseTable table = {.name = "T",
                          .columns = {{"Id", 1}, {"Name", 128, test::kEseText, 255, 1200}}};
  int32_t id = 0;
  for (const char16_t* const name : {u"beta", u"Alpha", u"BETA", u"\u0431", u"\u0411"}) {
    table.rows.push_back({{{1, {EseBytes(++id)}}, {128, {test::EseUtf16(name)}}}});
  }
  table.rows.push_back({{{1, {EseBytes(++id)}}}});
  m_table = table;
  Build();
  Index definition;
  definition.columns = {{.columnId = 128}};
  EXPECT_FALSE(HasKnownOrder(*m_opened, definition));
  m_cursor->OrderBy(std::make_shared<const MemoryIndex>(*m_database, *m_opened, definition));
  const auto find = [&](std::u16string_view name) {
    std::string key;
    AppendOwnKeyPiece(*m_opened->FindColumn("Name"), {}, test::EseUtf16(name), &key);
    const bool isThere = m_cursor->Seek(key) == Found::kEqual && m_cursor->SetUpperLimit(key);
    return isThere ? Rest() : Numbers();
  };
  EXPECT_EQ(find(u"Beta"), (Numbers{1, 3}));
  EXPECT_EQ(find(u"alpha"), (Numbers{2}));
  EXPECT_EQ(find(u"\u0431"), (Numbers{4, 5}));
  EXPECT_EQ(find(u"alph"), Numbers());
  m_cursor->MoveFirst();
  EXPECT_EQ(Rest().front(), 6) << "null comes first";
}

TEST_F(EseTableCursor, OrderOfAnIndexIsKnownByItsColumns) {
  m_table.columns.push_back({"Name", 128, test::kEseText, 255, 1200});
  m_table.columns.push_back({"Plain", 129, test::kEseText, 255, 1252});
  m_table.indexes.push_back({"ByName", {2, 128}});
  m_table.indexes.push_back({"ByPlain", {129, 2}});
  m_table.indexes.push_back({"ByNothing", {77}});
  Build();
  EXPECT_TRUE(HasKnownOrder(*m_opened, *m_opened->FindIndex("0")));
  EXPECT_TRUE(HasKnownOrder(*m_opened, *m_opened->FindIndex("ByPlain")));
  EXPECT_FALSE(HasKnownOrder(*m_opened, *m_opened->FindIndex("ByName")));
  EXPECT_FALSE(HasKnownOrder(*m_opened, *m_opened->FindIndex("ByNothing")));
}

}  // namespace
}  // namespace postmarker::ese
