#include "analysis/TokenCountMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/HostileMail.h"

namespace postmarker {
namespace {

using Model = std::map<std::string, int32_t>;

Model Content(const TokenCountMap& map) {
  Model content;
  std::string last;
  for (const TokenCountMap::Item& item : map) {
    EXPECT_TRUE(content.empty() || last < item.key) << "out of order: " << item.key;
    last = item.key;
    content.emplace(item.key, item.count);
  }
  EXPECT_EQ(content.size(), map.Size());
  size_t visited = 0;
  map.ForEach([&](std::string_view key, int32_t count) {
    EXPECT_EQ(content[std::string(key)], count);
    EXPECT_EQ(map.Count(key), count);
    ++visited;
  });
  EXPECT_EQ(visited, content.size());
  return content;
}

TEST(TokenCountMap, AddCountIgnoresAnEmptyKey) {
  TokenCountMap map;
  AddCount("", &map, 1);
  map.Add("", "", 1);
  EXPECT_TRUE(map.Empty());
}

TEST(TokenCountMap, CountsAndKeepsCase) {
  TokenCountMap map;
  map.Add("a", 1);
  map.Add("A", 2);
  map.Add("a", 3);
  map.Add("pre*", "a", 1);
  EXPECT_EQ(Content(map), (Model{{"A", 2}, {"a", 4}, {"pre*a", 1}}));
  EXPECT_EQ(map.Count("b"), 0);
  EXPECT_FALSE(map.Contains("b"));
}

TEST(TokenCountMap, OrdersByUnsignedBytes) {
  TokenCountMap map;
  for (const std::string& key :
       {std::string("abcdefgh\xE9"), std::string("abcdefgh"), std::string("abcdefghi"),
        std::string("abc\0", 4), std::string("abc"), std::string("\xE9"), std::string("z")}) {
    map.Add(key, 1);
  }
  EXPECT_EQ(Content(map).size(), 7U);
}

TEST(TokenCountMap, InsertKeepsWhatIsThere) {
  TokenCountMap map;
  TokenCountMap other;
  map.Add("a", 5);
  other.Add("a", 1);
  other.Add("b", 2);
  map.Insert(other);
  EXPECT_EQ(Content(map), (Model{{"a", 5}, {"b", 2}}));
}

TEST(TokenCountMap, CapsCountsAboveOne) {
  TokenCountMap map;
  map.Add("a", 5);
  map.Add("b", 1);
  map.Add("c", -3);
  map.CapCounts();
  EXPECT_EQ(Content(map), (Model{{"a", 1}, {"b", 1}, {"c", -3}}));
}

// The sequences of a list, made the plain way.
void AddSequences(const std::vector<std::string>& words, const std::string& prefix, Model* model) {
  for (size_t i = 0; i + 1 < words.size(); ++i) {
    (*model)[prefix + words[i] + words[i + 1]] += 4;
    if (i + 2 < words.size()) {
      (*model)[prefix + words[i] + words[i + 2]] += 4;
      (*model)[prefix + words[i] + words[i + 1] + words[i + 2]] += 16;
    }
  }
}

TEST(TokenCountMap, SequencesAreThoseMadeThePlainWay) {
  std::mt19937 random(1);
  for (const size_t count : {0U, 1U, 2U, 3U, 10U, 20000U}) {
    for (const char* prefix : {"", "subject*"}) {
      TokenCountMap map;
      Model model;
      WordList list;
      std::vector<std::string> words;
      for (size_t i = 0; i < count; ++i) {
        std::string word(1 + random() % (random() % 50 == 0 ? 64 : 5), 'a');
        for (char& c : word) {
          c = static_cast<char>('a' + random() % 3);
        }
        map.Add(word, 1);
        model[word] += 1;
        list.Append(word);
        words.push_back(word);
      }
      map.AddWordSequences(list, prefix);
      AddSequences(words, prefix, &model);
      EXPECT_EQ(Content(map), model) << count << prefix;
    }
  }
}

TEST(TokenCountMap, SequencesOfLongWords) {
  TokenCountMap map;
  Model model;
  WordList list;
  const std::vector<std::string> words = {std::string(255, 'a'), std::string(200, 'b'), "c"};
  for (const std::string& word : words) {
    list.Append(word);
  }
  AddWordSequences(&map, list);
  AddSequences(words, "", &model);
  EXPECT_EQ(Content(map), model);
}

TEST(TokenCountMap, CountsALotAndAgainAfterClear) {
  std::mt19937 random(1);
  TokenCountMap map;
  for (int round = 0; round < 3; ++round) {
    Model model;
    for (int i = 0; i < 50000; ++i) {
      const std::string key = std::to_string(random() % 20000);
      map.Add(key, 1);
      ++model[key];
    }
    const std::string large(100000, 'x');
    map.Add(large, 7);
    model[large] = 7;
    EXPECT_EQ(Content(map), model);
    map.Clear();
    EXPECT_TRUE(map.Empty());
    EXPECT_FALSE(map.Contains("1"));
  }
}

TEST(TokenCountMap, ChargesWhatItTakesAndRefundsIt) {
  MemoryBudget budget;
  budget.SetLimit(500000);
  {
    TokenCountMap map;
    map.ChargeTo(&budget);
    EXPECT_THROW(
        {
          for (int i = 0; i < 1000000; ++i) {
            map.Add(std::to_string(i), 1);
          }
        },
        MemoryBudget::Exceeded);
    EXPECT_GT(map.Held(), 5000U);
  }
  budget.Charge(500000);
  EXPECT_THROW(budget.Charge(1), MemoryBudget::Exceeded);
}

// Counts words, their sequences and the words again, as much as a budget allows. False where that
// is too little; all that was counted must be found and walked otherwise.
bool CountsWithin(size_t limit, bool tightens) {
  WordList words;
  const std::string text = test::ManyWords(4, 20000);
  for (size_t at = 0; at + 4 <= text.size(); at += 5) {
    words.Append(std::string_view(text).substr(at, 4));
  }
  MemoryBudget budget;
  budget.SetLimit(limit);
  TokenCountMap map;
  map.ChargeTo(&budget);
  if (tightens) {
    budget.SetRelief([&] { map.Tighten(); });
  }
  try {
    for (int round = 0; round < 2; ++round) {
      for (const std::string_view word : words) {
        map.Add(word, 1);
      }
      map.AddWordSequences(words);
    }
  } catch (const MemoryBudget::Exceeded&) {
    return false;
  }
  TokenCountMap expected;
  for (const std::string_view word : words) {
    expected.Add(word, 2);
  }
  for (int round = 0; round < 2; ++round) {
    expected.AddWordSequences(words);
  }
  EXPECT_EQ(Content(map), Content(expected));
  for (const auto& [key, count] : expected) {
    EXPECT_EQ(map.Count(key), count);
  }
  EXPECT_FALSE(map.Contains("none"));
  map.Clear();
  map.Add("a", 1);
  EXPECT_EQ(Content(map), (Model{{"a", 1}}));
  return true;
}

TEST(TokenCountMap, HoldsHalfAsMuchAgainWhereMemoryIsShort) {
  const auto least = [](bool tightens) {
    size_t limit = 200000;
    while (!CountsWithin(limit, tightens)) {
      limit += 20000;
    }
    return limit;
  };
  const size_t tight = least(true);
  EXPECT_LT(tight * 3, least(false) * 2) << tight;
  EXPECT_GT(tight, 300000U);
}

TEST(TokenCountMap, ReadsThroughWhatItDoesNotHold) {
  TokenCountMap map;
  map.Add("forgotten", 1);
  const auto recount = [&](KeyWindow* window) {
    map.DivertTo(window);
    for (int i = 0; i < 1000; ++i) {
      map.Add("k", std::to_string(i % 500), 2);
    }
    TokenCountMap more;
    more.Add("k7", 100);
    more.Add("x", 9);
    map.Insert(more);
    map.DivertTo(nullptr);
    map.Add("nowhere", 1);
    map.Add("no", "where", 1);
    map.Insert(more);
  };
  map.ReadThrough(recount, KeyWindow::Rule::kSum, 1000);
  Model model;
  for (int i = 0; i < 500; ++i) {
    model["k" + std::to_string(i)] = 4;
  }
  model["x"] = 9;
  EXPECT_EQ(Content(map), model);
  EXPECT_EQ(map.Size(), 501U);
  EXPECT_EQ(map.Count("k7"), 4);
  EXPECT_EQ(map.Count("k500"), 0);
  EXPECT_TRUE(map.Contains("x"));
  EXPECT_FALSE(map.Contains("forgotten"));
  EXPECT_FALSE(map.Empty());
  EXPECT_EQ(map.Held(), 0U);
  size_t visited = 0;
  map.ForEach([&](std::string_view, int32_t) { ++visited; });
  EXPECT_EQ(visited, 501U);
  map.Clear();
  EXPECT_TRUE(map.Empty());
  map.Add("own", 1);
  EXPECT_EQ(map.Size(), 1U);
}

TEST(TextHash, JoinsWithoutTheText) {
  const TextHash whole("abcdef");
  EXPECT_EQ(TextHash("abc").Joined(TextHash("def"), 3).Bits(), whole.Bits());
  EXPECT_EQ(TextHash("").Joined(whole, 6).Bits(), whole.Bits());
  EXPECT_EQ(whole.Joined(TextHash(), 0).Bits(), whole.Bits());
}

}  // namespace
}  // namespace postmarker
