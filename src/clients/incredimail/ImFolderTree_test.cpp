#include "clients/incredimail/ImFolderTree.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

struct Folder {
  std::wstring id;
  std::wstring parent;
  uint32_t index = 0;
  std::wstring label;
};

constexpr std::wstring_view kRootLabel = L"\\\\Ann";
constexpr wchar_t kNoFolder[] = L"(none)";

ImContainerMap MapOf(const std::vector<Folder>& folders) {
  ImContainerRows rows;
  for (const Folder& folder : folders) {
    rows.Add({.ContainerID = rows.Keep(folder.id),
              .ParentContainerID = rows.Keep(folder.parent),
              .IndexInParent = folder.index,
              .Label = rows.Keep(folder.label)});
  }
  return ImContainerMap(std::move(rows));
}

ImContainerMap TreeOf(const std::vector<Folder>& folders) {
  ImContainerMap map = MapOf(folders);
  FillPaths(&map, kRootLabel);
  return map;
}

std::wstring PathOf(const ImContainerMap& map, std::wstring_view id) {
  const ImContainer* const container = map.Find(id);
  return container == nullptr ? kNoFolder : std::wstring(container->Path);
}

std::vector<std::wstring> ListedNames(const ImContainerMap& map) {
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  std::vector<std::wstring> names;
  for (const MailFolderRef& folder : folders) {
    names.push_back(folder.name);
  }
  return names;
}

using Names = std::vector<std::wstring>;

// A root and `depth` folders one in the other, all with this label.
ImContainerMap NestedTree(uint32_t depth, std::wstring_view label) {
  ImContainerRows rows;
  std::wstring_view parent;
  for (uint32_t level = 0; level <= depth; ++level) {
    const std::wstring_view id = rows.Keep(std::to_wstring(level));
    rows.Add({.ContainerID = id,
              .ParentContainerID = parent,
              .Label = level == 0 ? std::wstring_view() : label});
    parent = id;
  }
  return ImContainerMap(std::move(rows));
}

TEST(ImFolderTree, RootComesFirstWithTheRootLabelAsItsPath) {
  const ImContainerMap tree = TreeOf({{L"a", L"r", 0, L"Inbox"}, {L"r", L"", 0, L""}});
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann", L"\\\\Ann\\Inbox"}));
}

TEST(ImFolderTree, PathsFollowTheParents) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""},
                                      {L"a", L"b", 0, L"Deep"},
                                      {L"b", L"c", 0, L"Middle"},
                                      {L"c", L"r", 0, L"Top"}});
  EXPECT_EQ(PathOf(tree, L"a"), L"\\\\Ann\\Top\\Middle\\Deep");
}

TEST(ImFolderTree, FolderWithAnEmptyLabelThatIsNotTheRootHasTheRootLabelAsPath) {
  const ImContainerMap tree =
      TreeOf({{L"r", L"", 0, L""}, {L"a", L"r", 0, L"Top"}, {L"b", L"a", 0, L""}});
  EXPECT_EQ(PathOf(tree, L"b"), L"\\\\Ann");
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann", L"\\\\Ann\\Top", L"\\\\Ann"}));
}

TEST(ImFolderTree, ChildrenOfAFolderWithAnEmptyLabelHangOnTheRootLabel) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""},
                                      {L"a", L"r", 0, L"Top"},
                                      {L"b", L"a", 0, L""},
                                      {L"c", L"b", 0, L"Child"}});
  EXPECT_EQ(PathOf(tree, L"c"), L"\\\\Ann\\Child");
}

TEST(ImFolderTree, FolderWithAnUnknownParentHasNoPathAndIsInNoListing) {
  const ImContainerMap tree =
      TreeOf({{L"r", L"", 0, L""}, {L"a", L"gone", 0, L"Lost"}, {L"b", L"a", 0, L"Below"}});
  EXPECT_EQ(PathOf(tree, L"a"), L"");
  EXPECT_EQ(PathOf(tree, L"b"), L"");
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann"}));
}

TEST(ImFolderTree, FolderThatIsItsOwnAncestorEndsWithoutAPath) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""},
                                      {L"a", L"c", 0, L"A"},
                                      {L"b", L"a", 0, L"B"},
                                      {L"c", L"b", 0, L"C"},
                                      {L"d", L"a", 0, L"D"},
                                      {L"s", L"s", 0, L"Self"}});
  for (const wchar_t* const id : {L"a", L"b", L"c", L"d", L"s"}) {
    EXPECT_EQ(PathOf(tree, id), L"");
  }
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann"}));
}

TEST(ImFolderTree, EmptyLabelWithinACycleStillHasTheRootLabel) {
  const ImContainerMap tree = TreeOf({{L"a", L"b", 0, L""}, {L"b", L"a", 0, L"B"}});
  EXPECT_EQ(PathOf(tree, L"a"), L"\\\\Ann");
  EXPECT_EQ(PathOf(tree, L"b"), L"\\\\Ann\\B");
  EXPECT_TRUE(ListedNames(tree).empty());
}

TEST(ImFolderTree, RowWithoutAnIdIsNoFolderAndEndsNothing) {
  const ImContainerMap tree =
      TreeOf({{L"", L"", 0, L"Nameless"}, {L"r", L"", 1, L""}, {L"a", L"r", 0, L"Inbox"}});
  EXPECT_EQ(PathOf(tree, L""), L"\\\\Ann");
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann", L"\\\\Ann\\Inbox"}));
}

TEST(ImFolderTree, RowWithoutAnIdBelowItsOwnChildEndsNothing) {
  const ImContainerMap tree = TreeOf({{L"a", L"", 0, L"A"}, {L"", L"a", 0, L"Nameless"}});
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann\\A"}));
}

TEST(ImFolderTree, SeveralFoldersWithoutAParentAreAllListed) {
  const ImContainerMap tree =
      TreeOf({{L"r", L"", 0, L""}, {L"b", L"", 2, L"Second"}, {L"c", L"", 1, L"First"}});
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann", L"\\\\Ann\\First", L"\\\\Ann\\Second"}));
}

TEST(ImFolderTree, TwoChildrenWithEqualIndexBothAppearNextToEachOther) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""},
                                      {L"c", L"r", 3, L"Same 2"},
                                      {L"d", L"r", 4, L"Behind"},
                                      {L"b", L"r", 3, L"Same 1"},
                                      {L"a", L"r", 9, L"Last"},
                                      {L"e", L"r", 0, L"Before"}});
  EXPECT_EQ(ListedNames(tree), (Names{L"\\\\Ann", L"\\\\Ann\\Before", L"\\\\Ann\\Same 1",
                                      L"\\\\Ann\\Same 2", L"\\\\Ann\\Behind", L"\\\\Ann\\Last"}));
}

TEST(ImFolderTree, DisplayOrderIsThePreOrderOfTheTree) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""},
                                      {L"1", L"r", 1, L"1"},
                                      {L"0", L"r", 0, L"0"},
                                      {L"01", L"0", 1, L"01"},
                                      {L"00", L"0", 0, L"00"},
                                      {L"000", L"00", 0, L"000"},
                                      {L"10", L"1", 0, L"10"}});
  Names ids;
  for (const ImContainer* const container : OrderContainers(tree)) {
    ids.emplace_back(container->ContainerID);
  }
  EXPECT_EQ(ids, (Names{L"r", L"0", L"00", L"000", L"01", L"1", L"10"}));
}

TEST(ImFolderTree, FoldersAreAppendedWithPathIdsAndFlag) {
  const ImContainerMap tree = TreeOf({{L"r", L"", 0, L""}, {L"{a}", L"r", 0, L"Entw\u00FCrfe"}});
  MailFolderList folders = {{L"other", "1", "2", 0}};
  AppendFolders(tree, L"{identity}", &folders);
  ASSERT_EQ(folders.size(), 3U);
  EXPECT_EQ(folders[0], (MailFolderRef{L"other", "1", "2", 0}));
  EXPECT_EQ(folders[1], (MailFolderRef{L"\\\\Ann", "r", "{identity}", 1}));
  EXPECT_EQ(folders[2], (MailFolderRef{L"\\\\Ann\\Entw\u00FCrfe", "{a}", "{identity}", 1}));
}

TEST(ImFolderTree, LocalizedNamesGoToTheRootsChildrenByTheirIndex) {
  ImContainerMap map = MapOf({{L"r", L"", 0, L""},
                              {L"a", L"r", 1, L"Outbox"},
                              {L"b", L"r", 0, L"Inbox"},
                              {L"c", L"r", 2, L"Private"},
                              {L"d", L"b", 0, L"Bills"}});
  const std::vector<std::wstring> names = {L"Posteingang", L"Postausgang"};
  LocalizeLabels(&map, names);
  FillPaths(&map, kRootLabel);
  EXPECT_EQ(ListedNames(map),
            (Names{L"\\\\Ann", L"\\\\Ann\\Posteingang", L"\\\\Ann\\Posteingang\\Bills",
                   L"\\\\Ann\\Postausgang", L"\\\\Ann\\Private"}));
}

TEST(ImFolderTree, LocalizedNamesLeaveFoldersWithoutAParentInTheMapAlone) {
  ImContainerMap map = MapOf({{L"r", L"", 0, L"Kept"}, {L"a", L"gone", 0, L"Lost"}});
  const std::vector<std::wstring> names = {L"New"};
  LocalizeLabels(&map, names);
  EXPECT_EQ(map.Find(L"r")->Label, L"Kept");
  EXPECT_EQ(map.Find(L"a")->Label, L"Lost");
}

TEST(ImFolderTree, LocalizedNamesGoToTheChildrenOfALostFolderToo) {
  ImContainerMap map = MapOf({{L"a", L"gone", 0, L"Lost"}, {L"b", L"a", 0, L"Below"}});
  const std::vector<std::wstring> names = {L"New"};
  LocalizeLabels(&map, names);
  EXPECT_EQ(map.Find(L"b")->Label, L"New");
}

TEST(ImFolderTree, FindsTheRootsChildByItsIndex) {
  const ImContainerMap map = MapOf({{L"r", L"", 3, L""},
                                    {L"a", L"r", 0, L"Inbox"},
                                    {L"b", L"r", 3, L"Deleted"},
                                    {L"c", L"b", 1, L"Below"},
                                    {L"d", L"gone", 5, L"Lost"}});
  EXPECT_EQ(FindRootChild(map, 0), L"a");
  EXPECT_EQ(FindRootChild(map, 3), L"b");
  EXPECT_EQ(FindRootChild(map, 1), L"");
  EXPECT_EQ(FindRootChild(map, 5), L"");
  EXPECT_EQ(FindRootChild({}, 0), L"");
}

TEST(ImFolderTree, EmptyMapHasNoFolders) {
  ImContainerMap map;
  FillPaths(&map, kRootLabel);
  EXPECT_TRUE(ListedNames(map).empty());
}

TEST(ImFolderTree, ThreeHundredThousandNestedFoldersEndAtTheLimitOfAllPaths) {
  ImContainerMap map = NestedTree(300'000, L"x");
  FillPaths(&map, kRootLabel);
  EXPECT_EQ(OrderContainers(map).size(), 300'001U);
  EXPECT_EQ(PathOf(map, L"2"), L"\\\\Ann\\x\\x");
  EXPECT_EQ(PathOf(map, L"3000").size(), kRootLabel.size() + 6000);
  EXPECT_EQ(PathOf(map, L"300000"), L"");
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  ASSERT_GT(folders.size(), 3000U);
  size_t units = 0;
  for (const MailFolderRef& folder : folders) {
    EXPECT_FALSE(folder.name.empty());
    units += folder.name.size();
  }
  EXPECT_LE(units, 16U * 1024 * 1024 + 128U * 300'001 + kRootLabel.size());
}

TEST(ImFolderTree, ThreeHundredThousandNestedFoldersWithoutLabelsAreAllListed) {
  ImContainerMap map = NestedTree(300'000, L"");
  FillPaths(&map, kRootLabel);
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  ASSERT_EQ(folders.size(), 300'001U);
  EXPECT_EQ(folders.back().name, kRootLabel);
  EXPECT_EQ(folders.back().firstId, "300000");
}

TEST(ImFolderTree, ThreeHundredThousandFoldersInACircleEnd) {
  ImContainerRows rows;
  for (uint32_t i = 0; i < 300'000; ++i) {
    rows.Add({.ContainerID = rows.Keep(std::to_wstring(i)),
              .ParentContainerID = rows.Keep(std::to_wstring((i + 1) % 300'000)),
              .Label = L"x"});
  }
  ImContainerMap map(std::move(rows));
  FillPaths(&map, kRootLabel);
  EXPECT_TRUE(ListedNames(map).empty());
}

TEST(ImFolderTree, ThreeHundredThousandFoldersSideBySideAreAllListed) {
  ImContainerRows rows;
  rows.Add({.ContainerID = L"r"});
  for (uint32_t i = 0; i < 300'000; ++i) {
    rows.Add({.ContainerID = rows.Keep(std::to_wstring(i)),
              .ParentContainerID = L"r",
              .IndexInParent = 300'000 - i,
              .Label = L"x"});
  }
  ImContainerMap map(std::move(rows));
  FillPaths(&map, kRootLabel);
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  ASSERT_EQ(folders.size(), 300'001U);
  EXPECT_EQ(folders[1].firstId, "299999");
  EXPECT_EQ(folders.back().firstId, "0");
}

}  // namespace
}  // namespace postmarker
