// Which calls the wrapper makes of the engine, in which order, and what it leaves behind when one
// of them fails.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "clients/livemail/JetDbWrapper.h"
#include "support/EseFile.h"
#include "support/RecordingJet.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using test::EseBytes;
using test::Recorded;
using Lines = std::vector<std::string>;

class JetCalls : public testing::Test {
 protected:
  JetCalls() {
    test::EseTable table = {.name = "T",
                            .columns = {{"A_B", 1},
                                        {"Wide", 2, test::kEseLongLong, 8},
                                        {"Byte", 3, test::kEseByte, 1},
                                        {"Text", 128, test::kEseText, 255, 1200},
                                        {"Blob", 129, test::kEseBinary, 255}},
                            .indexes = {{"Two", {1, 2}}}};
    for (int32_t i = 1; i <= 2; ++i) {
      table.rows.push_back(
          {{{1, {EseBytes(i)}}, {2, {EseBytes(int64_t{i})}}, {128, {"x\0"}}, {129, {"b"}}}});
    }
    test::WriteFile(m_path, test::MakeEseFile({table}, {.hasCatalogCopy = false}));
    Recorded() = {};
  }

  std::unique_ptr<JetDbWrapper> Open() {
    return std::make_unique<JetDbWrapper>(m_path, test::RecordingJet());
  }

  // The calls since the last look.
  static Lines Seen() { return std::exchange(Recorded().calls, {}); }

  [[nodiscard]] std::string Folder() const {
    return NarrowUtf8(test::TempFolder::Wide(m_folder.Path())) + "\\";
  }

  test::TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("store.edb");
};

const JetColumns kColumns = {{L"A_B", {1, 4, 0}},    {L"Wide", {2, 15, 0}},
                             {L"Byte", {3, 2, 0}},   {L"Text", {128, 10, 1200}},
                             {L"Blob", {129, 9, 0}}, {L"Date", {9, 8, 0}}};

TEST_F(JetCalls, OpensAndClosesInOrder) {
  auto wrapper = Open();
  EXPECT_EQ(wrapper->Status, kOk);
  EXPECT_EQ(Seen(),
            (Lines{"SetSystemParameter process 0 64 8192 null", "GetInstanceInfo",
                   "CreateInstance Kestrelon", "SetSystemParameter instance nil 1 0 " + Folder(),
                   "SetSystemParameter instance nil 0 0 " + Folder(),
                   "SetSystemParameter instance nil 2 0 " + Folder(),
                   "SetSystemParameter instance nil 53 1000 null", "Init", "BeginSession null null",
                   "AttachDatabase 0", "OpenDatabase null 0"}));
  wrapper.reset();
  EXPECT_EQ(Seen(), (Lines{"CloseDatabase 0", "DetachDatabase", "EndSession 0", "Term"}));
}

TEST_F(JetCalls, SecondWrapperSharesTheInstance) {
  auto first = Open();
  Seen();
  auto second = Open();
  EXPECT_EQ(second->Status, kOk);
  EXPECT_FALSE(second->Instance);
  EXPECT_EQ(Seen(),
            (Lines{"SetSystemParameter process 0 64 8192 null", "GetInstanceInfo", "FreeBuffer",
                   "BeginSession null null", "AttachDatabase 0", "OpenDatabase null 0"}));
  second.reset();
  EXPECT_EQ(Seen(), (Lines{"CloseDatabase 0", "DetachDatabase", "EndSession 0"}));
  JetColumns columns;
  EXPECT_EQ(first->GetTableColumns(L"T", &columns), kOk);
}

TEST_F(JetCalls, ListingsHaveOneFrame) {
  auto wrapper = Open();
  Seen();
  std::set<std::wstring> names;
  EXPECT_EQ(wrapper->GetTableNames(&names), kOk);
  EXPECT_EQ(Seen(),
            (Lines{"BeginTransaction", "GetObjectInfo 1 null null whole 1", "Move first 0",
                   "RetrieveColumn 1 1023 0", "Move 1 0", "CloseTable", "CommitTransaction 0"}));
  JetIndexes indexes;
  EXPECT_EQ(wrapper->GetTableIndexes(L"T", &indexes), kOk);
  EXPECT_EQ(Seen(), (Lines{"BeginTransaction", "OpenTable T 4", "GetTableIndexInfo null whole 1",
                           "Move first 0", "RetrieveColumn 1 1023 0", "RetrieveColumn 3 1023 0",
                           "Move 1 0", "RetrieveColumn 1 1023 0", "RetrieveColumn 3 1023 0",
                           "Move 1 0", "CloseTable", "CloseTable", "CommitTransaction 0"}));
  JetColumns columns;
  EXPECT_EQ(wrapper->GetTableColumns(L"T", &columns), kOk);
  const Lines seen = Seen();
  EXPECT_EQ(Lines(seen.begin(), seen.begin() + 9),
            (Lines{"BeginTransaction", "OpenTable T 4", "GetTableColumnInfo null whole 7",
                   "Move first 0", "RetrieveColumn 1 1023 0", "RetrieveColumn 2 4 0",
                   "RetrieveColumn 3 4 0", "RetrieveColumn 4 4 0", "Move 1 0"}));
  EXPECT_EQ(Lines(seen.end() - 3, seen.end()),
            (Lines{"CloseTable", "CloseTable", "CommitTransaction 0"}));
}

TEST_F(JetCalls, FilterSeeksWithAKeyMadeTwice) {
  auto wrapper = Open();
  std::vector<JetRow> rows;
  Seen();
  EXPECT_EQ(wrapper->Query(L"T", kColumns, {{L"A_B", JetValue(1)}}, {}, &rows), kOk);
  EXPECT_EQ(rows.size(), 1U);
  const Lines seen = Seen();
  const auto begin = std::find(seen.begin(), seen.end(), "OpenTable T 8");
  EXPECT_EQ(
      Lines(begin, seen.end()),
      (Lines{"OpenTable T 8", "CreateIndex KSAB 0 +A_B 12 100", "CloseTable", "CommitTransaction 0",
             "BeginTransaction", "OpenTable T 4", "SetCurrentIndex KSAB", "MakeKey data 4 1",
             "Seek 8", "MakeKey data 4 1", "SetIndexRange 3", "RetrieveColumn 1 4 0",
             "RetrieveColumn 129 2047 0", "RetrieveColumn 3 4 0", "RetrieveColumn 128 2047 0",
             "RetrieveColumn 2 8 0", "Move 1 0", "CloseTable", "CommitTransaction 0"}));
}

TEST_F(JetCalls, EachColumnOfAnIndexBeginsTheKeyAnew) {
  auto wrapper = Open();
  std::vector<JetRow> rows;
  const JetRow filter = {{L"A_B", JetValue(1)}, {L"Wide", JetValue(int64_t{1})}};
  Seen();
  EXPECT_EQ(wrapper->Query(L"T", kColumns, filter, {}, &rows), kOk);
  const Lines seen = Seen();
  const auto begin = std::find(seen.begin(), seen.end(), "SetCurrentIndex Two");
  EXPECT_EQ(Lines(begin, seen.end()),
            (Lines{"SetCurrentIndex Two", "MakeKey data 4 1", "MakeKey data 8 1", "CloseTable",
                   "CommitTransaction 0"}))
      << "the second value does not fit the first column";
}

TEST_F(JetCalls, RequiredValuesAreReadInTheirOrderBeforeTheRow) {
  auto wrapper = Open();
  std::vector<JetRow> rows;
  Seen();
  const JetRow required = {{L"Wide", JetValue(int64_t{2})}, {L"A_B", JetValue(2)}};
  const JetColumns columns = {{L"A_B", {1, 4, 0}}, {L"Wide", {2, 15, 0}}};
  EXPECT_EQ(wrapper->Query(L"T", columns, {}, required, &rows), kOk);
  EXPECT_EQ(rows.size(), 1U);
  EXPECT_EQ(Seen(), (Lines{"BeginTransaction", "OpenTable T 4", "Move first 0",
                           "RetrieveColumn 1 4 0", "Move 1 0", "RetrieveColumn 1 4 0",
                           "RetrieveColumn 2 8 0", "RetrieveColumn 1 4 0", "RetrieveColumn 2 8 0",
                           "Move 1 0", "CloseTable", "CommitTransaction 0"}));
}

// All operations, one after the other.
void UseAll(const std::function<std::unique_ptr<JetDbWrapper>()>& open) {
  const std::unique_ptr<JetDbWrapper> wrapper = open();
  if (wrapper->Status != kOk) {
    EXPECT_FALSE(wrapper->Session || wrapper->Database || wrapper->Instance);
    return;
  }
  const std::unique_ptr<JetDbWrapper> second = open();
  if (second->Status != kOk) {
    EXPECT_FALSE(second->Session || second->Database || second->Instance);
    return;
  }
  std::set<std::wstring> names;
  JetColumns columns;
  JetIndexes indexes;
  std::vector<JetRow> rows;
  second->GetTableNames(&names);
  second->GetTableColumns(L"T", &columns);
  second->GetTableIndexes(L"T", &indexes);
  second->Query(L"T", kColumns, {{L"A_B", JetValue(1)}}, {{L"A_B", JetValue(1)}}, &rows);
  second->Query(L"T", kColumns, {}, {}, &rows);
}

TEST_F(JetCalls, NothingStaysOpenWhicheverCallFails) {
  UseAll([this] { return Open(); });
  const auto calls = static_cast<int>(Seen().size());
  ASSERT_TRUE(Recorded().NothingIsOpen());
  ASSERT_GT(calls, 100);
  for (int failAt = 1; failAt <= calls; ++failAt) {
    for (const jet::Code failure : {-1, 1}) {
      Recorded() = {};
      Recorded().failAt = failAt;
      Recorded().failure = failure;
      UseAll([this] { return Open(); });
      EXPECT_TRUE(Recorded().NothingIsOpen())
          << failAt << ": " << Recorded().calls[static_cast<size_t>(failAt) - 1];
    }
  }
}

TEST_F(JetCalls, WarningOfTheIndexCreationIsAFailure) {
  auto wrapper = Open();
  Seen();
  Recorded().failAt = 3;
  Recorded().failure = 1;
  EXPECT_EQ(wrapper->CreateSingleColumnIndex(L"T", L"New", L"A_B"), kFail);
  EXPECT_EQ(Seen(), (Lines{"BeginTransaction", "OpenTable T 8", "CreateIndex New 0 +A_B 12 100",
                           "CloseTable", "CommitTransaction 0"}));
}

TEST_F(JetCalls, OnlyOneWarningOfAttachingGoesOn) {
  Recorded().failAt = 10;
  Recorded().failure = 1008;
  EXPECT_EQ(Open()->Status, kFail);
  const Lines seen = Seen();
  EXPECT_EQ(Lines(seen.begin() + 9, seen.end()),
            (Lines{"AttachDatabase 0", "EndSession 0", "Term"}))
      << "what another warning attached was opened";
  EXPECT_TRUE(Recorded().NothingIsOpen());
}

TEST_F(JetCalls, FailureOfAParameterIsIgnored) {
  for (const int call : {1, 4, 5, 6, 7}) {
    Recorded() = {};
    Recorded().failAt = call;
    EXPECT_EQ(Open()->Status, kOk) << call;
    EXPECT_EQ(Seen()[static_cast<size_t>(call) - 1].substr(0, 18), "SetSystemParameter");
  }
}

}  // namespace
}  // namespace postmarker
