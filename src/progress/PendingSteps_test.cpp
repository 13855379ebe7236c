#include "progress/PendingSteps.h"

#include <gtest/gtest.h>

#include <limits>

namespace postmarker {
namespace {

TEST(PendingSteps, FirstReportIsAMessageAndTheFollowingOnesAreGathered) {
  PendingSteps steps;
  EXPECT_TRUE(steps.Report(3));
  EXPECT_FALSE(steps.Report(4));
  EXPECT_FALSE(steps.Report(5));
  EXPECT_EQ(steps.MessageArrived(), 9);
}

TEST(PendingSteps, WhatComesAfterTheMessageIsFetchedUntilNothingComes) {
  PendingSteps steps;
  EXPECT_TRUE(steps.Report(1));
  EXPECT_EQ(steps.MessageArrived(), 0);
  EXPECT_FALSE(steps.Report(2)) << "no second message while the window gathers";
  PendingSteps::Gathered gathered = steps.FetchGathered();
  EXPECT_EQ(gathered.steps, 2);
  EXPECT_TRUE(gathered.more);
  gathered = steps.FetchGathered();
  EXPECT_EQ(gathered.steps, 0);
  EXPECT_FALSE(gathered.more);
  EXPECT_TRUE(steps.Report(7)) << "after a pause the next report is a message again";
}

TEST(PendingSteps, MillionReportsAreOneMessageAndLoseNoStep) {
  PendingSteps steps;
  int messages = 0;
  for (int i = 0; i < 1'000'000; ++i) {
    messages += steps.Report(i == 0 ? 5 : std::numeric_limits<int32_t>::max()) ? 1 : 0;
  }
  EXPECT_EQ(messages, 1);
  EXPECT_EQ(steps.MessageArrived(), 999'999LL * std::numeric_limits<int32_t>::max());
}

TEST(PendingSteps, NewRangeForgetsWhatWasGatheredAndAsksForAMessageOfItsOwn) {
  PendingSteps steps;
  EXPECT_TRUE(steps.Report(1));
  EXPECT_FALSE(steps.Report(2));
  steps.BeginRange();
  EXPECT_TRUE(steps.Report(3));
  EXPECT_FALSE(steps.Report(4));
  EXPECT_EQ(steps.MessageArrived(), 0) << "the message before the range brings none after it";
  EXPECT_EQ(steps.FetchGathered().steps, 0) << "nor does a look before the range has come";
  EXPECT_FALSE(steps.FetchGathered().more);
  EXPECT_EQ(steps.MessageArrived(), 4);
}

TEST(PendingSteps, StepsOfAMessageThatWasNotSentComeWithTheNextOne) {
  PendingSteps steps;
  EXPECT_TRUE(steps.Report(3));
  steps.TakeBack(3);
  EXPECT_TRUE(steps.Report(4));
  EXPECT_EQ(steps.MessageArrived(), 3);
}

TEST(PendingSteps, NumberBelowOneIsGatheredAsNone) {
  PendingSteps steps;
  EXPECT_TRUE(steps.Report(0));
  EXPECT_FALSE(steps.Report(-5));
  EXPECT_FALSE(steps.Report(std::numeric_limits<int32_t>::min()));
  EXPECT_FALSE(steps.Report(2));
  EXPECT_EQ(steps.MessageArrived(), 2);
}

TEST(PendingSteps, MessagesOfOthersStopNothing) {
  PendingSteps steps;
  EXPECT_EQ(steps.MessageArrived(), 0);
  EXPECT_TRUE(steps.Report(1));
  EXPECT_EQ(steps.MessageArrived(), 0);
  EXPECT_EQ(steps.MessageArrived(), 0);
  EXPECT_FALSE(steps.Report(2));
  EXPECT_EQ(steps.FetchGathered().steps, 2);
  EXPECT_FALSE(steps.FetchGathered().more);
  EXPECT_TRUE(steps.Report(3));
}

}  // namespace
}  // namespace postmarker
