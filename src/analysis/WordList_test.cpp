#include "analysis/WordList.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

std::string Listed(const WordList& words) {
  std::string listed;
  for (const std::string_view word : words) {
    listed.append(word).append(",");
  }
  return listed;
}

TEST(WordList, KeepsOrderAndLeavesEmptyWordsOut) {
  WordList words;
  words.Append("one");
  words.Append("");
  WordList more;
  more.Append("two");
  words.Append(more);
  EXPECT_EQ(words.Size(), 2U);
  EXPECT_EQ(words.TextSize(), 6U);
  EXPECT_EQ(words.LongestLength(), 3U);
  EXPECT_EQ(Listed(words), "one,two,");
  words.Clear();
  EXPECT_TRUE(words.Empty());
  EXPECT_EQ(words.LongestLength(), 0U);
}

TEST(WordList, ChargesWhatItTakesAndRefundsIt) {
  MemoryBudget budget;
  budget.SetLimit(10000);
  {
    WordList words;
    words.ChargeTo(&budget);
    EXPECT_THROW(
        {
          for (int i = 0; i < 10000; ++i) {
            words.Append("word");
          }
        },
        MemoryBudget::Exceeded);
    EXPECT_GT(words.Size(), 500U);
  }
  budget.Charge(10000);
  EXPECT_THROW(budget.Charge(1), MemoryBudget::Exceeded);
}

TEST(WordList, ReadsThroughWhatItDoesNotHold) {
  WordList words;
  words.Append("forgotten");
  std::string expected;
  for (int i = 0; i < 300; ++i) {
    expected.append(std::string(static_cast<size_t>(i) % 255 + 1, 'x')).append(",");
  }
  const auto retell = [&](WordSink* sink) {
    words.DivertTo(sink);
    for (int i = 0; i < 300; ++i) {
      words.Append(std::string(static_cast<size_t>(i) % 255 + 1, 'x'));
      words.Append("");
    }
    words.DivertTo(nullptr);
    words.Append("nowhere");
  };
  for (const size_t memory : {size_t{1}, size_t{1000}, size_t{1000000}}) {
    words.ReadThrough(retell, memory);
    EXPECT_EQ(Listed(words), expected) << memory;
    EXPECT_EQ(words.Size(), 300U);
    EXPECT_FALSE(words.Empty());
  }
  words.ReadThrough([](WordSink*) {}, 1000);
  EXPECT_TRUE(words.Empty());
  EXPECT_EQ(Listed(words), "");
  words.Clear();
  words.Append("own");
  EXPECT_EQ(Listed(words), "own,");
}

}  // namespace
}  // namespace postmarker
