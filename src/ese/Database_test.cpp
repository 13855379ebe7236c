#include "ese/Database.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/EseFile.h"
#include "support/EseReading.h"

namespace postmarker::ese {
namespace {

using namespace std::string_literals;
using test::EseBytes;
using test::EseCell;
using test::EseColumnOf;
using test::EseOptions;
using test::EseTable;
using test::kEseDamaged;
using test::kEseNull;
using test::MakeEseFile;
using testing::Test;

using Texts = std::vector<std::string>;

std::vector<std::string> NamesOf(const Database& database) {
  std::vector<std::string> names;
  for (const Table& table : database.Tables()) {
    names.push_back(table.name);
  }
  return names;
}

// Two fixed columns, two variable ones and two tagged ones.
std::vector<test::EseColumn> AllKinds() {
  return {{"Number", 1},
          {"Small", 2, test::kEseByte, 1},
          {"Text", 128, test::kEseText, 255, 1252},
          {"Bytes", 129, test::kEseBinary, 255},
          {"Long", 256, test::kEseLongText, 0, 1200},
          {"Blob", 257, test::kEseLongBinary, 0}};
}

// The values of the table "T", row by row, by the columns' names.
std::vector<Texts> RowsOf(const Database& database, const std::vector<const char*>& columns) {
  std::vector<Texts> rows;
  for (const char* const column : columns) {
    const Texts values = EseColumnOf(database, "T", column);
    rows.resize(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
      rows[i].push_back(values[i]);
    }
  }
  return rows;
}

// A database with the table "T" of one row, and what is read of its column.
std::string ReadOne(const test::EseColumn& column, const EseCell& cell, EseOptions options = {}) {
  const std::string file =
      MakeEseFile({{.name = "T", .columns = {column}, .rows = {{{{column.id, cell}}}}}}, options);
  const Database database(file);
  const Texts values = EseColumnOf(database, "T", column.name.c_str());
  return values.size() == 1 ? values.front() : "(no row)";
}

TEST(EseDatabase, ListsTablesColumnsAndIndexes) {
  const std::string file = MakeEseFile(
      {{.name = "First", .columns = AllKinds()},
       {.name = "Second",
        .columns = {{"Id", 1, test::kEseLongLong, 8}, {"Name", 128, test::kEseText, 255, 1200}},
        .indexes = {{"0", {1}, true}, {"ByBoth", {128, 1}, false, {}, true}}}});
  const Database database(file);
  ASSERT_EQ(database.Status(), FileStatus::kOpen);
  EXPECT_EQ(NamesOf(database), (Texts{"First", "Second"}));
  const Table* const second = database.FindTable("SECOND");
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(database.FindTable("Third"), nullptr);

  const Column* const name = second->FindColumn("nAmE");
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(name->id, 128U);
  EXPECT_EQ(name->type, ColumnType::kText);
  EXPECT_EQ(name->codePage, 1200U);
  EXPECT_EQ(second->AllColumns().size(), 2U);
  EXPECT_EQ(second->FindColumn("Number"), nullptr);

  ASSERT_EQ(second->indexes.size(), 2U);
  EXPECT_TRUE(second->FindIndex("0")->IsPrimary());
  const Index* const both = second->FindIndex("byboth");
  ASSERT_NE(both, nullptr);
  EXPECT_FALSE(both->IsPrimary());
  ASSERT_EQ(both->columns.size(), 2U);
  EXPECT_EQ(both->columns[0].columnId, 128U);
  EXPECT_EQ(both->columns[1].columnId, 1U);
  EXPECT_TRUE(both->columns[0].isDescending);
}

TEST(EseDatabase, ReadsColumnsOfAllKindsOnPagesOfEachSize) {
  const std::vector<test::EseRow> rows = {{{{1, {EseBytes(7)}},
                                            {2, {"x"}},
                                            {128, {"text"}},
                                            {129, {"b\0c"s}},
                                            {256, {test::EseUtf16(u"Gr\u00FC\u00DFe")}},
                                            {257, {"blob"}}}},
                                          {{{1, {EseBytes(8)}}, {129, {"only"}}, {257, {"last"}}}}};
  for (const size_t size : {2048U, 4096U, 8192U, 16384U, 32768U}) {
    const std::string file = MakeEseFile({{.name = "T", .columns = AllKinds(), .rows = rows}},
                                         {.pageSize = size, .catalogEntriesPerPage = 4});
    const Database database(file);
    EXPECT_EQ(RowsOf(database, {"Number", "Small", "Text", "Bytes", "Long", "Blob"}),
              (std::vector<Texts>{
                  {EseBytes(7), "x", "text", "b\0c"s, test::EseUtf16(u"Gr\u00FC\u00DFe"), "blob"},
                  {EseBytes(8), kEseNull, kEseNull, "only", kEseNull, "last"}}))
        << size;
  }
}

TEST(EseDatabase, NullBitsAloneTellNull) {
  // The bytes under the null bits are not zero.
  const std::string file =
      MakeEseFile({{.name = "T",
                    .columns = {{"A", 1}, {"B", 2}, {"C", 9}},
                    .rows = {{{{1, {EseBytes(0x2A2A2A2A)}}, {2, {}}}}, {{{2, {EseBytes(5)}}}}}}});
  const Database database(file);
  EXPECT_EQ(RowsOf(database, {"A", "B", "C"}),
            (std::vector<Texts>{{"****", kEseNull, kEseNull}, {kEseNull, EseBytes(5), kEseNull}}));
}

TEST(EseDatabase, NullIsNotEmpty) {
  for (const size_t size : {4096U, 16384U}) {
    const EseOptions options = {.pageSize = size};
    const test::EseColumn variable = {"A", 128, test::kEseText, 255, 1252};
    EXPECT_EQ(ReadOne(variable, {""}, options), "");
    EXPECT_EQ(ReadOne(variable, {}, options), kEseNull);
    const test::EseColumn tagged = {"A", 256, test::kEseLongText, 0, 1252};
    EXPECT_EQ(ReadOne(tagged, {"", 0x01}, options), "");
    EXPECT_EQ(ReadOne(tagged, {}, options), kEseNull);
  }
}

TEST(EseDatabase, ColumnsThatARecordDoesNotReachHaveTheDefault) {
  std::vector<test::EseColumn> columns = AllKinds();
  columns[0].defaultValue = EseBytes(42);
  columns[3].defaultValue = "standard";
  columns[5].defaultValue = "";
  const std::string file = MakeEseFile(
      {{.name = "T", .columns = columns, .rows = {{{}}, {{{1, {}}, {129, {}}, {257, {}}}}}}});
  const Database database(file);
  EXPECT_EQ(RowsOf(database, {"Number", "Small", "Bytes", "Blob"}),
            (std::vector<Texts>{{EseBytes(42), kEseNull, "standard", ""},
                                {kEseNull, kEseNull, kEseNull, kEseNull}}));
}

TEST(EseDatabase, ReadsTheOlderLayoutOfTaggedColumns) {
  const EseOptions options = {.pageFlags = 0};
  const std::string file =
      MakeEseFile({{.name = "T",
                    .columns = AllKinds(),
                    .rows = {{{{1, {EseBytes(1)}}, {256, {"long", 0x01}}, {257, {"blob"}}}},
                             {{{257, {"alone"}}}},
                             {{{128, {"text"}}, {256, {}}}}}}},
                  options);
  const Database database(file);
  EXPECT_EQ(RowsOf(database, {"Long", "Blob"}),
            (std::vector<Texts>{{"long", "blob"}, {kEseNull, "alone"}, {kEseNull, kEseNull}}));
}

TEST(EseDatabase, ReadsCompressedValues) {
  const test::EseColumn column = {"A", 256, test::kEseLongText, 0, 1252};
  for (const size_t size : {4096U, 16384U}) {
    // "ab" in 7-bit characters: bits of the last byte less 1, and the kind in the top bits.
    EXPECT_EQ(ReadOne(column, {"\x0D\x61\x31"s, 0x03}, {.pageSize = size}), "ab");
    EXPECT_EQ(ReadOne(column, {"\x15\x61\x31"s, 0x03}, {.pageSize = size}), "a\0b\0"s);
    EXPECT_EQ(ReadOne(column, {"\x28\x61\x31"s, 0x03}, {.pageSize = size}), kEseDamaged);
    EXPECT_EQ(ReadOne(column, {"\x0D\x61\x31"s, 0x01}, {.pageSize = size}), "\x0D\x61\x31");
  }
}

TEST(EseDatabase, EncryptedValuesCanNotBeRead) {
  const test::EseColumn column = {"A", 256, test::kEseLongText, 0, 1252};
  EXPECT_EQ(ReadOne(column, {"secret", 0x41}), kEseDamaged);
}

TEST(EseDatabase, ColumnsCanHaveSeveralValues) {
  const auto valuesOf = [](const EseCell& cell) {
    const std::string file = MakeEseFile(
        {{.name = "T", .columns = {{"A", 256, test::kEseLongBinary}}, .rows = {{{{256, cell}}}}}});
    const Database database(file);
    const Table* const table = database.FindTable("T");
    TableCursor cursor(database, *table);
    Texts values;
    EXPECT_TRUE(cursor.MoveFirst());
    for (size_t i = 0; i < 4; ++i) {
      values.push_back(test::EseValueOf(cursor, *table->FindColumn("A"), i));
    }
    return values;
  };
  EXPECT_EQ(valuesOf({"one", 0x01}), (Texts{"one", kEseNull, kEseNull, kEseNull}));
  EXPECT_EQ(valuesOf({"\x03onetwo", 0x19}), (Texts{"one", "two", kEseNull, kEseNull}));
  EXPECT_EQ(valuesOf({"\x06\0\x09\0\x0B\0oneIIthree"s, 0x09}),
            (Texts{"one", "II", "three", kEseNull}));
  EXPECT_EQ(valuesOf({"\x03\x0D\x61\x31rest"s, 0x1B}), (Texts{"ab", "rest", kEseNull, kEseNull}));
  // Offsets that lead out of the value, and back.
  EXPECT_EQ(valuesOf({"\x04\0\x20\0ab"s, 0x09})[0], kEseDamaged);
  EXPECT_EQ(valuesOf({"\x04\0\x02\0ab"s, 0x09})[0], kEseDamaged);
  EXPECT_EQ(valuesOf({"\x01\0ab"s, 0x09})[0], kEseDamaged);
  EXPECT_EQ(valuesOf({"\x09onetwo", 0x19})[0], kEseDamaged);
}

TEST(EseDatabase, CopyOfTheCatalogServesWhenTheCatalogIsDamaged) {
  std::string file =
      MakeEseFile({{.name = "T", .columns = {{"A", 1}}, .rows = {{{{1, {"abcd"}}}}}}});
  file[test::EsePagePlace(4, 4096) + 1000] ^= 1;
  EXPECT_EQ(EseColumnOf(Database(file), "T", "A"), Texts{"abcd"});
  file[test::EsePagePlace(24, 4096) + 1000] ^= 1;
  EXPECT_EQ(Database(file).Status(), FileStatus::kDamaged);
  EXPECT_TRUE(Database(file).Tables().empty());
}

TEST(EseDatabase, DeletedColumnsAreNotListed) {
  const std::string file = MakeEseFile({{.name = "T",
                                         .columns = {{"JetStub_1", 1, 0, 4}, {"B", 2}},
                                         .rows = {{{{1, {"gone"}}, {2, {"here"}}}}}}});
  const Database database(file);
  EXPECT_EQ(database.FindTable("T")->AllColumns().size(), 1U);
  EXPECT_EQ(EseColumnOf(database, "T", "B"), Texts{"here"});
}

TEST(EseDatabase, DerivedTablesHaveTheColumnsOfTheirTemplate) {
  const uint32_t ofTemplate = 0x8000;
  const std::string file = MakeEseFile(
      {{.name = "Template",
        .columns = {{"A", 1}, {"Tagged", 256, test::kEseLongText}},
        .flags = 0x20000000},
       {.name = "T",
        .columns = {{"B", 2}, {"Own", 256, test::kEseLongText}},
        .rows = {{{{1, {"aaaa"}}, {2, {"bbbb"}}, {256, {"own"}}, {256 | ofTemplate, {"theirs"}}}}},
        .templateName = "TEMPLATE"}});
  std::string placed = file;
  const Database database(placed);
  const Table* const table = database.FindTable("T");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->AllColumns().size(), 4U);
  EXPECT_EQ(EseColumnOf(database, "T", "A"), Texts{"aaaa"});
  EXPECT_EQ(EseColumnOf(database, "T", "Own"), Texts{"own"});
  EXPECT_EQ(EseColumnOf(database, "T", "Tagged"), Texts{"theirs"});
}

}  // namespace
}  // namespace postmarker::ese
