#include "support/TextHash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace postmarker {
namespace {

TEST(TextHash, JoinsWithoutTheText) {
  const TextHash whole("abcdef");
  EXPECT_EQ(TextHash("abc").Joined(TextHash("def"), 3).Bits(), whole.Bits());
  EXPECT_EQ(TextHash("").Joined(whole, 6).Bits(), whole.Bits());
  EXPECT_EQ(whole.Joined(TextHash(), 0).Bits(), whole.Bits());
}

TEST(TextHash, JoinsTextsOfAllLengths) {
  std::string text;
  for (size_t i = 0; i < 2000; ++i) {
    text.push_back(static_cast<char>(i * 7 + i / 256));
  }
  for (const size_t head : {1U, 63U, 64U, 65U, 977U, 2000U - 1023U}) {
    const std::string_view tail = std::string_view(text).substr(head, TextHash::kMaxTailBytes);
    const std::string_view whole = std::string_view(text).substr(0, head + tail.size());
    EXPECT_EQ(TextHash(whole.substr(0, head)).Joined(TextHash(tail), tail.size()).Bits(),
              TextHash(whole).Bits())
        << head;
  }
}

// One of the pair of texts of 2^level bytes in which each half is the other one's other half.
std::string Alternating(int level, char a, char b) {
  if (level == 0) {
    return {a};
  }
  return Alternating(level - 1, a, b) + Alternating(level - 1, b, a);
}

TEST(TextHash, TextsThatCollideModuloAPowerOfTwoDoNotCollide) {
  std::set<uint32_t> hashes;
  for (int level = 6; level < 13; ++level) {
    hashes.insert(TextHash(Alternating(level, 'a', 'b')).Bits());
    hashes.insert(TextHash(Alternating(level, 'b', 'a')).Bits());
  }
  EXPECT_EQ(hashes.size(), 14U);
}

TEST(TextHash, ShortTextsHaveDifferentHashes) {
  std::set<uint32_t> hashes;
  for (int a = 0; a < 256; ++a) {
    hashes.insert(TextHash(std::string(1, static_cast<char>(a))).Bits());
    hashes.insert(TextHash(std::string(2, static_cast<char>(a))).Bits());
  }
  EXPECT_GE(hashes.size(), 511U);  // two of them may collide at a base in a thousand thousand
}

}  // namespace
}  // namespace postmarker
