// Real databases and generated ones, in the folder of large samples.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/EseReading.h"
#include "support/EseWalk.h"
#include "support/MappedFile.h"
#include "support/Samples.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::ese {
namespace {

using test::EseValueOf;
using Texts = std::vector<std::string>;

// A sample. Fails the test if there is none of that name.
std::string Sample(const std::string& name) {
  const std::wstring path = test::TempFolder::Wide(test::SampleFolder() / "ese" / name);
  EXPECT_TRUE(CanOpenForReading(path)) << name << " is not in POSTMARKER_TESTDATA";
  return test::ReadFile(path);
}

// A value as the lists beside the samples write it.
std::string Shown(const TableCursor& cursor, const Column& column) {
  std::string value = EseValueOf(cursor, column);
  if (value == test::kEseNull || value == test::kEseDamaged) {
    return value;
  }
  if (IsText(column.type)) {
    std::wstring text;
    for (size_t i = 0; i + 1 < value.size(); i += 2) {
      text.push_back(static_cast<wchar_t>(static_cast<uint8_t>(value[i]) |
                                          static_cast<uint8_t>(value[i + 1]) << 8));
    }
    return NarrowUtf8(text.substr(0, text.find(L'\0')));
  }
  int64_t number = 0;
  std::memcpy(&number, value.data(), std::min(value.size(), sizeof(number)));
  return std::to_string(value.size() == 4 ? static_cast<int32_t>(number) : number);
}

std::vector<Texts> RowsOf(const Database& database, const char* tableName,
                          const std::vector<const char*>& names) {
  const Table* const table = database.FindTable(tableName);
  std::vector<Texts> rows;
  if (table == nullptr) {
    return rows;
  }
  TableCursor cursor(database, *table);
  for (bool isThere = cursor.MoveFirst(); isThere; isThere = cursor.MoveNext()) {
    Texts row;
    for (const char* const name : names) {
      const Column* const column = table->FindColumn(name);
      row.push_back(column == nullptr ? "(no column)" : Shown(cursor, *column));
    }
    rows.push_back(row);
  }
  return rows;
}

const std::vector<const char*> kFolderColumns = {"FLDCOL_ID", "FLDCOL_PARENT", "FLDCOL_NAMEW",
                                                 "FLDCOL_SPECIAL", "FLDCOL_TYPE"};
const std::vector<const char*> kMessageColumns = {"MSGCOL_ID", "MSGCOL_FOLDERID", "MSGCOL_STREAM",
                                                  "MSGCOL_EMAILFROM", "MSGCOL_EMAILTO"};

TEST(EseSamples, StoreOfOrdinaryShape) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("generated/realistic.MSMessageStore");
  const Database database(bytes);
  ASSERT_EQ(database.Status(), FileStatus::kOpen);
  EXPECT_TRUE(database.Header().isClean);
  EXPECT_EQ(database.FindTable("Folders")->AllColumns().size(), 22U);
  EXPECT_EQ(database.FindTable("Messages")->AllColumns().size(), 10U);
  const std::vector<Texts> folders = RowsOf(database, "Folders", kFolderColumns);
  ASSERT_EQ(folders.size(), 12U);
  EXPECT_EQ(folders[0], (Texts{"1", "0", "Example (me)", "0", "2"}));
  EXPECT_EQ(folders[3], (Texts{"4", "1", "Sent Items", "3", "3"}));
  EXPECT_EQ(folders[10], (Texts{"11", "10", "Gr\u00FC\u00DFe", "0", "2"}));
  EXPECT_EQ(folders[11], (Texts{"12", "9", "\u041E\u0442\u0447\u0451\u0442\u044B", "0", "2"}));
  const std::vector<Texts> messages = RowsOf(database, "Messages", kMessageColumns);
  ASSERT_EQ(messages.size(), 40U);
  EXPECT_EQ(messages[39], (Texts{"40", "4", "41", "\"Me\" <me@example.org>",
                                 "\"Fir Vine\" <fir.vine0@example.org>"}));
  EXPECT_EQ(RowsOf(database, "Streams", {"Id", "Path"})[39],
            (Texts{"40", "Sent Items\\09974CF5-00000028.eml"}));
}

TEST(EseSamples, StoreOfEdgeCases) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("generated/edges.MSMessageStore");
  const Database database(bytes);
  const std::vector<Texts> folders = RowsOf(database, "Folders", kFolderColumns);
  ASSERT_EQ(folders.size(), 26U);
  EXPECT_EQ(folders[1], (Texts{"2", test::kEseNull, "Storage folders", "0", "2"}));
  EXPECT_EQ(folders[10], (Texts{"11", "1", "No type", "0", test::kEseNull}));
  EXPECT_EQ(folders[11], (Texts{"12", "1", test::kEseNull, "0", "2"}));
  EXPECT_EQ(folders[19], (Texts{"20", "2", "No special", test::kEseNull, "2"}));
  EXPECT_EQ(folders[21], (Texts{"22", "1", std::string(1024, 'x'), "0", "2"}));
  EXPECT_EQ(folders[25][2], std::string(900, 'x'));
  EXPECT_EQ(RowsOf(database, "Messages", kMessageColumns),
            (std::vector<Texts>{{"1", "8", "2", "first@example.org", "to-first@example.org"},
                                {"2", "8", test::kEseNull, "second@example.org", test::kEseNull},
                                {"3", "8", "1", test::kEseNull, "to-third@example.org"},
                                {"4", "3", "3", "fourth@example.org", ""},
                                {"5", test::kEseNull, "2", "fifth@example.org", "x@example.org"}}));
  EXPECT_EQ(RowsOf(database, "Streams", {"Id", "Path"}),
            (std::vector<Texts>{
                {"1", "Sent Items\\1.eml"}, {"2", test::kEseNull}, {"5", std::string(1100, 'x')}}));
}

TEST(EseSamples, StoreOfManyMessages) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("generated/big.MSMessageStore");
  const Database database(bytes);
  const std::vector<Texts> messages = RowsOf(database, "Messages", {"MSGCOL_ID"});
  ASSERT_EQ(messages.size(), 2000U);
  for (size_t i = 0; i < messages.size(); ++i) {
    ASSERT_EQ(messages[i].front(), std::to_string(i + 1));
  }
  EXPECT_EQ(RowsOf(database, "Streams", {"Id"}).size(), 2000U);
}

TEST(EseSamples, IndexFindsTheMessagesOfAFolder) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("generated/realistic.MSMessageStore");
  const Database database(bytes);
  const Table* const table = database.FindTable("Messages");
  ASSERT_NE(table, nullptr);
  const Index* const index = table->FindIndex("1");
  ASSERT_TRUE(index != nullptr && HasKnownOrder(*table, *index));
  TableCursor cursor(database, *table);
  cursor.OrderBy(*index);
  const std::string key = "\x7F\x80" + std::string(6, '\0') + "\x0A";
  ASSERT_EQ(cursor.Seek(key), Found::kEqual);
  ASSERT_TRUE(cursor.SetUpperLimit(key));
  Texts ids;
  for (bool isThere = true; isThere; isThere = cursor.MoveNext()) {
    ids.push_back(Shown(cursor, *table->FindColumn("MSGCOL_ID")));
  }
  EXPECT_EQ(ids, (Texts{"17", "18", "26", "39"}));
}

TEST(EseSamples, RealStore) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("windowsmail.msmessagestore");
  const Database database(bytes);
  ASSERT_EQ(database.Status(), FileStatus::kOpen);
  Texts tables;
  for (const Table& table : database.Tables()) {
    tables.push_back(table.name);
  }
  EXPECT_EQ(tables, (Texts{"MSysObjects", "MSysObjectsShadow", "MSysUnicodeFixupVer2", "Streams",
                           "UserDataTable", "Folders"}));
  EXPECT_EQ(test::WalkEse(bytes).damagedValues, 0U);
  EXPECT_EQ(RowsOf(database, "UserDataTable", {"Id", "Table", "FolderId"}),
            (std::vector<Texts>{{"1", "Folders", "-1"}}));
  // The catalog tells of itself and all others: as many rows as there are in its index by name.
  const Table* const catalog = database.FindTable("MSysObjects");
  TableCursor cursor(database, *catalog);
  const size_t rows = test::EseColumnOf(&cursor, *catalog->FindColumn("Name")).size();
  EXPECT_EQ(rows, 117U);
  cursor.OrderBy(*catalog->FindIndex("Name"));
  EXPECT_EQ(test::EseColumnOf(&cursor, *catalog->FindColumn("Name")).size(), rows);
}

TEST(EseSamples, RealFileOfCompressedColumns) {
  POSTMARKER_NEED_SAMPLES();
  const std::string bytes = Sample("compressed-columns-8k.edb");
  const Database database(bytes);
  ASSERT_EQ(database.Status(), FileStatus::kOpen);
  EXPECT_EQ(test::WalkEse(bytes).damagedValues, 0U);
  const Texts texts = test::EseColumnOf(database, "test_table", "compressed_ascii");
  ASSERT_EQ(texts.size(), 10U);
  for (size_t i = 0; i < texts.size(); ++i) {
    const std::string expected = "Record          " + std::to_string(i);
    EXPECT_EQ(texts[i].substr(0, expected.size()), expected);
    std::string wide;
    for (const char c : expected) {
      wide.append(1, c).push_back('\0');
    }
    const auto column = [&](const char* name) {
      return test::EseColumnOf(database, "test_table", name)[i];
    };
    EXPECT_EQ(column("compressed_unicode").substr(0, wide.size()), wide);
    EXPECT_EQ(column("compressed_binary"), expected);
  }
}

TEST(EseSamples, CutSamplesDoNoHarm) {
  POSTMARKER_NEED_SAMPLES();
  for (const char* const name :
       {"windowsmail.msmessagestore", "generated/realistic.MSMessageStore"}) {
    const std::string bytes = Sample(name);
    const size_t rows = test::WalkEse(bytes).rows;
    for (size_t length = 0; length < bytes.size() / 4; length += size_t{3} * 8192) {
      EXPECT_LE(test::WalkEse(std::string_view(bytes).substr(0, length)).rows, rows) << length;
    }
  }
}

}  // namespace
}  // namespace postmarker::ese
