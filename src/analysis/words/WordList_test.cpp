#include "analysis/words/WordList.h"

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
  EXPECT_EQ(Listed(words), "one,two,");
  words.Clear();
  EXPECT_TRUE(words.IsEmpty());
  EXPECT_EQ(words.TextSize(), 0U);
}

TEST(WordList, KeepsLongListsOfWordsOfAllLengths) {
  WordList words;
  std::string expected;
  for (size_t i = 0; i < 3000; ++i) {
    const std::string word(i % WordList::kMaxWordBytes + 1, static_cast<char>('a' + i % 26));
    words.Append(word);
    expected.append(word).append(",");
  }
  EXPECT_EQ(words.Size(), 3000U);
  EXPECT_TRUE(Listed(words) == expected);
}

TEST(WordList, StopsAtTheLimitAndKeepsWhatItHas) {
  FeatureLimit limit;
  limit.TakeKey(FeatureLimit::kMaxTextBytes - 10);
  WordList words;
  words.SetLimit(&limit);
  words.Append("four");
  EXPECT_THROW(words.Append("five5"), FeatureLimit::Reached);
  words.Append("four");
  EXPECT_EQ(Listed(words), "four,four,");
}

}  // namespace
}  // namespace postmarker
