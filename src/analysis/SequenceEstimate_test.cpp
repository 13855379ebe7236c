#include "analysis/SequenceEstimate.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "analysis/TokenCountMap.h"
#include "support/HostileMail.h"

namespace postmarker {
namespace {

// The estimate as a share of what is counted.
double ShareFor(const std::string& text) {
  WordList words;
  std::istringstream stream(text);
  for (std::string word; stream >> word;) {
    words.Append(word);
  }
  TokenCountMap counted;
  counted.AddWordSequences(words);
  return static_cast<double>(EstimateSequences(words)) / static_cast<double>(counted.Size());
}

TEST(SequenceEstimate, ComesNearToTheNumberThatIsCounted) {
  EXPECT_NEAR(ShareFor(test::ManyWords(5, 20000)), 1, 0.05);
  EXPECT_NEAR(ShareFor(test::ManyWords(1, 20000)), 1, 0.05);
  EXPECT_NEAR(ShareFor(test::Repeated("a b c d ", 20000)), 1, 0.2);
}

TEST(SequenceEstimate, TakesASampleOfVeryManyWords) {
  EXPECT_NEAR(ShareFor(test::ManyWords(5, 1500000)), 1, 0.05);
}

TEST(SequenceEstimate, FewWordsMakeNone) {
  WordList words;
  EXPECT_EQ(EstimateSequences(words), 0U);
  words.Append("one");
  EXPECT_EQ(EstimateSequences(words), 0U);
}

}  // namespace
}  // namespace postmarker
