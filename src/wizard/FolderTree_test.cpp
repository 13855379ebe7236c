#include "wizard/FolderTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace postmarker {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The items as lines: two blanks a level, the text, "*" for bold, and the first id of the data.
std::vector<std::string> Lines(const FolderTreeLayout& layout) {
  std::vector<std::string> lines;
  const auto walk = [&](auto&& self, TreeItem parent, size_t depth) -> void {
    for (size_t i = 0; i < layout.Items().size(); ++i) {
      const auto& item = layout.Items()[i];
      if (item.parent != parent) {
        continue;
      }
      std::string line(depth * 2, ' ');
      line.append(item.text.begin(), item.text.end());
      line.append(item.bold ? "*" : "").append("=");
      line.append(item.record != nullptr ? item.record->firstId : "none");
      lines.push_back(line);
      self(self, i + FolderTreeLayout::kRoot + 1, depth + 1);
    }
  };
  walk(walk, FolderTreeLayout::kRoot, 0);
  return lines;
}

std::vector<std::string> LayOut(const MailFolderList& list) {
  SeenStores seen;
  FolderTreeLayout layout(list, &seen);
  layout.FillAll();
  return Lines(layout);
}

TEST(FolderTree, StoreNameIsTheFirstLevelOfThePath) {
  EXPECT_EQ(StoreNameOf(L"\\\\Store\\Inbox\\Sub"), L"Store");
  EXPECT_EQ(StoreNameOf(L"Plain"), L"Plain");
  EXPECT_EQ(StoreNameOf(L"\\\\Store"), L"Store");
  EXPECT_EQ(StoreNameOf(L"Local\\Trash"), L"Local");
  EXPECT_EQ(StoreNameOf(L"\\\\\\Odd"), L"");
}

TEST(FolderTree, RootIsBoldAndLevelsFollowThePaths) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "s", 1},
                      {L"\\\\Mail\\Inbox", "i", "s", 1},
                      {L"\\\\Mail\\Inbox\\Sub", "u", "s", 1},
                      {L"\\\\Mail\\Sent", "t", "s", 1}}),
              ElementsAre("Mail*=r", "  Inbox=i", "    Sub=u", "  Sent=t"));
}

TEST(FolderTree, WhatWasPassedIsExpanded) {
  const MailFolderList list = {{L"\\\\Mail", "r", "s", 1}, {L"\\\\Mail\\Inbox", "i", "s", 1}};
  SeenStores seen;
  FolderTreeLayout layout(list, &seen);
  layout.FillAll();
  EXPECT_TRUE(layout.Items()[0].expanded);
  EXPECT_TRUE(layout.Items()[1].expanded);
}

TEST(FolderTree, TwoFoldersOfOneNameUnderOneParentAreOneItemWithTheFirstOnesData) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "s", 1},
                      {L"\\\\Mail\\Twin", "first", "s", 1},
                      {L"\\\\Mail\\Twin", "second", "s", 1}}),
              ElementsAre("Mail*=r", "  Twin=first"));
}

TEST(FolderTree, FolderListedBeforeItsParentBuildsTheMissingLevelsWithItsOwnData) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "s", 1},
                      {L"\\\\Mail\\Inbox\\Sub", "child", "s", 1},
                      {L"\\\\Mail\\Inbox", "parent", "s", 1}}),
              ElementsAre("Mail*=r", "  Inbox=child", "    Sub=child"));
}

TEST(FolderTree, StoreWithoutARootRecordStaysEmpty) {
  EXPECT_THAT(LayOut({{L"\\\\Mail\\Inbox", "i", "s", 1}, {L"\\\\Mail\\Inbox\\Sub", "u", "s", 1}}),
              IsEmpty());
}

TEST(FolderTree, FolderWithoutItsParentInTheListIsLeftOut) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "s", 1}, {L"\\\\Mail\\Gone\\Sub", "u", "s", 1}}),
              ElementsAre("Mail*=r"));
}

TEST(FolderTree, ParentIsFoundWithoutRegardToCaseAndWithinItsStoreAlone) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "S", 1},
                      {L"\\\\Mail\\INBOX", "i", "s", 1},
                      {L"\\\\Mail\\Inbox\\Sub", "u", "S", 1},
                      {L"\\\\Mail\\Other", "o", "another", 1},
                      {L"\\\\Mail\\Other\\Lost", "l", "s", 1}}),
              ElementsAre("Mail*=r", "  INBOX=i", "  Inbox=u", "    Sub=u"));
}

TEST(FolderTree, FlaggedStoresComeFirst) {
  EXPECT_THAT(LayOut({{L"\\\\Plain", "p", "1", 0}, {L"\\\\Flagged", "f", "2", 1}}),
              ElementsAre("Flagged*=f", "Plain*=p"));
}

TEST(FolderTree, StoreIsLaidOutOnce) {
  const MailFolderList list = {{L"\\\\Mail", "r", "S", 1}, {L"\\\\Mail\\Inbox", "i", "s", 1}};
  SeenStores seen;
  FolderTreeLayout layout(list, &seen);
  TreeItem item = 0;
  EXPECT_EQ(layout.FillFolderTree(list[0], &item), kOk);
  EXPECT_NE(item, 0U);
  TreeItem untouched = 99;
  EXPECT_EQ(layout.FillFolderTree(list[1], &untouched), kOk);
  EXPECT_EQ(untouched, 99U);
  EXPECT_EQ(layout.Items().size(), 2U);
}

TEST(FolderTree, StoreNameGoesWhereverItStandsInThePath) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r", "s", 1}, {L"\\\\Mail\\Mail archive", "a", "s", 1}}),
              ElementsAre("Mail*=r", "   archive=a"));
}

TEST(FolderTree, SecondRootOfAStoreWithAnotherIdIsAnotherItem) {
  EXPECT_THAT(LayOut({{L"\\\\Mail", "r1", "s", 1}, {L"\\\\MAIL", "r2", "s", 1}}),
              ElementsAre("Mail*=r1", "Mail*=r2"));
}

TEST(FolderTree, StoreThatTheTreeHasSeenIsNotLaidOutAgain) {
  const MailFolderList first = {{L"\\\\Mail", "r", "s", 1}};
  const MailFolderList second = {
      {L"\\\\Mail", "r", "S", 1}, {L"\\\\Mail\\New", "n", "s", 1}, {L"\\\\Other", "o", "t", 1}};
  SeenStores seen;
  FolderTreeLayout before(first, &seen);
  before.FillAll();
  ASSERT_EQ(before.Items().size(), 1U);
  FolderTreeLayout after(second, &seen);
  TreeItem item = 77;
  EXPECT_EQ(after.FillFolderTree(second[0], &item), kOk);
  EXPECT_EQ(item, 77U);
  after.FillAll();
  ASSERT_EQ(after.Items().size(), 1U);
  EXPECT_EQ(after.Items()[0].text, L"Other");
}

TEST(FolderTree, PathWithoutStoreRootUnderNoItemGivesNothing) {
  SeenStores seen;
  FolderTreeLayout layout({}, &seen);
  const MailFolderRef record = {L"x", "1", "s", 1};
  EXPECT_EQ(InsertPath(&layout, L"a\\b", 0, &record, nullptr), 0U);
  EXPECT_EQ(InsertPath(&layout, L"", FolderTreeLayout::kRoot, &record, nullptr), 0U);
  EXPECT_EQ(InsertPath(nullptr, L"a", FolderTreeLayout::kRoot, &record, nullptr), 0U);
}

TEST(FolderTree, NameWithABackslashBecomesSeveralLevels) {
  const MailFolderList none;
  SeenStores seen;
  FolderTreeLayout layout(none, &seen);
  const MailFolderRef record = {L"x", "1", "s", 1};
  const TreeItem deepest =
      InsertPath(&layout, L"a\\b\\", FolderTreeLayout::kRoot, &record, nullptr);
  EXPECT_EQ(layout.At(deepest).text, L"b");
  EXPECT_THAT(Lines(layout), ElementsAre("a=1", "  b=1"));
}

TEST(FolderTree, MatchNarrowsTheFirstLevelAlone) {
  const MailFolderList none;
  SeenStores seen;
  FolderTreeLayout layout(none, &seen);
  const MailFolderRef one = {L"x", "1", "s", 1};
  const MailFolderRef two = {L"x", "2", "s", 1};
  InsertPath(&layout, L"a\\b", FolderTreeLayout::kRoot, &one, &one);
  InsertPath(&layout, L"a\\b", FolderTreeLayout::kRoot, &two, &two);
  InsertPath(&layout, L"a\\b", FolderTreeLayout::kRoot, &two, &one);
  EXPECT_THAT(Lines(layout), ElementsAre("a=1", "  b=1", "a=2", "  b=2"));
}

TEST(FolderTree, PathOfAHundredThousandLevelsNeedsNoDeepStack) {
  const MailFolderList none;
  SeenStores seen;
  FolderTreeLayout layout(none, &seen);
  std::wstring path;
  for (int i = 0; i < 100000; ++i) {
    path.append(L"a\\");
  }
  const MailFolderRef record = {L"x", "1", "s", 1};
  EXPECT_NE(InsertPath(&layout, path, FolderTreeLayout::kRoot, &record, nullptr), 0U);
  EXPECT_EQ(layout.Items().size(), 100000U);
}

}  // namespace
}  // namespace postmarker
