#include "analysis/message/HeaderMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace postmarker {
namespace {

std::map<std::string, std::string> Content(const HeaderMap& map) {
  std::map<std::string, std::string> content;
  for (const auto& [key, value] : map.Sorted()) {
    content.emplace(key, value);
  }
  EXPECT_EQ(content.size(), map.Size());
  return content;
}

TEST(HeaderMap, ReadingThroughTheIndexCreatesTheKey) {
  HeaderMap map;
  const std::string value = map["a"];
  EXPECT_EQ(value, "");
  EXPECT_TRUE(map.Contains("a"));
  map["b"] = "x";
  EXPECT_EQ(std::string(map["b"]), "x");
  EXPECT_EQ(map.Size(), 2U);
}

TEST(HeaderMap, GetAndFindCreateNothing) {
  const HeaderMap map;
  EXPECT_EQ(map.Get("a"), "");
  EXPECT_EQ(map.Find("a"), std::nullopt);
  EXPECT_TRUE(map.IsEmpty());
}

TEST(HeaderMap, SortsByBytes) {
  HeaderMap map;
  for (const char* key : {"b", "\xE9", "a-1", "", "B", "a"}) {
    map.Set(key, "x");
  }
  std::string order;
  for (const auto& [key, value] : map.Sorted()) {
    order.append(key).append(",");
  }
  EXPECT_EQ(order, ",B,a,a-1,b,\xE9,");
}

TEST(HeaderMap, CopiesGoTheirOwnWays) {
  HeaderMap first;
  first.Set("a", "1");
  HeaderMap second = first;
  second.Set("b", "2");
  EXPECT_FALSE(first.Contains("b"));
  first.Set("b", "3");
  first.Set("a", "4");
  HeaderMap third = second;
  third.Erase("a");
  EXPECT_EQ(Content(first), (std::map<std::string, std::string>{{"a", "4"}, {"b", "3"}}));
  EXPECT_EQ(Content(second), (std::map<std::string, std::string>{{"a", "1"}, {"b", "2"}}));
  EXPECT_EQ(Content(third), (std::map<std::string, std::string>{{"b", "2"}}));
  EXPECT_FALSE(first == second);
  second.Set("a", "4");
  second.Set("b", "3");
  EXPECT_TRUE(first == second);
}

TEST(HeaderMap, EraseTellsWhetherTheKeyWasThere) {
  HeaderMap map;
  map.Set("a", "1");
  EXPECT_TRUE(map.Erase("a"));
  EXPECT_FALSE(map.Erase("a"));
  EXPECT_TRUE(map.IsEmpty());
}

TEST(HeaderMap, BehavesLikeAMapUnderManyChanges) {
  std::mt19937 random(1);
  HeaderMap map;
  HeaderMap copy;
  std::map<std::string, std::string> model;
  std::map<std::string, std::string> copyModel;
  for (int i = 0; i < 20000; ++i) {
    const std::string key = "k" + std::to_string(random() % 300);
    const std::string value(random() % 40 == 0 ? random() % 3000 : random() % 20, 'v');
    switch (random() % 8) {
      case 0:
        EXPECT_EQ(map.Erase(key), model.erase(key) == 1);
        break;
      case 1:
        EXPECT_EQ(map.Touch(key), model[key]);
        break;
      case 2:
        EXPECT_EQ(map.Get(key), model.contains(key) ? model[key] : "");
        break;
      default:
        map.Set(key, value);
        model[key] = value;
    }
    if (i % 500 == 0) {
      EXPECT_EQ(Content(copy), copyModel);
      copy = map;
      copyModel = model;
      EXPECT_EQ(Content(map), model);
    }
  }
  EXPECT_EQ(Content(map), model);
}

TEST(HeaderMap, HoldsValuesOfAnyLength) {
  HeaderMap map;
  const std::string large(200000, 'x');
  map.Set("a", "1");
  map.Set("large", large);
  map.Set("b", "2");
  map.Shrink();
  EXPECT_EQ(map.Get("large"), large);
  EXPECT_EQ(map.Get("a"), "1");
  EXPECT_EQ(map.Get("b"), "2");
  EXPECT_EQ(map.Sorted().size(), 3U);
}

}  // namespace
}  // namespace postmarker
