#include "clients/incredimail/ImTextSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

namespace postmarker {
namespace {

using Texts = std::vector<std::string_view>;

TEST(ImTextSet, KeepsEachTextOnceInOrder) {
  ImTextSet set;
  EXPECT_TRUE(set.Sorted().empty());
  EXPECT_TRUE(set.Add("b"));
  EXPECT_TRUE(set.Add("a"));
  EXPECT_FALSE(set.Add("b"));
  EXPECT_TRUE(set.Add(""));
  EXPECT_FALSE(set.Add(""));
  EXPECT_EQ(set.Sorted(), (Texts{"", "a", "b"}));
}

TEST(ImTextSet, TextsThatBeginAlikeAreInOrder) {
  ImTextSet set;
  const std::string_view withNul("12345678\0", 9);
  for (const std::string_view text :
       {std::string_view("123456789"), std::string_view("12345678"), withNul,
        std::string_view("1234567"), std::string_view("12345678\xFF"), std::string_view("\xE4")}) {
    EXPECT_TRUE(set.Add(text));
  }
  EXPECT_EQ(set.Sorted(),
            (Texts{"1234567", "12345678", withNul, "123456789", "12345678\xFF", "\xE4"}));
}

TEST(ImTextSet, ManyTextsAreAllThere) {
  ImTextSet set;
  std::set<std::string> expected;
  for (int i = 0; i < 20'000; ++i) {
    const std::string text = "person." + std::to_string(i * 7919 % 12'000) + "@example.com";
    EXPECT_EQ(set.Add(text), expected.insert(text).second);
  }
  const Texts sorted = set.Sorted();
  EXPECT_TRUE(std::equal(sorted.begin(), sorted.end(), expected.begin(), expected.end()));
}

TEST(ImTextSet, TextsOfFewBytesAreInOrderWhereverTheyPart) {
  ImTextSet set;
  std::set<std::string> expected;
  std::mt19937 random(1);
  for (int i = 0; i < 20'000; ++i) {
    // Begins as texts before it do, and goes on with zeros as often as not.
    std::string text(random() % 3 * 11, 'p');
    for (size_t left = random() % 20; left > 0; --left) {
      text.push_back(std::string_view("\0\0a\xFF", 4)[random() % 4]);
    }
    EXPECT_EQ(set.Add(text), expected.insert(text).second);
  }
  EXPECT_EQ(set.Size(), expected.size());
  const Texts sorted = set.Sorted();
  EXPECT_TRUE(std::equal(sorted.begin(), sorted.end(), expected.begin(), expected.end()));
}

// The highest bits of the words of such texts change so that products alone, whatever they are
// multiplied with, would cancel the change: each text would be compared with all others.
TEST(ImTextSet, TextsThatProductsAloneCanNotTellApartCostNoMore) {
  constexpr uint32_t kBlocks = 16;
  ImTextSet set;
  for (uint32_t number = 0; number < uint32_t{1} << kBlocks; ++number) {
    std::string text;
    for (uint32_t block = 0; block < kBlocks; ++block) {
      const bool isChanged = (number >> block & 1) != 0;
      text += isChanged ? "abcdefg\x80hij\x80klm\x80" : std::string_view("abcdefg\0hij\0klm\0", 16);
    }
    EXPECT_TRUE(set.Add(text));
  }
  EXPECT_EQ(set.Sorted().size(), size_t{1} << kBlocks);
}

TEST(ImTextSet, LongTextsThatPartAtTheirEndsAreInOrder) {
  ImTextSet set;
  const std::string alike(100'000, 'x');
  for (int i = 999; i >= 100; --i) {
    EXPECT_TRUE(set.Add(alike + std::to_string(i)));
  }
  const Texts sorted = set.Sorted();
  ASSERT_EQ(sorted.size(), 900U);
  EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
}

}  // namespace
}  // namespace postmarker
