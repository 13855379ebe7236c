#include "analysis/TagIndex.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace postmarker {
namespace {

// Hashes that want the last place and the places around it, with tags that are all alike.
uint32_t HashOf(uint32_t number) {
  return 0xF0000000U + (number << 16) + 7;
}

size_t PlaceOf(const TagIndex& index, uint32_t number) {
  return index.Find(HashOf(number), [=](uint32_t found) { return found == number; });
}

TEST(TagIndex, FindsNumbersThoughTheirHashesCollide) {
  TagIndex index;
  EXPECT_TRUE(index.Empty());
  index.Reset(41);
  for (uint32_t number = 0; number < 40; ++number) {
    const size_t place = PlaceOf(index, number);
    ASSERT_TRUE(index.IsFree(place));
    EXPECT_EQ(index.FindFree(HashOf(number)), place);
    index.Set(place, HashOf(number), number);
  }
  for (uint32_t number = 0; number < 40; ++number) {
    ASSERT_FALSE(index.IsFree(PlaceOf(index, number)));
    EXPECT_EQ(index.At(PlaceOf(index, number)), number);
  }
  EXPECT_TRUE(index.IsFree(PlaceOf(index, 40)));
}

TEST(TagIndex, PassesOverOtherTagsWithoutALook) {
  TagIndex index;
  index.Reset(4);
  index.Set(index.FindFree(0x101), 0x101, 5);
  int looks = 0;
  const auto place = index.Find(0x102, [&](uint32_t /*number*/) { return ++looks > 0; });
  EXPECT_TRUE(index.IsFree(place));
  EXPECT_EQ(looks, 0);
}

TEST(TagIndex, HandsOutItsNumbersAndBeginsAnew) {
  TagIndex index;
  index.Reset(10);
  for (const uint32_t number : {8U, 3U, 0U}) {
    index.Set(index.FindFree(HashOf(number)), HashOf(number), number);
  }
  const std::span<uint32_t> numbers = index.TakeNumbers();
  std::sort(numbers.begin(), numbers.end());
  ASSERT_EQ(numbers.size(), 3U);
  EXPECT_EQ(numbers[0], 0U);
  EXPECT_EQ(numbers[1], 3U);
  EXPECT_EQ(numbers[2], 8U);
  index.Clear();
  EXPECT_EQ(index.Places(), 10U);
  for (size_t place = 0; place < index.Places(); ++place) {
    EXPECT_TRUE(index.IsFree(place));
  }
  index.Reset(0);
  EXPECT_TRUE(index.Empty());
  EXPECT_TRUE(index.TakeNumbers().empty());
}

}  // namespace
}  // namespace postmarker
