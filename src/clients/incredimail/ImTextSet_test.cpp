#include "clients/incredimail/ImTextSet.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace postmarker
