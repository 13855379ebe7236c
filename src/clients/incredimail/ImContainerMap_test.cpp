#include "clients/incredimail/ImContainerMap.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

ImContainerMap MapOf(const std::vector<ImContainer>& containers) {
  ImContainerRows rows;
  for (const ImContainer& container : containers) {
    rows.Add(container);
  }
  return ImContainerMap(std::move(rows));
}

std::vector<std::wstring> Ids(const ImContainerMap& map) {
  std::vector<std::wstring> ids;
  for (const ImContainer& container : map.Containers()) {
    ids.emplace_back(container.ContainerID);
  }
  return ids;
}

TEST(ImContainerMap, EmptyMap) {
  const ImContainerMap map;
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.Find(L""), nullptr);
  EXPECT_TRUE(map.Children(L"").empty());
}

TEST(ImContainerMap, IsInOrdinalOrderOfTheIds) {
  const ImContainerMap map = MapOf({{.ContainerID = L"b"},
                                    {.ContainerID = L"\u00E9"},
                                    {.ContainerID = L"B"},
                                    {.ContainerID = L"{"},
                                    {.ContainerID = L""}});
  EXPECT_EQ(Ids(map), (std::vector<std::wstring>{L"", L"B", L"b", L"{", L"\u00E9"}));
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

TEST(ImContainerMap, ChildrenAreSortedByIndexThenInTheMapsOrder) {
  const ImContainerMap map =
      MapOf({{.ContainerID = L"d", .ParentContainerID = L"p", .IndexInParent = 1},
             {.ContainerID = L"c", .ParentContainerID = L"p", .IndexInParent = 7},
             {.ContainerID = L"b", .ParentContainerID = L"p", .IndexInParent = 1},
             {.ContainerID = L"a", .ParentContainerID = L"p", .IndexInParent = 0xFFFFFFFF},
             {.ContainerID = L"e", .ParentContainerID = L"other"}});
  std::vector<std::wstring> ids;
  for (const uint32_t position : map.Children(L"p")) {
    ids.emplace_back(map.Containers()[position].ContainerID);
  }
  EXPECT_EQ(ids, (std::vector<std::wstring>{L"b", L"d", L"c", L"a"}));
  EXPECT_EQ(map.Children(L"other").size(), 1U);
  EXPECT_TRUE(map.Children(L"a").empty());
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
