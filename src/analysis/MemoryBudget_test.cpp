#include "analysis/MemoryBudget.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(MemoryBudget, AsksForReliefWhereSomethingDoesNotFit) {
  MemoryBudget budget;
  budget.SetLimit(100);
  int asked = 0;
  budget.SetRelief([&] {
    ++asked;
    budget.Refund(30);
    EXPECT_THROW(budget.Charge(1000), MemoryBudget::Exceeded);
  });
  budget.Charge(90);
  EXPECT_EQ(asked, 0);
  budget.Charge(40);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(budget.Room(), 0U);
  EXPECT_THROW(budget.Charge(31), MemoryBudget::Exceeded);
  EXPECT_EQ(asked, 2);
  EXPECT_TRUE(budget.HasRoom(30));
}

TEST(MemoryBudget, AsksAgainAfterAReliefThatFailed) {
  MemoryBudget budget;
  int asked = 0;
  budget.SetRelief([&] {
    ++asked;
    throw MemoryBudget::Exceeded();
  });
  for (int i = 1; i <= 2; ++i) {
    EXPECT_THROW(budget.Charge(1), MemoryBudget::Exceeded);
    EXPECT_EQ(asked, i);
  }
}

TEST(MemoryBudget, TellsWhetherATaskCanBeFinished) {
  MemoryBudget budget;
  budget.SetLimit(100);
  budget.Charge(50);
  EXPECT_TRUE(budget.LastsFor(10, 5));
  EXPECT_FALSE(budget.LastsFor(11, 5));
  EXPECT_TRUE(budget.LastsFor(0, 0));
}

}  // namespace
}  // namespace postmarker
