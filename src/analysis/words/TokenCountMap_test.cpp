#include "analysis/words/TokenCountMap.h"

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
  EXPECT_TRUE(map.IsEmpty());
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
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_FALSE(map.Contains("1"));
  }
}

TEST(TokenCountMap, KeysOfAnyLengthAreFound) {
  TokenCountMap map;
  Model model;
  for (const size_t length : {1U, 63U, 64U, 65U, 128U, 1024U, 65536U, 100000U}) {
    const std::string key(length, 'k');
    map.Add(key, static_cast<int32_t>(length));
    model[key] = static_cast<int32_t>(length);
  }
  EXPECT_EQ(Content(map), model);
}

TEST(TokenCountMap, StopsAtTheLimitAndKeepsWhatItHas) {
  FeatureLimit limit;
  limit.TakeKey(FeatureLimit::kMaxTextBytes - 10);
  TokenCountMap map;
  map.SetLimit(&limit);
  map.Add("four", 1);
  EXPECT_THROW(map.Add("seven77", 1), FeatureLimit::Reached);
  map.Add("four", 1);  // no new key
  map.Add("sixsix", 1);
  EXPECT_EQ(Content(map), (Model{{"four", 2}, {"sixsix", 1}}));
}

TEST(TokenCountMap, StopsAtTheLimitOfKeys) {
  FeatureLimit limit;
  TokenCountMap map;
  map.SetLimit(&limit);
  for (size_t i = 0; i < FeatureLimit::kMaxKeys - 1; ++i) {
    limit.TakeKey(0);
  }
  map.Add("a", 1);
  EXPECT_THROW(map.Add("b", 1), FeatureLimit::Reached);
  EXPECT_EQ(Content(map), (Model{{"a", 1}}));
}

}  // namespace
}  // namespace postmarker
