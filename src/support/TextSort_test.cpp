#include "support/TextSort.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace postmarker {
namespace {

void ExpectSorted(const std::vector<std::string>& texts) {
  std::vector<uint32_t> numbers(texts.size());
  std::iota(numbers.begin(), numbers.end(), 0U);
  SortByText(&numbers, [&](uint32_t number) { return std::string_view(texts[number]); });
  for (size_t i = 1; i < numbers.size(); ++i) {
    ASSERT_LT(texts[numbers[i - 1]], texts[numbers[i]]) << i;
  }
}

TEST(TextSort, OrdersByUnsignedBytes) {
  ExpectSorted({"abcdefgh\xE9", "abcdefgh", "abcdefghi", std::string("abc\0", 4), "abc", "\xE9",
                "z", "", std::string("\0", 1)});
}

TEST(TextSort, OrdersFewAndManyTexts) {
  std::mt19937 random(1);
  for (const size_t count : {100U, 32768U, 33000U}) {
    std::vector<std::string> texts;
    for (size_t i = 0; i < count; ++i) {
      texts.push_back(std::string(random() % 12, 'a') + std::to_string(i));
    }
    ExpectSorted(texts);
  }
}

}  // namespace
}  // namespace postmarker
