#include "support/TextPool.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace postmarker {
namespace {

std::vector<std::string> ReadAll(const TextPool& pool, const std::vector<size_t>& sizes) {
  std::vector<std::string> texts;
  uint32_t offset = 0;
  for (const size_t size : sizes) {
    texts.emplace_back(pool.At(offset), size);
    offset = pool.After(offset, size);
  }
  EXPECT_GE(offset, pool.End());
  return texts;
}

TEST(TextPool, GivesBackTextsOfAnySizeInTheirOrder) {
  std::mt19937 random(1);
  TextPool pool;
  for (int round = 0; round < 2; ++round) {
    std::vector<std::string> texts;
    std::vector<size_t> sizes;
    std::vector<uint32_t> offsets;
    for (int i = 0; i < 3000; ++i) {
      const size_t size = 1 + random() % (i % 300 == 299 ? 150000 : 200);
      texts.emplace_back(size, static_cast<char>('a' + i % 26));
      sizes.push_back(size);
      offsets.push_back(pool.Add(texts.back()));
    }
    EXPECT_EQ(ReadAll(pool, sizes), texts);
    for (size_t i = 0; i < offsets.size(); ++i) {
      EXPECT_EQ(std::string(pool.At(offsets[i]), sizes[i]), texts[i]);
    }
    pool.Clear();
    EXPECT_EQ(pool.End(), 0U);
  }
}

TEST(TextPool, ShrinksAndGoesOn) {
  TextPool pool;
  const uint32_t first = pool.Add("one");
  pool.Shrink();
  const uint32_t second = pool.Add("two");
  EXPECT_EQ(std::string(pool.At(first), 3), "one");
  EXPECT_EQ(std::string(pool.At(second), 3), "two");
  EXPECT_EQ(TextPool().End(), 0U);
}

TEST(TextPool, EndIsWhereTheNextTextMayBegin) {
  TextPool pool;
  const uint32_t block = pool.Add(std::string(65536, 'x'));
  EXPECT_EQ(pool.After(block, 65536), pool.End());
  EXPECT_EQ(pool.Add("y"), 65536U);
  EXPECT_EQ(pool.End(), 65537U);
}

}  // namespace
}  // namespace postmarker
