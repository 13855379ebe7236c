#include "support/HashIndex.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

size_t FindNumber(const HashIndex& index, uint32_t hash, uint32_t wanted) {
  return index.Find(hash, [wanted](uint32_t number) { return number == wanted; });
}

TEST(HashIndex, FindsNumbersThoughTheirHashesCollide) {
  HashIndex index;
  index.Reset(7);
  const uint32_t last = 0xFFFFFFFF;  // the last place: what collides goes on at the first one
  for (const uint32_t number : {5U, 0U, 9U}) {
    index.Add(last, number);
  }
  for (const uint32_t number : {5U, 0U, 9U}) {
    const size_t place = FindNumber(index, last, number);
    ASSERT_FALSE(index.IsFree(place));
    EXPECT_EQ(index.At(place), number);
  }
  EXPECT_TRUE(index.IsFree(FindNumber(index, last, 1)));
}

TEST(HashIndex, KeepsAQuarterFree) {
  HashIndex index;
  EXPECT_FALSE(index.HasRoomFor(1));
  index.Reset(8);
  EXPECT_TRUE(index.HasRoomFor(6));
  EXPECT_FALSE(index.HasRoomFor(7));
}

TEST(HashIndex, IsEmptyAfterClearAndReset) {
  HashIndex index;
  index.Reset(4);
  index.Add(1, 3);
  index.Clear();
  EXPECT_EQ(index.Places(), 4U);
  EXPECT_TRUE(index.IsFree(FindNumber(index, 1, 3)));
  index.Add(1, 3);
  index.Reset(8);
  EXPECT_TRUE(index.IsFree(FindNumber(index, 1, 3)));
}

}  // namespace
}  // namespace postmarker
