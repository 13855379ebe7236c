#include "analysis/features/LetterGrams.h"

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr size_t kWindow = 4;
constexpr std::string_view kSubjectPrefix = "subject*";

LetterGramMap GramsOf(const TokenCountMap& tokens) {
  LetterGramMap grams;
  for (const TokenCountMap::Item& token : tokens) {
    if (token.count > 0) {
      AddLetterGrams(&grams, token.key, token.count);
    }
  }
  return grams;
}

}  // namespace

void AddLetterGrams(LetterGramMap* map, std::string_view word, int32_t weight) {
  std::string gram;
  if (word.starts_with(kSubjectPrefix)) {
    gram = kSubjectPrefix;
    word.remove_prefix(kSubjectPrefix.size());
  }
  if (word.empty()) {
    return;
  }
  const size_t prefix = gram.size();
  std::string padded = " " + LowerText(word) + " ";
  padded.resize(std::max(padded.size(), kWindow), ' ');
  LetterGramMap ofWord;
  for (size_t i = 0; i + kWindow <= padded.size(); ++i) {
    gram.replace(prefix, std::string::npos, padded, i, kWindow);
    ofWord[gram].count += weight;
  }
  for (const auto& [text, found] : ofWord) {
    const auto number = static_cast<int32_t>(map->size());
    LetterGram& total = map->try_emplace(text, LetterGram{0, 0, number}).first->second;
    total.count += found.count;
    total.words += 1;
  }
}

LetterGramMap GramsOfTokens(KsMailTokenizer* message) {
  return GramsOf(message->Tokens());
}

LetterGramMap GramsOfSubject(KsMailTokenizer* message) {
  return GramsOf(message->SubjectTokens());
}

void RankGrams(LetterGramMap* map, size_t limit) {
  std::vector<std::pair<int32_t, LetterGramMap::iterator>> order;
  for (auto gram = map->begin(); gram != map->end(); ++gram) {
    order.emplace_back(gram->second.count, gram);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  for (size_t rank = 0; rank < order.size(); ++rank) {
    if (rank < limit) {
      order[rank].second->second.count = static_cast<int32_t>(rank);
    } else {
      map->erase(order[rank].second);
    }
  }
}

int64_t GramDistance(const LetterGramMap& a, const LetterGramMap& b) {
  int64_t distance = 0;
  for (const auto& [gram, record] : a) {
    const auto other = b.find(gram);
    distance += other == b.end()
                    ? static_cast<int64_t>(b.size())
                    : std::abs(static_cast<int64_t>(record.count) - other->second.count);
  }
  return distance;
}

}  // namespace postmarker
