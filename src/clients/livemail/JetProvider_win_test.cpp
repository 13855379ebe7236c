#include "clients/livemail/JetProvider.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "clients/livemail/EseJetApi.h"
#include "clients/livemail/JetDbWrapper.h"
#include "support/EseFile.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

// Wine's engine raises an exception in each function.
TEST(JetProvider, ReaderServesWhereTheEngineIsAStub) {
  if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr) {
    GTEST_SKIP() << "the platform has an engine that is no stub";
  }
  EXPECT_EQ(&MachineJetApi(), &EseJetApi());
  EXPECT_EQ(&MachineJetApi(), &EseJetApi()) << "the second time";
}

TEST(JetProvider, DatabaseOpensWithTheEngineOfTheMachine) {
  const test::TempFolder folder;
  test::WriteFile(
      folder.PathOf("store.edb"),
      test::MakeEseFile({{.name = "T", .columns = {{"Id", 1}}, .rows = {{{{1, {"abcd"}}}}}}},
                        {.pageSize = 8192}));
  JetDbWrapper wrapper(folder.PathOf("store.edb"));
  ASSERT_EQ(wrapper.Status, kOk);
  JetColumns columns;
  std::vector<JetRow> rows;
  EXPECT_EQ(wrapper.GetTableColumns(L"T", &columns), kOk);
  EXPECT_EQ(wrapper.Query(L"T", columns, {}, {}, &rows), kOk);
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(ValueOf(rows.front(), L"Id"), JetValue(0x64636261));
}

}  // namespace
}  // namespace postmarker
