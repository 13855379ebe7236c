#include "clients/incredimail/ImContainerMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace postmarker {
namespace {

using Names = std::vector<std::wstring>;

ImContainerMap MapOf(const std::vector<ImContainer>& containers) {
  ImContainerRows rows;
  for (const ImContainer& container : containers) {
    rows.Add(container);
  }
  return ImContainerMap(std::move(rows));
}

Names Ids(const ImContainerMap& map) {
  Names ids;
  for (const ImContainer& container : map.Containers()) {
    ids.emplace_back(container.ContainerID);
  }
  return ids;
}

TEST(ImContainerMap, EmptyMap) {
  const ImContainerMap map;
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.Find(L""), nullptr);
  EXPECT_TRUE(map.TopLevel().empty());
}

TEST(ImContainerMap, IsInOrdinalOrderOfTheIds) {
  const ImContainerMap map = MapOf({{.ContainerID = L"b"},
                                    {.ContainerID = L"\u00E9"},
                                    {.ContainerID = L"B"},
                                    {.ContainerID = L"{"},
                                    {.ContainerID = L""}});
  EXPECT_EQ(Ids(map), (Names{L"", L"B", L"b", L"{", L"\u00E9"}));
}

TEST(ImContainerMap, OfSeveralRowsWithOneIdTheLastStays) {
  const ImContainerMap map = MapOf({{.ContainerID = L"a", .Label = L"first"},
                                    {.ContainerID = L"b", .Label = L"other"},
                                    {.ContainerID = L"a", .Label = L"second"},
                                    {.ContainerID = L"a", .Label = L"third"}});
  ASSERT_EQ(map.Size(), 2U);
  EXPECT_EQ(map.Find(L"a")->Label, L"third");
  EXPECT_EQ(map.Find(L"b")->Label, L"other");
}

TEST(ImContainerMap, FindsIdsExactly) {
  const ImContainerMap map = MapOf({{.ContainerID = L"{AB}"}, {.ContainerID = L"{AC}"}});
  EXPECT_EQ(map.Find(L"{AC}"), &map.Containers()[1]);
  EXPECT_EQ(map.Find(L"{ac}"), nullptr);
  EXPECT_EQ(map.Find(L"{A"), nullptr);
  EXPECT_EQ(map.Find(L"{ZZ}"), nullptr);
}

TEST(ImContainerMap, FindsAmongIdsThatBeginAlike) {
  const ImContainerMap map = MapOf({{.ContainerID = L"{0000-2}"},
                                    {.ContainerID = L"{0000-1}"},
                                    {.ContainerID = L"{0000-3}"},
                                    {.ContainerID = L"{000"}});
  for (const ImContainer& container : map.Containers()) {
    EXPECT_EQ(map.Find(container.ContainerID), &container);
  }
  EXPECT_EQ(map.Find(L"{0000-4}"), nullptr);
  EXPECT_EQ(map.Find(L"{0000"), nullptr);
  EXPECT_EQ(map.Find(L"{00"), nullptr);
}

Names IdsAt(const ImContainerMap& map, std::span<const uint32_t> positions) {
  Names ids;
  for (const uint32_t position : positions) {
    ids.emplace_back(map.Containers()[position].ContainerID);
  }
  return ids;
}

uint32_t PositionOf(const ImContainerMap& map, std::wstring_view id) {
  return static_cast<uint32_t>(map.Find(id) - map.Containers().data());
}

TEST(ImContainerMap, ChildrenAreSortedByIndexThenInTheMapsOrder) {
  const ImContainerMap map =
      MapOf({{.ContainerID = L"d", .ParentContainerID = L"p", .IndexInParent = 1},
             {.ContainerID = L"c", .ParentContainerID = L"p", .IndexInParent = 7},
             {.ContainerID = L"b", .ParentContainerID = L"p", .IndexInParent = 1},
             {.ContainerID = L"a", .ParentContainerID = L"p", .IndexInParent = 0xFFFFFFFF},
             {.ContainerID = L"e", .ParentContainerID = L"gone"},
             {.ContainerID = L"p"}});
  EXPECT_EQ(IdsAt(map, map.Children(PositionOf(map, L"p"))), (Names{L"b", L"d", L"c", L"a"}));
  EXPECT_TRUE(map.Children(PositionOf(map, L"a")).empty());
  EXPECT_EQ(IdsAt(map, map.TopLevel()), (Names{L"p"}));
}

TEST(ImContainerMap, TopLevelHasTheFoldersWithoutAParentsId) {
  const ImContainerMap map = MapOf({{.ContainerID = L"b", .IndexInParent = 1},
                                    {.ContainerID = L"a", .IndexInParent = 2},
                                    {.ContainerID = L"", .IndexInParent = 3}});
  EXPECT_EQ(IdsAt(map, map.TopLevel()), (Names{L"b", L"a", L""}));
  EXPECT_TRUE(map.Children(PositionOf(map, L"")).empty());
}

TEST(ImContainerMap, ParentIsFoundOrNone) {
  const ImContainerMap map = MapOf({{.ContainerID = L"a", .ParentContainerID = L"b"},
                                    {.ContainerID = L"b"},
                                    {.ContainerID = L"c", .ParentContainerID = L"gone"}});
  EXPECT_EQ(map.Parent(PositionOf(map, L"a")), PositionOf(map, L"b"));
  EXPECT_EQ(map.Parent(PositionOf(map, L"b")), ImContainerMap::kNone);
  EXPECT_EQ(map.Parent(PositionOf(map, L"c")), ImContainerMap::kNone);
}

TEST(ImContainerMap, ManyFoldersAreSortedFoundAndGrouped) {
  std::mt19937 random(1);
  ImContainerRows rows;
  std::map<std::wstring, uint32_t> expected;
  for (uint32_t row = 0; row < 3000; ++row) {
    // Some begin alike, some come again, some are short, some hold what no byte does.
    std::wstring id(random() % 3 * 6, L'{');
    for (size_t left = random() % 4; left > 0; --left) {
      id.push_back(std::wstring_view(L"0Az\u00FF\u4E00")[random() % 5]);
    }
    rows.Add({.ContainerID = rows.Keep(id),
              .ParentContainerID = rows.Keep(id.substr(0, id.size() / 2)),
              .IndexInParent = row});
    expected[id] = row;
  }
  const ImContainerMap map(std::move(rows));
  ASSERT_EQ(map.Size(), expected.size());
  uint32_t position = 0;
  for (const auto& [id, row] : expected) {
    EXPECT_EQ(map.Containers()[position].IndexInParent, row);
    EXPECT_EQ(map.Find(id), &map.Containers()[position]);
    const ImContainer* const parent = map.Find(id.substr(0, id.size() / 2));
    EXPECT_EQ(map.Parent(position),
              parent == nullptr ? ImContainerMap::kNone : PositionOf(map, parent->ContainerID));
    const auto children = map.Children(position);
    EXPECT_TRUE(std::is_sorted(children.begin(), children.end(), [&map](uint32_t a, uint32_t b) {
      return map.Containers()[a].IndexInParent < map.Containers()[b].IndexInParent;
    }));
    ++position;
  }
}

TEST(ImContainerMap, KeptTextsStayWhenTheMapMoves) {
  ImContainerRows rows;
  std::wstring text = L"{1}";
  rows.Add({.ContainerID = rows.Keep(text), .Label = rows.KeepPath(L"\\\\Root", L"Inbox")});
  text = L"gone";
  ImContainerMap map(std::move(rows));
  const ImContainerMap moved = std::move(map);
  ASSERT_NE(moved.Find(L"{1}"), nullptr);
  EXPECT_EQ(moved.Find(L"{1}")->Label, L"\\\\Root\\Inbox");
}

}  // namespace
}  // namespace postmarker
