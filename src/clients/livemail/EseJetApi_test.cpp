#include "clients/livemail/EseJetApi.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/EseFile.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using namespace jet;
using test::EseBytes;
using test::EseKey;

constexpr Code kNoRow = kNoCurrentRecord;

test::EseTable SampleTable() {
  test::EseTable table = {.name = "Messages",
                          .columns = {{"Id", 1, test::kEseLongLong, 8},
                                      {"Folder", 2},
                                      {"Name", 128, test::kEseText, 255, 1200},
                                      {"Long", 256, test::kEseLongBinary, 0}},
                          .indexes = {{"0", {1}, true}, {"ByFolder", {2}}, {"ByName", {128}}},
                          .entriesPerPage = 4};
  for (int64_t id = 1; id <= 9; ++id) {
    const auto folder = static_cast<int32_t>(id % 3);
    table.rows.push_back({{{1, {EseBytes(id)}},
                           {2, {EseBytes(folder)}},
                           {128, {test::EseUtf16(id < 5 ? u"Ann" : u"BOB")}},
                           {256, {std::string(static_cast<size_t>(id) * 100, 'x'), 0x01}}},
                          EseKey(id)});
    table.indexes[1].entries.emplace_back(EseKey(folder), static_cast<size_t>(id) - 1);
  }
  return table;
}

// An open database with the sample table.
class EseJetApiTest : public testing::Test {
 protected:
  void SetUp() override { Open(test::MakeEseFile({SampleTable()})); }

  void TearDown() override {
    if (m_instance != 0) {
      EXPECT_EQ(m_api.JetTerm(m_instance), kSuccess);
    }
  }

  void Open(const std::string& bytes) {
    test::WriteFile(m_path, bytes);
    ASSERT_EQ(m_api.JetCreateInstance(&m_instance, L"test"), kSuccess);
    ASSERT_EQ(m_api.JetInit(&m_instance), kSuccess);
    ASSERT_EQ(m_api.JetBeginSession(m_instance, &m_session, nullptr, nullptr), kSuccess);
    ASSERT_EQ(m_api.JetAttachDatabase(m_session, m_path.c_str(), 0), kSuccess);
    ASSERT_EQ(m_api.JetOpenDatabase(m_session, m_path.c_str(), nullptr, &m_database, 0), kSuccess);
    ASSERT_EQ(OpenTable("messages", kTableReadOnly), kSuccess);
  }

  Code OpenTable(const char* name, Grbit grbit) {
    return m_api.JetOpenTable(m_session, m_database, name, nullptr, 0, grbit, &m_table);
  }

  Code Move(int32_t step) { return m_api.JetMove(m_session, m_table, step, 0); }

  // The ids from the current row on.
  std::vector<int64_t> Rest() {
    std::vector<int64_t> ids;
    Code code = kSuccess;
    while (code == kSuccess) {
      int64_t id = 0;
      EXPECT_EQ(m_api.JetRetrieveColumn(m_session, m_table, 1, &id, 8, nullptr, 0, nullptr), 0);
      ids.push_back(id);
      code = Move(kMoveNext);
    }
    EXPECT_EQ(code, kNoRow);
    return ids;
  }

  Code Seek(const char* index, const std::string& value) {
    const auto makeKey = [&] {
      return m_api.JetMakeKey(m_session, m_table, value.data(), static_cast<uint32_t>(value.size()),
                              kNewKey);
    };
    Code code = m_api.JetSetCurrentIndex(m_session, m_table, index);
    code = code == kSuccess ? makeKey() : code;
    code = code == kSuccess ? m_api.JetSeek(m_session, m_table, kSeekGreaterOrEqual) : code;
    code = code == kSuccess ? makeKey() : code;
    return code == kSuccess
               ? m_api.JetSetIndexRange(m_session, m_table, kRangeInclusive | kRangeUpperLimit)
               : code;
  }

  const JetApi& m_api = EseJetApi();
  test::TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("store.edb");
  Instance m_instance = 0;
  Session m_session = 0;
  DatabaseId m_database = 0;
  TableId m_table = 0;
};

using Ids = std::vector<int64_t>;

TEST_F(EseJetApiTest, MovesOverTheRows) {
  char byte = 0;
  EXPECT_EQ(m_api.JetRetrieveColumn(m_session, m_table, 1, &byte, 1, nullptr, 0, nullptr), kNoRow);
  EXPECT_EQ(Move(kMoveFirst), kSuccess);
  EXPECT_EQ(Rest(), (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(Move(kMoveNext), kNoRow);
  EXPECT_EQ(Move(-1), kInvalidParameter);
}

TEST_F(EseJetApiTest, IndexFindsTheRowsOfAKey) {
  EXPECT_EQ(Seek("byfolder", EseBytes(int32_t{2})), kSuccess);
  EXPECT_EQ(Rest(), (Ids{2, 5, 8}));
  EXPECT_EQ(Seek("0", EseBytes(int64_t{4})), kSuccess);
  EXPECT_EQ(Rest(), Ids{4});
  EXPECT_EQ(Seek("ByFolder", EseBytes(int32_t{-1})), kSeekNotEqual);
  EXPECT_EQ(Seek("ByFolder", EseBytes(int32_t{3})), kRecordNotFound);
  EXPECT_EQ(Seek("ByFolder", EseBytes(int64_t{2})), kInvalidBufferSize);
  EXPECT_EQ(Seek("missing", "1234"), kIndexNotFound);
  // This order is the platform's, so the index is built again in memory.
  EXPECT_EQ(Seek("ByName", test::EseUtf16(u"bob")), kSuccess);
  EXPECT_EQ(Rest(), (Ids{5, 6, 7, 8, 9}));
}

TEST_F(EseJetApiTest, KeyIsUsedUp) {
  EXPECT_EQ(m_api.JetSeek(m_session, m_table, kSeekGreaterOrEqual), kKeyNotMade);
  EXPECT_EQ(m_api.JetMakeKey(m_session, m_table, "12345678", 8, 0), kKeyNotMade);
  EXPECT_EQ(m_api.JetMakeKey(m_session, m_table, "\1\0\0\0\0\0\0\0", 8, kNewKey), kSuccess);
  EXPECT_EQ(m_api.JetMakeKey(m_session, m_table, "12345678", 8, 0), kKeyIsMade);
  EXPECT_EQ(m_api.JetSeek(m_session, m_table, 1), kInvalidGrbit);
  EXPECT_EQ(m_api.JetSeek(m_session, m_table, kSeekGreaterOrEqual), kSuccess);
  EXPECT_EQ(m_api.JetSetIndexRange(m_session, m_table, 3), kKeyNotMade);
}

TEST_F(EseJetApiTest, RetrieveTellsTheWholeSize) {
  ASSERT_EQ(Seek("0", EseBytes(int64_t{3})), kSuccess);
  std::string buffer(301, '.');
  uint32_t actual = 0;
  const auto read = [&](uint32_t size) {
    return m_api.JetRetrieveColumn(m_session, m_table, 256, buffer.data(), size, &actual, 0,
                                   nullptr);
  };
  EXPECT_EQ(read(299), kBufferTruncated);
  EXPECT_EQ(actual, 300U);
  EXPECT_EQ(buffer, std::string(299, 'x') + "..");
  EXPECT_EQ(read(300), kSuccess);
  EXPECT_EQ(buffer, std::string(300, 'x') + ".");
  EXPECT_EQ(m_api.JetRetrieveColumn(m_session, m_table, 77, buffer.data(), 9, &actual, 0, nullptr),
            kColumnNotFound);
}

TEST_F(EseJetApiTest, CreatedIndexStandsInMemory) {
  const std::string key = "+Folder" + std::string(9, '\0');
  const auto create = [&](const char* name, const std::string& columns) {
    return m_api.JetCreateIndex(m_session, m_table, name, 0, columns.data(),
                                static_cast<uint32_t>(columns.size()), 100);
  };
  EXPECT_EQ(create("New", key), kPermissionDenied) << "opened for reading";
  ASSERT_EQ(OpenTable("Messages", kTableUpdatable), kSuccess);
  EXPECT_EQ(create("New", key), kSuccess);
  EXPECT_EQ(create("new", key), kIndexDuplicate);
  EXPECT_EQ(create("ByFolder", key), kIndexDuplicate);
  EXPECT_EQ(create("Other", "+Missing\0"), kColumnNotFound);
  EXPECT_EQ(create("Other", std::string(2, '\0')), kIndexInvalidDefinition);
  EXPECT_EQ(create("Other", "Folder"), kColumnNotFound);
  EXPECT_EQ(Seek("New", EseBytes(int32_t{0})), kSuccess);
  EXPECT_EQ(Rest(), (Ids{3, 6, 9}));
  // Seen through another handle of the same file as well.
  ASSERT_EQ(OpenTable("Messages", kTableReadOnly), kSuccess);
  EXPECT_EQ(Seek("New", EseBytes(int32_t{1})), kSuccess);
  EXPECT_EQ(Rest(), (Ids{1, 4, 7}));
  EXPECT_EQ(test::ReadFile(m_path), test::MakeEseFile({SampleTable()})) << "nothing is written";
}

TEST_F(EseJetApiTest, StaleAndForeignHandlesAreRefused) {
  Session other = 0;
  ASSERT_EQ(m_api.JetBeginSession(m_instance, &other, nullptr, nullptr), kSuccess);
  EXPECT_EQ(m_api.JetMove(other, m_table, kMoveFirst, 0), kInvalidTableId);
  EXPECT_EQ(m_api.JetCloseDatabase(other, m_database, 0), kInvalidDatabaseId);
  EXPECT_EQ(m_api.JetCloseTable(m_session, m_table), kSuccess);
  EXPECT_EQ(m_api.JetCloseTable(m_session, m_table), kInvalidTableId);
  EXPECT_EQ(m_api.JetCommitTransaction(m_session, 0), kNotInTransaction);
  ASSERT_EQ(OpenTable("Messages", kTableReadOnly), kSuccess);
  EXPECT_EQ(m_api.JetTerm(std::exchange(m_instance, 0)), kSuccess);
  EXPECT_EQ(Move(kMoveFirst), kInvalidTableId);
  EXPECT_EQ(m_api.JetBeginTransaction(m_session), kInvalidSession);
  EXPECT_EQ(m_api.JetEndSession(m_session, 0), kInvalidSession);
  EXPECT_EQ(OpenTable("Messages", kTableReadOnly), kInvalidDatabaseId);
}

TEST_F(EseJetApiTest, InstancesAreListedWithTheirFiles) {
  Instance second = 0;
  EXPECT_EQ(m_api.JetCreateInstance(&second, L"TEST"), kInstanceNameInUse);
  ASSERT_EQ(m_api.JetCreateInstance(&second, L"second"), kSuccess);
  const auto list = [&] {
    uint32_t count = 0;
    InstanceInfo* infos = nullptr;
    EXPECT_EQ(m_api.JetGetInstanceInfo(&count, &infos), kSuccess);
    std::vector<std::wstring> texts;
    for (uint32_t i = 0; i < count; ++i) {
      texts.emplace_back(infos[i].name);
      for (uintptr_t j = 0; j < infos[i].databaseCount; ++j) {
        texts.emplace_back(infos[i].databaseFileNames[j]);
      }
    }
    EXPECT_EQ(m_api.JetFreeBuffer(reinterpret_cast<char*>(infos)), kSuccess);
    EXPECT_EQ(m_api.JetFreeBuffer(reinterpret_cast<char*>(infos)),
              infos == nullptr ? kSuccess : kInvalidParameter);
    return texts;
  };
  EXPECT_EQ(list(), (std::vector<std::wstring>{L"test", m_path})) << "the second does not run";
  ASSERT_EQ(m_api.JetInit(&second), kSuccess);
  EXPECT_EQ(list(), (std::vector<std::wstring>{L"test", m_path, L"second"}));
  EXPECT_EQ(m_api.JetTerm(second), kSuccess);
  EXPECT_EQ(m_api.JetTerm(std::exchange(m_instance, 0)), kSuccess);
  EXPECT_TRUE(list().empty());
}

TEST_F(EseJetApiTest, FileIsAttachedOnceAndDetachedWhenNobodyHasItOpen) {
  EXPECT_EQ(m_api.JetAttachDatabase(m_session, m_path.c_str(), 0), kDatabaseAttached);
  EXPECT_EQ(m_api.JetDetachDatabase(m_session, m_path.c_str()), kDatabaseInUse);
  EXPECT_EQ(m_api.JetCloseDatabase(m_session, m_database, 0), kSuccess);
  EXPECT_EQ(m_api.JetDetachDatabase(m_session, m_path.c_str()), kSuccess);
  EXPECT_EQ(m_api.JetDetachDatabase(m_session, m_path.c_str()), kDatabaseNotFound);
  EXPECT_EQ(m_api.JetOpenDatabase(m_session, m_path.c_str(), nullptr, &m_database, 0),
            kDatabaseNotFound);
}

TEST_F(EseJetApiTest, FilesThatAreNoDatabasesAreRefused) {
  const auto attach = [&](const char* name) {
    return m_api.JetAttachDatabase(m_session, m_folder.PathOf(name).c_str(), 0);
  };
  EXPECT_EQ(attach("missing"), kFileNotFound);
  test::WriteFile(m_folder.PathOf("empty"), "");
  EXPECT_EQ(attach("empty"), kFileAccessDenied);
  test::WriteFile(m_folder.PathOf("text"), "no database");
  EXPECT_EQ(attach("text"), kDatabaseCorrupted);
  std::string other = test::MakeEseFile({}, {.pageSize = 4096});
  for (const size_t start : {size_t{0}, size_t{4096}}) {
    std::string header = other.substr(start, 4096);
    test::PutEse(&header, 8, uint32_t{0x621});
    test::EseFileBuilder::SealHeader(&header);
    other.replace(start, 4096, header);
  }
  test::WriteFile(m_folder.PathOf("other"), other);
  EXPECT_EQ(attach("other"), kInvalidDatabaseVersion);
}

TEST_F(EseJetApiTest, FileThatWasNotClosedIsReadFromACopy) {
  TearDown();
  Open(test::MakeEseFile({SampleTable()}, {.state = 2}));
  // What its program writes meanwhile is not seen.
  test::WriteFile(m_path, std::string(100, 'x'));
  ASSERT_EQ(Move(kMoveFirst), kSuccess);
  EXPECT_EQ(Rest(), (Ids{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(EseJetApiTest, WhatIsHandedOutIsBounded) {
  // Each record names one long value.
  const std::string text(2000, 'x');
  test::EseTable table = {.name = "Messages",
                          .columns = {{"A", 256, test::kEseLongBinary, 0}},
                          .longValues = {{test::EseBigEndian(1U), EseBytes(1U) + EseBytes(2000U)},
                                         {test::EseBigEndian(1U) + test::EseBigEndian(0U), text}},
                          .entriesPerPage = 500};
  for (int row = 0; row < 3000; ++row) {
    table.rows.push_back({{{256, {EseBytes(1U), 0x05}}}});
  }
  TearDown();
  const std::string bytes =
      test::MakeEseFile({table}, {.pageSize = 32768, .hasCatalogCopy = false});
  Open(bytes);
  size_t handedOut = 0;
  std::string buffer(2047, '\0');
  for (int walk = 0; walk < 8; ++walk) {
    for (Code code = Move(kMoveFirst); code == kSuccess; code = Move(kMoveNext)) {
      uint32_t actual = 0;
      m_api.JetRetrieveColumn(m_session, m_table, 256, buffer.data(), 2047, &actual, 0, nullptr);
      handedOut += actual;
    }
  }
  EXPECT_GT(handedOut, 3000U * 2000);
  EXPECT_LT(handedOut, bytes.size() * 64);
}

// A column that is null costs no bytes, and yet a walk over such columns must end.
TEST_F(EseJetApiTest, ReadsOfNothingAreBoundedToo) {
  TearDown();
  const std::string bytes =
      test::MakeEseFile({{.name = "Messages", .columns = {{"A", 1}}, .rows = {{{{1, {}}}}}}},
                        {.pageSize = 2048, .hasCatalogCopy = false});
  Open(bytes);
  ASSERT_EQ(Move(kMoveFirst), kSuccess);
  const size_t most = bytes.size() * 64 + 1024;
  size_t reads = 0;
  Code code = kColumnNull;
  for (; code == kColumnNull && reads <= most; ++reads) {
    uint32_t number = 0;
    code = m_api.JetRetrieveColumn(m_session, m_table, 1, &number, 4, nullptr, 0, nullptr);
  }
  EXPECT_EQ(code, kOutOfMemory);
  EXPECT_EQ(reads, most + 1);
}

TEST_F(EseJetApiTest, ThreadsMayReadAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      Session session = 0;
      DatabaseId database = 0;
      TableId table = 0;
      m_api.JetBeginSession(m_instance, &session, nullptr, nullptr);
      m_api.JetOpenDatabase(session, m_path.c_str(), nullptr, &database, 0);
      m_api.JetOpenTable(session, database, "Messages", nullptr, 0, kTableReadOnly, &table);
      int rows = 0;
      for (Code code = m_api.JetMove(session, table, kMoveFirst, 0); code == kSuccess;
           code = m_api.JetMove(session, table, kMoveNext, 0)) {
        ++rows;
      }
      EXPECT_EQ(rows, 9);
      EXPECT_EQ(m_api.JetEndSession(session, 0), kSuccess);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace postmarker
