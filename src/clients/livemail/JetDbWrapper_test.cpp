#include "clients/livemail/JetDbWrapper.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "clients/livemail/EseJetApi.h"
#include "support/EseFile.h"
#include "support/Samples.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using namespace std::string_literals;
using test::EseBytes;
using test::EseKey;

// A table with a column of each type, and rows by "Id".
class JetDbWrapperTest : public testing::Test {
 protected:
  JetDbWrapperTest() {
    m_table = {.name = "Folders",
               .columns = {{"Id", 1, test::kEseLongLong, 8},
                           {"Kind", 2, test::kEseByte, 1},
                           {"Short", 3, test::kEseShort, 2},
                           {"Long", 4},
                           {"Money", 5, test::kEseCurrency, 8},
                           {"Flag", 6, test::kEseBit, 1},
                           {"Unsigned", 7, test::kEseUnsignedShort, 2},
                           {"Name", 128, test::kEseText, 255, 1200},
                           {"Plain", 129, test::kEseText, 255, 1252},
                           {"Bytes", 130, test::kEseBinary, 255},
                           {"Blob", 256, test::kEseLongBinary, 0},
                           {"Memo", 257, test::kEseLongText, 0, 1200}},
               .indexes = {{"0", {1}, true}, {"ByBoth", {4, 2}}}};
  }

  void AddRow(int64_t id, std::map<uint32_t, test::EseCell> cells) {
    cells[1] = {EseBytes(id)};
    m_table.rows.push_back({std::move(cells), EseKey(id)});
  }

  void Write(test::EseOptions options = {}) {
    test::WriteFile(m_path, test::MakeEseFile({m_table}, options));
    m_wrapper = std::make_unique<JetDbWrapper>(m_path, EseJetApi());
    ASSERT_EQ(m_wrapper->Status, kOk);
    ASSERT_EQ(m_wrapper->GetTableColumns(L"Folders", &m_columns), kOk);
  }

  std::vector<JetRow> Query(const JetRow& filter, const JetRow& required = {}) {
    std::vector<JetRow> rows;
    EXPECT_EQ(m_wrapper->Query(L"Folders", m_columns, filter, required, &rows), kOk);
    return rows;
  }

  std::vector<int64_t> Ids(const JetRow& filter, const JetRow& required = {}) {
    std::vector<int64_t> ids;
    for (const JetRow& row : Query(filter, required)) {
      const int64_t* const id = ValueOf(row, L"Id").AsInt64();
      ids.push_back(id == nullptr ? -1 : *id);
    }
    return ids;
  }

  // The value of a column in the only row.
  JetValue ReadOne(uint32_t id, const std::wstring& name, const std::string& bytes) {
    m_wrapper.reset();
    m_table.rows.clear();
    AddRow(1, {{id, {bytes, static_cast<uint8_t>(id > 255 ? 1 : 0)}}});
    Write({.pageSize = 8192});
    const std::vector<JetRow> rows = Query({});
    return rows.size() == 1 ? ValueOf(rows.front(), name) : JetValue(L"(no row)"s);
  }

  test::EseTable m_table;
  test::TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("store.edb");
  std::unique_ptr<JetDbWrapper> m_wrapper;
  JetColumns m_columns;
};

using Numbers = std::vector<int64_t>;

TEST_F(JetDbWrapperTest, ListsTablesColumnsAndIndexes) {
  Write();
  std::set<std::wstring> names;
  EXPECT_EQ(m_wrapper->GetTableNames(&names), kOk);
  EXPECT_EQ(names, std::set<std::wstring>{L"Folders"});
  EXPECT_EQ(m_columns.size(), 12U);
  EXPECT_EQ(m_columns[L"Id"], (JetColumnInfo{1, 15, 0}));
  EXPECT_EQ(m_columns[L"Plain"], (JetColumnInfo{129, 10, 1252}));
  EXPECT_EQ(m_columns[L"Memo"], (JetColumnInfo{257, 12, 1200}));
  JetIndexes indexes;
  EXPECT_EQ(m_wrapper->GetTableIndexes(L"Folders", &indexes), kOk);
  EXPECT_EQ(indexes, (JetIndexes{{L"0", {L"Id"}}, {L"ByBoth", {L"Long", L"Kind"}}}));
}

TEST_F(JetDbWrapperTest, MissingTableFails) {
  Write();
  JetColumns columns = {{L"old", {}}};
  JetIndexes indexes = {{L"old", {}}};
  std::vector<JetRow> rows(1);
  EXPECT_EQ(m_wrapper->GetTableColumns(L"None", &columns), kFail);
  EXPECT_EQ(m_wrapper->GetTableIndexes(L"None", &indexes), kFail);
  EXPECT_EQ(m_wrapper->Query(L"None", {}, {}, {}, &rows), kFail);
  EXPECT_EQ(m_wrapper->CreateSingleColumnIndex(L"None", L"I", L"C"), kFail);
  EXPECT_TRUE(columns.empty() && indexes.empty() && rows.empty());
}

TEST_F(JetDbWrapperTest, ValuesAreConvertedByTheirType) {
  EXPECT_EQ(ReadOne(2, L"Kind", "\xFF"), JetValue(255));
  EXPECT_EQ(ReadOne(3, L"Short", "\xFF\xFF"), JetValue(65535));
  EXPECT_EQ(ReadOne(4, L"Long", EseBytes(-5)), JetValue(-5));
  EXPECT_EQ(ReadOne(5, L"Money", EseBytes(int64_t{-7})), JetValue(int64_t{-7}));
  EXPECT_EQ(ReadOne(7, L"Unsigned", "\x01\x80"), JetValue(0x8001));
  EXPECT_EQ(ReadOne(6, L"Flag", "\xFF"), JetValue()) << "bits are not read";
  EXPECT_EQ(ReadOne(130, L"Bytes", "\x01\xAF\x00"s), JetValue(L"01AF00"s));
  EXPECT_EQ(ReadOne(256, L"Blob", ""), JetValue(std::wstring()));
  EXPECT_EQ(ReadOne(128, L"Name", test::EseUtf16(u"Gr\u00FC\u00DFe")),
            JetValue(L"Gr\u00FC\u00DFe"s));
  EXPECT_EQ(ReadOne(129, L"Plain", "a\xE4"), JetValue(L"a\u00E4"s));
}

TEST_F(JetDbWrapperTest, TextEndsAtItsFirstNul) {
  EXPECT_EQ(ReadOne(128, L"Name", test::EseUtf16({u"ab\0cd", 5})), JetValue(L"ab"s));
  EXPECT_EQ(ReadOne(128, L"Name", "a\0b\0c"s), JetValue(L"ab"s)) << "an odd byte at the end";
  EXPECT_EQ(ReadOne(129, L"Plain", "ab\0cd"s), JetValue(L"ab"s));
  EXPECT_EQ(ReadOne(128, L"Name", ""), JetValue(std::wstring())) << "empty is not null";
}

TEST_F(JetDbWrapperTest, ValuesOfMoreThan2047BytesAreUnreadable) {
  EXPECT_EQ(ReadOne(256, L"Blob", std::string(2047, '\x11')), JetValue(std::wstring(4094, L'1')));
  EXPECT_EQ(ReadOne(256, L"Blob", std::string(2048, '\x11')), JetValue());
  const std::u16string text(1023, u'x');
  EXPECT_EQ(ReadOne(257, L"Memo", test::EseUtf16(text)), JetValue(std::wstring(1023, L'x')));
  EXPECT_EQ(ReadOne(257, L"Memo", test::EseUtf16(text + u"y")), JetValue());
}

TEST_F(JetDbWrapperTest, NullColumnIsAbsent) {
  AddRow(1, {{2, {}}, {4, {EseBytes(3)}}});
  Write();
  const std::vector<JetRow> rows = Query({});
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows.front(), (JetRow{{L"Id", JetValue(int64_t{1})}, {L"Long", JetValue(3)}}));
  EXPECT_TRUE(ValueOf(rows.front(), L"Kind").IsNothing());
}

TEST_F(JetDbWrapperTest, FilterUsesAnIndexOrMakesOne) {
  for (int64_t id = 1; id <= 6; ++id) {
    AddRow(id, {{4, {EseBytes(static_cast<int32_t>(id % 2))}}});
  }
  AddRow(7, {});
  Write();
  EXPECT_EQ(Ids({{L"Id", JetValue(int64_t{4})}}), Numbers{4});
  EXPECT_FALSE(m_wrapper->IndexCache[L"Folders"].contains(L"KSId"));
  EXPECT_EQ(Ids({{L"Long", JetValue(1)}}), (Numbers{1, 3, 5}));
  EXPECT_TRUE(m_wrapper->IndexCache[L"Folders"].contains(L"KSLong"));
  EXPECT_EQ(Ids({{L"Long", JetValue(0)}}), (Numbers{2, 4, 6})) << "the second time";
  EXPECT_EQ(Ids({{L"Long", JetValue()}}), Numbers{7});
  EXPECT_EQ(Ids({{L"Long", JetValue(9)}}), Numbers());
  EXPECT_EQ(Ids({{L"Long", JetValue(-9)}}), Numbers());
}

TEST_F(JetDbWrapperTest, FilterOfAnotherWidthFindsNothing) {
  AddRow(1, {{4, {EseBytes(1)}}});
  Write();
  EXPECT_EQ(Ids({{L"Id", JetValue(1)}}), Numbers());
  EXPECT_EQ(Ids({{L"Long", JetValue(int64_t{1})}}), Numbers());
}

TEST_F(JetDbWrapperTest, FilterOfTwoColumnsNeedsAnIndexOnBoth) {
  AddRow(1, {{4, {EseBytes(1)}}});
  Write();
  std::vector<JetRow> rows;
  const JetRow none = {{L"Id", JetValue(int64_t{1})}, {L"Long", JetValue(1)}};
  EXPECT_EQ(m_wrapper->Query(L"Folders", m_columns, none, {}, &rows), kFail);
  EXPECT_EQ(m_wrapper->IndexCache[L"Folders"].size(), 2U) << "no index was created";
  // The columns stand in the other order in the index.
  std::vector<std::wstring> columns;
  const JetRow both = {{L"Kind", JetValue(1)}, {L"Long", JetValue(1)}};
  EXPECT_EQ(m_wrapper->FindOrCreateIndex(L"Folders", both, &columns), L"ByBoth");
  EXPECT_EQ(columns, (std::vector<std::wstring>{L"Long", L"Kind"}));
}

TEST_F(JetDbWrapperTest, NameOfACreatedIndexHasNoUnderscores) {
  m_table.columns.push_back({"MSGCOL_FOLDERID", 8, test::kEseLongLong, 8});
  Write();
  std::vector<std::wstring> columns;
  const JetRow filter = {{L"MSGCOL_FOLDERID", JetValue(int64_t{1})}};
  EXPECT_EQ(m_wrapper->FindOrCreateIndex(L"Folders", filter, &columns), L"KSMSGCOLFOLDERID");
  EXPECT_EQ(columns, std::vector<std::wstring>{L"MSGCOL_FOLDERID"});
  EXPECT_EQ(m_wrapper->FindOrCreateIndex(L"Folders", {{L"Missing", JetValue(1)}}, &columns), L"");
  EXPECT_TRUE(columns.empty());
}

TEST_F(JetDbWrapperTest, RequiredValuesDropRowsThatDiffer) {
  AddRow(1, {{2, {"\x01"}}, {4, {EseBytes(1)}}});
  AddRow(2, {{2, {"\x02"}}, {4, {EseBytes(1)}}});
  AddRow(3, {{4, {EseBytes(1)}}});
  Write();
  EXPECT_EQ(Ids({}, {{L"Kind", JetValue(1)}}), (Numbers{1, 3})) << "an unreadable one stays";
  EXPECT_EQ(Ids({{L"Long", JetValue(1)}}, {{L"Kind", JetValue(2)}}), (Numbers{2, 3}));
  EXPECT_EQ(Ids({}, {{L"Kind", JetValue(int64_t{1})}}), Numbers{3}) << "another width differs";
  m_columns.erase(L"Kind");
  EXPECT_EQ(Ids({}, {{L"Kind", JetValue(1)}}), (Numbers{1, 2, 3})) << "not among those wanted";
}

TEST_F(JetDbWrapperTest, TextFilterFollowsTheCodePage) {
  AddRow(1, {{128, {test::EseUtf16(u"Inbox")}}, {129, {"Inbox"}}});
  AddRow(2, {{128, {test::EseUtf16(u"Out")}}, {129, {"Out"}}});
  Write();
  EXPECT_EQ(Ids({{L"Name", JetValue(L"Inbox"s)}}), Numbers{1});
  EXPECT_EQ(Ids({{L"Plain", JetValue(L"Out"s)}}), Numbers{2});
}

TEST_F(JetDbWrapperTest, FilesThatCanNotBeReadFail) {
  EXPECT_EQ(JetDbWrapper(m_folder.PathOf("missing"), EseJetApi()).Status, kFail);
  test::WriteFile(m_path, "no database");
  const JetDbWrapper wrapper(m_path, EseJetApi());
  EXPECT_EQ(wrapper.Status, kFail);
  EXPECT_FALSE(wrapper.Instance || wrapper.Session || wrapper.Database);
}

TEST_F(JetDbWrapperTest, SecondWrapperOfAFileSharesItsInstance) {
  Write();
  {
    JetDbWrapper second(m_path, EseJetApi());
    EXPECT_EQ(second.Status, kOk);
    EXPECT_FALSE(second.Instance);
    JetColumns columns;
    EXPECT_EQ(second.GetTableColumns(L"Folders", &columns), kOk);
  }
  EXPECT_EQ(Ids({}), Numbers());
  EXPECT_TRUE(m_wrapper->Instance);
}

TEST_F(JetDbWrapperTest, MissingDirectoryIsMade) {
  const std::filesystem::path missing = m_folder.Path() / "new";
  EXPECT_EQ(JetDbWrapper(test::TempFolder::Wide(missing / "store.edb"), EseJetApi()).Status, kFail);
  EXPECT_TRUE(std::filesystem::is_directory(missing));
}

TEST_F(JetDbWrapperTest, StoreIsNeverWritten) {
  AddRow(1, {{4, {EseBytes(1)}}});
  Write({.state = 2});
  const std::string before = test::ReadFile(m_path);
  EXPECT_EQ(Ids({{L"Long", JetValue(1)}}), Numbers{1});
  m_wrapper.reset();
  EXPECT_EQ(test::ReadFile(m_path), before);
  size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_folder.Path())) {
    ++files;
  }
  EXPECT_EQ(files, 1U);
}

TEST(JetValue, ValuesOfDifferentKindsDiffer) {
  EXPECT_EQ(JetValue(5), JetValue(5));
  EXPECT_FALSE(JetValue(5) == JetValue(int64_t{5}));
  EXPECT_FALSE(JetValue(5) == JetValue(6));
  EXPECT_FALSE(JetValue() == JetValue(0));
  EXPECT_EQ(JetValue(), JetValue());
  EXPECT_EQ(JetValue(L"a"s), JetValue(L"a"s));
  EXPECT_FALSE(JetValue(L"a"s) == JetValue(L"A"s));
  EXPECT_FALSE(JetValue(L""s) == JetValue());
}

TEST(JetSamples, EveryTableOfEveryFileCanBeQueried) {
  POSTMARKER_NEED_SAMPLES();
  const std::filesystem::path samples = test::SampleFolder() / "ese";
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(samples)) {
    if (!entry.is_regular_file() || entry.path().extension() == ".md") {
      continue;
    }
    ++files;
    JetDbWrapper wrapper(test::TempFolder::Wide(entry.path()), EseJetApi());
    ASSERT_EQ(wrapper.Status, kOk) << entry.path();
    std::set<std::wstring> names;
    EXPECT_EQ(wrapper.GetTableNames(&names), kOk);
    EXPECT_TRUE(names.contains(L"MSysObjects"));
    for (const std::wstring& name : names) {
      JetColumns columns;
      JetIndexes indexes;
      std::vector<JetRow> rows;
      EXPECT_EQ(wrapper.GetTableColumns(name, &columns), kOk);
      EXPECT_EQ(wrapper.GetTableIndexes(name, &indexes), kOk);
      EXPECT_FALSE(columns.empty()) << entry.path() << " " << NarrowUtf8(name);
      EXPECT_EQ(wrapper.Query(name, columns, {}, {}, &rows), kOk);
    }
  }
  EXPECT_GT(files, 0) << "there is no database in " << samples;
}

}  // namespace
}  // namespace postmarker
