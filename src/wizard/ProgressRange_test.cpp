#include "wizard/ProgressRange.h"

#include <gtest/gtest.h>

#include <limits>

namespace postmarker {
namespace {

TEST(ProgressRange, TotalIsTheUpperBound) {
  EXPECT_EQ(RangeFor(1).upper, 1);
  EXPECT_EQ(RangeFor(300).upper, 300);
  EXPECT_EQ(RangeFor(300).position, 0);
  EXPECT_EQ(RangeFor(65535).upper, 65535);
}

TEST(ProgressRange, TotalOfZeroShowsAFullBar) {
  EXPECT_EQ(RangeFor(0).upper, 1);
  EXPECT_EQ(RangeFor(0).position, 1);
}

TEST(ProgressRange, NegativeTotalShowsAnEmptyBarOfOneStep) {
  EXPECT_EQ(RangeFor(-1).upper, 1);
  EXPECT_EQ(RangeFor(-1).position, 0);
  EXPECT_EQ(RangeFor(std::numeric_limits<int32_t>::min()).upper, 1);
}

TEST(ProgressRange, TotalOfMoreThan16BitsKeepsTheLowerOnes) {
  EXPECT_EQ(RangeFor(65536).upper, 0);
  EXPECT_EQ(RangeFor(70000).upper, 70000 - 65536);
}

TEST(PrefillSteps, MoveTheBarAsOftenAsTold) {
  EXPECT_EQ(StepsToTake(1, 300), 1);
  EXPECT_EQ(StepsToTake(300, 300), 300);
}

TEST(PrefillSteps, WholeRoundsAreLeftOut) {
  EXPECT_EQ(StepsToTake(301, 300), 0);
  EXPECT_EQ(StepsToTake(305, 300), 4);
  EXPECT_EQ(StepsToTake(std::numeric_limits<int32_t>::max(), 1), 1);
  EXPECT_EQ(StepsToTake(5, 0), 0);
}

TEST(PrefillSteps, NumberBelowOneMovesNothing) {
  EXPECT_EQ(StepsToTake(0, 300), 0);
  EXPECT_EQ(StepsToTake(-7, 300), 0);
}

TEST(ProgressSteps, LeadToThePositionThatSingleStepsLeadTo) {
  for (const int32_t upper : {0, 1, 7}) {
    for (int32_t start = 0; start <= upper; ++start) {
      int32_t single = start;
      for (int32_t steps = 0; steps < 20; ++steps) {
        EXPECT_EQ(PositionAfter(start, steps, upper), single) << upper << " " << steps;
        single = single == upper ? 0 : single + 1;
      }
    }
  }
}

TEST(ProgressSteps, AreSoManyAsAnyNumberOfReportsCanCome) {
  EXPECT_EQ(PositionAfter(5, 101LL * std::numeric_limits<int32_t>::max(), 100), 5);
  EXPECT_EQ(PositionAfter(5, std::numeric_limits<int64_t>::max(), 0), 0);
  EXPECT_EQ(PositionAfter(5, -3, 100), 5);
}

}  // namespace
}  // namespace postmarker
