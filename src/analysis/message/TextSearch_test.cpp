#include "analysis/message/TextSearch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace postmarker {
namespace {

TEST(TextSearch, FindsWhatAPlainSearchFinds) {
  std::mt19937 random(1);
  const auto text = [&](size_t most) {
    std::string made(random() % (most + 1), 'a');
    for (char& c : made) {
      c = random() % 4 == 0 ? 'b' : 'a';
    }
    return made;
  };
  for (int i = 0; i < 3000; ++i) {
    const std::string pattern = text(7);
    TextSearch search(pattern);
    for (int k = 0; k < 5; ++k) {
      const std::string subject = text(40);
      EXPECT_EQ(search.FoundIn(subject), subject.find(pattern) != std::string::npos)
          << pattern << " in " << subject;
    }
  }
}

}  // namespace
}  // namespace postmarker
