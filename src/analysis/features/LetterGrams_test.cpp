#include "analysis/features/LetterGrams.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

std::string Listed(const LetterGramMap& grams) {
  std::string listed;
  for (const auto& [gram, record] : grams) {
    listed.append("[").append(gram).append(":").append(std::to_string(record.count));
    listed.append("/").append(std::to_string(record.words)).append("]");
  }
  return listed;
}

std::string GramsOf(std::string_view word) {
  LetterGramMap grams;
  AddLetterGrams(&grams, word, 1);
  return Listed(grams);
}

TEST(LetterGrams, SlideOverTheLowerCasedWord) {
  EXPECT_EQ(GramsOf("Word"), "[ wor:1/1][ord :1/1][word:1/1]");
  EXPECT_EQ(GramsOf("aaaaaa"), "[ aaa:1/1][aaa :1/1][aaaa:3/1]");
}

TEST(LetterGrams, FillUpShortWords) {
  EXPECT_EQ(GramsOf("a"), "[ a  :1/1]");
  EXPECT_EQ(GramsOf("ab"), "[ ab :1/1]");
  EXPECT_EQ(GramsOf(""), "");
}

TEST(LetterGrams, KeepTheSubjectPrefix) {
  EXPECT_EQ(GramsOf("subject*abc"), "[subject* abc:1/1][subject*abc :1/1]");
  EXPECT_EQ(GramsOf("subject*"), "");
}

TEST(LetterGrams, AddUpWithTheirWeights) {
  LetterGramMap grams;
  AddLetterGrams(&grams, "ab", 4);
  AddLetterGrams(&grams, "ab", 16);
  EXPECT_EQ(Listed(grams), "[ ab :20/2]");
}

TEST(LetterGrams, AreMadeOfTheTokensOfAMessageAndOfItsSubject) {
  constexpr std::string_view kMessage = "Subject: ab\r\n\r\n";
  KsMailTokenizer tokenizer;
  tokenizer.Parse(kMessage.data(), kMessage.size(), nullptr, nullptr);
  EXPECT_EQ(Listed(GramsOfTokens(&tokenizer)), "[subject* ab :1/1]");
  EXPECT_EQ(Listed(GramsOfSubject(&tokenizer)), "[ ab :1/1]");
}

TEST(LetterGrams, AreRankedByCountAndThenByText) {
  LetterGramMap grams;
  AddLetterGrams(&grams, "a", 1);
  AddLetterGrams(&grams, "b", 5);
  AddLetterGrams(&grams, "c", 1);
  AddLetterGrams(&grams, "d", 1);
  RankGrams(&grams, 3);
  EXPECT_EQ(Listed(grams), "[ a  :1/1][ b  :0/1][ c  :2/1]");
}

TEST(LetterGrams, DistanceSumsRankDifferences) {
  LetterGramMap a;
  LetterGramMap b;
  a["x"].count = 0;
  a["y"].count = 1;
  a["z"].count = 2;
  b["y"].count = 4;
  b["x"].count = 1;
  EXPECT_EQ(GramDistance(a, b), 1 + 3 + 2);
  EXPECT_EQ(GramDistance(b, a), 3 + 1);
  EXPECT_EQ(GramDistance(a, a), 0);
  EXPECT_EQ(GramDistance({}, a), 0);
}

}  // namespace
}  // namespace postmarker
