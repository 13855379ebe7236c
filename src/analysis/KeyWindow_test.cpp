#include "analysis/KeyWindow.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace postmarker {
namespace {

using Counts = std::map<std::string, int32_t>;
using Feed = std::function<void(KeyWindow* window)>;

// The whole map, window after window.
Counts ReadAll(KeyWindow::Rule rule, size_t memory, const Feed& feed, size_t* windows) {
  Counts counts;
  KeyWindow window(rule, memory);
  window.BeginBehind({});
  for (*windows = 1;; ++*windows) {
    feed(&window);
    window.Sort();
    for (size_t i = 0; i < window.Size(); ++i) {
      const KeyWindow::Item item = window.At(i);
      EXPECT_TRUE(counts.empty() || counts.rbegin()->first < item.key);
      counts.emplace_hint(counts.end(), item.key, item.count);
    }
    if (!window.BeginNext()) {
      return counts;
    }
  }
}

// Keys of many lengths, with bytes of all values, some of them again and again.
std::vector<std::string> ManyKeys(size_t count) {
  std::vector<std::string> keys;
  uint32_t random = 1;
  for (size_t i = 0; i < count; ++i) {
    random = random * 1664525 + 1013904223;
    std::string key(1 + (random >> 24) % (i % 50 == 0 ? 300 : 12), static_cast<char>(random >> 16));
    key.front() = static_cast<char>(random >> 8);
    key.back() = static_cast<char>((random >> 20) % 3 * 127);
    keys.push_back(i % 7 == 0 ? "prefix*" + key : key);
  }
  return keys;
}

TEST(KeyWindow, WindowsGiveTheWholeMapInItsOrder) {
  const std::vector<std::string> keys = ManyKeys(5000);
  Counts expected;
  for (const std::string& key : keys) {
    expected[key] += 3;
  }
  const auto feed = [&](KeyWindow* window) {
    for (const std::string& key : keys) {
      window->Add(key, 3);
    }
  };
  for (const size_t memory : {size_t{100}, size_t{2000}, size_t{20000}, size_t{1000000}}) {
    size_t windows = 0;
    EXPECT_EQ(ReadAll(KeyWindow::Rule::kSum, memory, feed, &windows), expected) << memory;
    EXPECT_EQ(windows == 1, memory == 1000000) << windows;
  }
}

TEST(KeyWindow, CountsOnceButAddsWeights) {
  const std::vector<std::string> keys = ManyKeys(2000);
  Counts expected;
  for (const std::string& key : keys) {
    expected[key] = 1;
  }
  for (size_t i = 1; i < keys.size(); ++i) {
    expected[keys[i - 1] + keys[i]] += 4;
    expected[keys[i]] += 16;
  }
  const auto feed = [&](KeyWindow* window) {
    for (size_t i = 1; i < keys.size(); ++i) {
      const std::string both = keys[i - 1] + keys[i];
      window->AddWeight(both, TextHash(both), 4);
      window->AddWeight(keys[i], TextHash(keys[i]), 16);
    }
    window->BeginNew();
    for (const std::string& key : keys) {
      window->Add(key, 5);
    }
  };
  for (const size_t memory : {size_t{1000}, size_t{1000000}}) {
    size_t windows = 0;
    EXPECT_EQ(ReadAll(KeyWindow::Rule::kOnce, memory, feed, &windows), expected) << memory;
  }
}

TEST(KeyWindow, KeysInTheirOrderFillIt) {
  constexpr int kKeys = 20000;
  constexpr size_t kMemory = 50000;
  const auto feed = [&](KeyWindow* window) {
    for (int i = 0; i < kKeys; ++i) {
      window->Add(std::to_string(100000 + i), 1);
    }
  };
  size_t windows = 0;
  EXPECT_EQ(ReadAll(KeyWindow::Rule::kSum, kMemory, feed, &windows).size(), size_t{kKeys});
  // The index has 5 bytes for a place, in a third of the memory, and a quarter of it stays free.
  constexpr size_t kMostKeys = kMemory / 3 / 5 * 3 / 4;
  EXPECT_LE(windows, kKeys * 8 / 7 / kMostKeys + 1);
}

// Two of these keys fill a window of many places, wherever in its index they stand.
TEST(KeyWindow, FewLargeKeysAreAllToldAndEachOnce) {
  constexpr size_t kMemory = 30000;
  for (int set = 0; set < 300; ++set) {
    std::vector<std::string> keys;
    for (int i = 0; i < 4; ++i) {
      keys.push_back(std::to_string(set * 4 + i) + std::string(9000, 'x'));
    }
    KeyWindow window(KeyWindow::Rule::kSum, kMemory);
    window.BeginBehind({});
    size_t told = 0;
    size_t windows = 0;
    do {
      for (const std::string& key : keys) {
        window.Add(key, 1);
      }
      ASSERT_GT(window.Size(), 0U) << set;
      told += window.Size();
      ASSERT_LE(++windows, keys.size()) << set;
    } while (window.BeginNext());
    EXPECT_EQ(told, keys.size()) << set;
  }
}

TEST(KeyWindow, TellsWhatMayStandBehindAPrefix) {
  KeyWindow window(KeyWindow::Rule::kSum, 1000);
  const auto rests = [&](std::string_view prefix) {
    const KeyWindow::RestRange range = window.RestsBehind(prefix);
    return std::pair(range.low, range.high);
  };
  const std::pair<uint64_t, uint64_t> all(0, ~uint64_t{0});
  window.BeginBehind({});
  EXPECT_EQ(rests("any"), all);
  const uint32_t bounds = window.Bounds();
  window.BeginAt("p*key");
  EXPECT_NE(window.Bounds(), bounds);
  EXPECT_EQ(rests("p*"), std::pair(SortPrefix("key"), SortPrefix(std::string_view("key\0", 4))));
  EXPECT_EQ(rests(""), std::pair(SortPrefix("p*key"), SortPrefix("p*key")));
  EXPECT_GT(rests("a*").first, rests("a*").second);
  EXPECT_GT(rests("q*").first, rests("q*").second);
  window.BeginBehind("p*key");
  EXPECT_EQ(rests("q*"), all);
  EXPECT_EQ(rests("p*"), std::pair(SortPrefix("key"), ~uint64_t{0}));
}

TEST(KeyWindow, AMissingKeyIsCountedOnlyWhereItHasNotCome) {
  KeyWindow window(KeyWindow::Rule::kSum, 1000);
  window.BeginBehind("b");
  for (const char* key : {"a", "b", "c", "c", "d"}) {
    window.AddMissing(key, 2);
  }
  window.Add("d", 5);
  window.AddMissing("d", 1);
  window.Sort();
  ASSERT_EQ(window.Size(), 2U);
  EXPECT_EQ(window.At(0).key, "c");
  EXPECT_EQ(window.At(0).count, 2);
  EXPECT_EQ(window.At(1).count, 7);
  EXPECT_FALSE(window.BeginNext());
}

TEST(KeyWindow, MayBeOfOneKey) {
  KeyWindow window(KeyWindow::Rule::kSum, 1000);
  window.BeginAt("b");
  for (const std::string_view key : {"a", "b", "ba", "bb", "c"}) {
    window.Add(key, 1);
  }
  window.Add(std::string_view("b\0", 2), 1);
  window.Add("b", 1);
  window.Sort();
  ASSERT_EQ(window.Size(), 1U);
  EXPECT_EQ(window.At(0).key, "b");
  EXPECT_EQ(window.At(0).count, 2);
}

TEST(KeyWindow, TellsWhichKeysAreNew) {
  KeyWindow window(KeyWindow::Rule::kOnce, 1000);
  window.BeginBehind({});
  window.Add("a", 1);
  window.BeginNew();
  for (const char* key : {"a", "b", "b", "c"}) {
    window.Add(key, 1);
  }
  window.Sort();
  EXPECT_EQ(window.NewKeys(), 2U);
  EXPECT_EQ(window.At(1).count, 1);
}

TEST(KeyWindow, TakesAKeyThatIsLargerThanItsMemory) {
  const std::string large(5000, 'x');
  const auto feed = [&](KeyWindow* window) {
    window->Add(large + "b", 1);
    window->Add(large + "a", 2);
    window->Add("a", 3);
    window->Add("z", 4);
  };
  size_t windows = 0;
  EXPECT_EQ(ReadAll(KeyWindow::Rule::kSum, 200, feed, &windows),
            (Counts{{"a", 3}, {large + "a", 2}, {large + "b", 1}, {"z", 4}}));
  EXPECT_GT(windows, 1U);
}

TEST(KeyWindow, CountsThatRunOverDoNoHarm) {
  KeyWindow window(KeyWindow::Rule::kSum, 1000);
  window.BeginBehind({});
  for (int i = 0; i < 4; ++i) {
    window.Add("a", 0x40000000);
  }
  window.Sort();
  ASSERT_EQ(window.Size(), 1U);
  EXPECT_EQ(window.At(0).count, 0);
}

TEST(KeyWindow, KnowsWhichPrefixesItMayHold) {
  KeyWindow window(KeyWindow::Rule::kSum, 1000);
  window.BeginBehind("bcd");
  EXPECT_FALSE(window.MayHold("a"));
  EXPECT_FALSE(window.MayHold("bcc"));
  for (const char* prefix : {"", "b", "bcd", "bcda", "c"}) {
    EXPECT_TRUE(window.MayHold(prefix)) << prefix;
  }
  window.BeginAt("bcd");
  EXPECT_TRUE(window.MayHold("bc"));
  EXPECT_FALSE(window.MayHold("bcda"));
  EXPECT_FALSE(window.MayHold("c"));
}

}  // namespace
}  // namespace postmarker
