// By which a worker finds out that its sheet is gone. Without this, workers of other tests crash.
#include "wizard/WorkerMap_win.h"

#include <gtest/gtest.h>

namespace postmarker::test {
namespace {

TEST(WorkerMapTest, KnowsASheetFromItsEntryToItsEnd) {
  WorkerRegistry map;
  auto* const sheet = reinterpret_cast<CWizardSheet*>(&map);  // a key and nothing else
  int runs = 0;
  const auto count = [&runs] { ++runs; };
  EXPECT_EQ(map.SetWorker(sheet, 1), 0U);
  map.Enter(sheet);
  const uint64_t number = map.SetWorker(sheet, 1);
  EXPECT_FALSE(map.WithSheet(sheet, number + 1, count));
  EXPECT_TRUE(map.WithSheet(sheet, number, count));
  map.Erase(sheet);
  EXPECT_FALSE(map.WithSheet(sheet, number, count));
  EXPECT_EQ(map.SetWorker(sheet, 1), 0U);
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace postmarker::test
