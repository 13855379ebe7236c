// Profiles of texts by the groups of four letters in them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "analysis/features/KsMailTokenizer.h"

namespace postmarker {

// What a profile holds of one gram.
struct LetterGram {
  int32_t count = 0;  // how often it stands in the words, or its rank after RankGrams
  int32_t words = 0;  // in how many words it stands
  int32_t first = 0;  // the number of the gram, counted from 0, where it first came
};

using LetterGramMap = std::map<std::string, LetterGram, std::less<>>;

// Adds the grams of one word, `weight` times: a window of 4 bytes over the lower-cased word with a
// blank before and after it; a shorter word gives the one gram that is filled up with blanks. The
// prefix "subject*" of a word stands before each of its grams instead of being cut up.
void AddLetterGrams(LetterGramMap* map, std::string_view word, int32_t weight);

// The grams of all tokens of a message with a count above 0, and those of its subject's.
LetterGramMap GramsOfTokens(KsMailTokenizer* message);
LetterGramMap GramsOfSubject(KsMailTokenizer* message);

// Replaces counts by ranks, from 0 for the most frequent one; of equal counts the smaller gram
// comes first. Grams of rank `limit` and beyond are removed.
void RankGrams(LetterGramMap* map, size_t limit);

// The sum over the grams of `a` of how far their ranks in `a` and `b` differ; a gram that `b` lacks
// counts as far as `b` has grams.
int64_t GramDistance(const LetterGramMap& a, const LetterGramMap& b);

}  // namespace postmarker
