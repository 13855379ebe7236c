#include "clients/livemail/LiveFolders.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Text.h"

namespace postmarker::livemail {
namespace {

using Ids = std::vector<uint32_t>;

JetValue Text(const wchar_t* text) {
  return JetValue(std::wstring(text));
}

// A row that is kept, with these changes.
JetRow Row(const JetRow& changes = {}) {
  JetRow row = changes;
  row.insert({{L"FLDCOL_ID", JetValue(int64_t{7})},
              {L"FLDCOL_NAMEW", Text(L"News")},
              {L"FLDCOL_PARENT", JetValue(int64_t{3})},
              {L"FLDCOL_PATH", Text(L"News\\")},
              {L"FLDCOL_TYPE", JetValue(2)},
              {L"FLDCOL_SPECIAL", JetValue(0)}});
  return row;
}

std::optional<WlmFolder> Folder(const JetRow& changes = {}) {
  return FolderOfRow(Row(changes), L"root\\");
}

JetRow Without(const wchar_t* column) {
  return {{column, JetValue()}};
}

uint32_t SpecialOfRow(const wchar_t* name, int32_t special) {
  const auto folder =
      Folder({{L"FLDCOL_NAMEW", Text(name)}, {L"FLDCOL_SPECIAL", JetValue(special)}});
  return folder ? folder->Special : 0;
}

// A folder at the top has no parent.
void Add(WlmFolders* folders, uint32_t id, uint32_t parent, const std::wstring& name,
         uint32_t special = 0) {
  WlmFolder& folder = (*folders)[id];
  folder.Id = id;
  folder.ParentId = parent;
  folder.Name = name;
  folder.Special = special == 0 ? id : special;
}

std::wstring PathOf(const WlmFolders& folders, uint32_t id) {
  return folders.at(id).DisplayPath;
}

TEST(LiveFolderRow, BecomesAFolder) {
  const auto folder = Folder();
  ASSERT_TRUE(folder);
  EXPECT_EQ(folder->Id, 7U);
  EXPECT_EQ(folder->ParentId, 3U);
  EXPECT_EQ(folder->Special, 7U) << "none of its own: the id";
  EXPECT_EQ(folder->Name, L"News");
  EXPECT_EQ(folder->StoreFile, L"root\\News\\");
  EXPECT_EQ(folder->IsFolder, 1);
  EXPECT_EQ(folder->DisplayPath + folder->RootIdText, L"");
}

TEST(LiveFolderRow, OnlyTwoTypesAreKept) {
  for (const int32_t type : {0, 1, 4, 255, -1}) {
    EXPECT_FALSE(Folder({{L"FLDCOL_TYPE", JetValue(type)}})) << type;
  }
  EXPECT_TRUE(Folder({{L"FLDCOL_TYPE", JetValue(3)}}));
  EXPECT_TRUE(Folder({{L"FLDCOL_TYPE", JetValue(int64_t{2})}}));
  EXPECT_FALSE(Folder(Without(L"FLDCOL_TYPE"))) << "a missing type is none of the two";
}

TEST(LiveFolderRow, SpecialTenIsDroppedWhateverTheName) {
  for (const wchar_t* const name : {L"News", L"Inbox", L"Sent Items"}) {
    EXPECT_FALSE(Folder({{L"FLDCOL_NAMEW", Text(name)}, {L"FLDCOL_SPECIAL", JetValue(10)}}));
  }
}

TEST(LiveFolderRow, NameAndPathMustBeTexts) {
  for (const wchar_t* const column : {L"FLDCOL_NAMEW", L"FLDCOL_PATH"}) {
    EXPECT_FALSE(Folder(Without(column)));
    EXPECT_FALSE(Folder({{column, JetValue(5)}}));
    EXPECT_TRUE(Folder({{column, Text(L"")}})) << "an empty text is one";
  }
}

TEST(LiveFolderRow, MissingNumbersCountAsZero) {
  EXPECT_EQ(Folder(Without(L"FLDCOL_ID"))->Id, 0U);
  EXPECT_EQ(Folder(Without(L"FLDCOL_SPECIAL"))->Special, 7U);
  EXPECT_EQ(Folder(Without(L"FLDCOL_PARENT"))->ParentId, kNoFolder);
  EXPECT_EQ(Folder({{L"FLDCOL_PARENT", JetValue(int64_t{0})}})->ParentId, kNoFolder)
      << "a parent of 0 is none";
}

TEST(LiveFolderRow, NumbersKeepTheirLow32Bits) {
  EXPECT_EQ(Folder({{L"FLDCOL_ID", JetValue(int64_t{0x500000009})}})->Id, 9U);
  EXPECT_EQ(Folder({{L"FLDCOL_ID", JetValue(int64_t{-1})}})->Id, 0xFFFFFFFF);
  EXPECT_EQ(Folder({{L"FLDCOL_PARENT", JetValue(4)}})->ParentId, 4U) << "of either width";
}

TEST(LiveFolderRow, NameOverridesTheStoredSpecial) {
  EXPECT_EQ(SpecialOfRow(L"inbox", 0), 1U);
  EXPECT_EQ(SpecialOfRow(L"OUTBOX", 9), 2U);
  EXPECT_EQ(SpecialOfRow(L"Sent Items", 6), 3U);
  EXPECT_EQ(SpecialOfRow(L"DRAFTS", 99), 5U);
  EXPECT_EQ(SpecialOfRow(L"Deleted items", 0), 4U);
  EXPECT_EQ(SpecialOfRow(L"Sent Items ", 6), 6U);
  EXPECT_EQ(SpecialOfRow(L"Junk E-mail", 6), 6U);
  EXPECT_EQ(SpecialOfRow(L"", 0), 7U);
}

TEST(LiveFolderTree, PathsBeginWithTwoBackslashes) {
  WlmFolders folders;
  Add(&folders, 1, kNoFolder, L"Account");
  Add(&folders, 2, 1, L"Inbox");
  Add(&folders, 3, 2, L"Deep");
  FillDisplayPaths(&folders);
  EXPECT_EQ(PathOf(folders, 1), L"\\\\Account");
  EXPECT_EQ(PathOf(folders, 2), L"\\\\Account\\Inbox");
  EXPECT_EQ(PathOf(folders, 3), L"\\\\Account\\Inbox\\Deep");
}

TEST(LiveFolderTree, FolderWithoutANameHasTheRootLabelAsItsPath) {
  WlmFolders folders;
  Add(&folders, 1, kNoFolder, L"Account");
  Add(&folders, 2, 1, L"");
  Add(&folders, 3, 2, L"Below");
  FillDisplayPaths(&folders);
  EXPECT_EQ(PathOf(folders, 2), L"\\");
  EXPECT_EQ(PathOf(folders, 3), L"\\\\Below");
}

TEST(LiveFolderTree, PathOfAMissingParentIsEmpty) {
  WlmFolders folders;
  Add(&folders, 14, 99, L"Orphan");
  Add(&folders, 15, 14, L"Child");
  FillDisplayPaths(&folders);
  FillRootIds(&folders);
  EXPECT_EQ(PathOf(folders, 14), L"\\Orphan");
  EXPECT_EQ(PathOf(folders, 15), L"\\Orphan\\Child");
  EXPECT_EQ(folders[15].RootIdText, L"");
  EXPECT_EQ(OrderFolders(folders), Ids());
}

TEST(LiveFolderTree, CyclesEndAndHaveNoPathAndNoRoot) {
  WlmFolders folders;
  Add(&folders, 1, 2, L"One");
  Add(&folders, 2, 1, L"Two");
  Add(&folders, 3, 3, L"Own parent");
  Add(&folders, 4, 1, L"Below the cycle");
  FillDisplayPaths(&folders);
  FillRootIds(&folders);
  for (const auto& [id, folder] : folders) {
    EXPECT_EQ(folder.DisplayPath + folder.RootIdText, L"") << id;
  }
  MailFolderList list;
  AppendFolders(folders, &list);
  EXPECT_TRUE(list.empty());
}

TEST(LiveFolderTree, FolderWithTheIdOfNoneIsLeftOutAndEnds) {
  WlmFolders folders;
  Add(&folders, kNoFolder, kNoFolder, L"None", 1);
  Add(&folders, 5, kNoFolder, L"Top", 2);
  FillDisplayPaths(&folders);
  FillRootIds(&folders);
  EXPECT_EQ(PathOf(folders, kNoFolder), L"\\");
  EXPECT_EQ(PathOf(folders, 5), L"\\\\Top");
  EXPECT_EQ(OrderFolders(folders), Ids{5});
}

TEST(LiveFolderTree, RootIsTheTopmostFolder) {
  WlmFolders folders;
  Add(&folders, 4000000000, kNoFolder, L"Account");
  Add(&folders, 2, 4000000000, L"Inbox");
  Add(&folders, 3, 2, L"Deep");
  FillRootIds(&folders);
  for (const auto& [id, folder] : folders) {
    EXPECT_EQ(folder.RootIdText, L"4000000000") << id;
  }
}

TEST(LiveFolderTree, SiblingsAreOrderedBySpecialAndThenById) {
  WlmFolders folders;
  Add(&folders, 1, kNoFolder, L"Account");
  Add(&folders, 8, 1, L"Eight");
  Add(&folders, 9, 1, L"Same as seven", 7);
  Add(&folders, 7, 1, L"Seven");
  Add(&folders, 20, 1, L"Sent", 3);
  Add(&folders, 21, 20, L"Below the sent");
  Add(&folders, 2, kNoFolder, L"Storage", 1);
  EXPECT_EQ(OrderFolders(folders), (Ids{1, 20, 21, 7, 9, 8, 2}));
}

TEST(LiveFolderTree, ListHasPathIdRootAndFlag) {
  WlmFolders folders;
  Add(&folders, 1, kNoFolder, L"Account");
  Add(&folders, 2, 1, L"Gr\u00FC\u00DFe");
  FillDisplayPaths(&folders);
  FillRootIds(&folders);
  MailFolderList list = {{L"before", "b", "b", 0}};
  AppendFolders(folders, &list);
  EXPECT_EQ(list, (MailFolderList{{L"before", "b", "b", 0},
                                  {L"\\\\Account", "1", "1", 1},
                                  {L"\\\\Account\\Gr\u00FC\u00DFe", "2", "1", 1}}));
}

// Each folder's path is longer by its own name, so that all of them together would take gigabytes.
TEST(LiveFolderTree, DeepTreeTakesALimitedAmountOfMemory) {
  constexpr uint32_t kDepth = 20'000;
  const std::wstring name(100, L'x');
  WlmFolders folders;
  for (uint32_t id = 1; id <= kDepth; ++id) {
    Add(&folders, id, id == 1 ? kNoFolder : id - 1, name);
  }
  FillDisplayPaths(&folders);
  FillRootIds(&folders);
  size_t units = 0;
  for (const auto& [id, folder] : folders) {
    units += folder.DisplayPath.size();
  }
  EXPECT_LT(units, size_t{20} << 20U);
  EXPECT_EQ(folders[kDepth].RootIdText, L"1");
  MailFolderList list;
  AppendFolders(folders, &list);
  EXPECT_GT(list.size(), 100U);
  EXPECT_LT(list.size(), size_t{kDepth}) << "folders without a path are not listed";
}

class LiveSpecialFolder : public testing::Test {
 protected:
  LiveSpecialFolder() {
    Add(&m_folders, 1, kNoFolder, L"First", SpecialDeleted);
    Add(&m_folders, 2, kNoFolder, L"Second");
    Add(&m_folders, 3, 2, L"Deleted Items", SpecialDeleted);
    Add(&m_folders, 4, 1, L"Deleted Items", SpecialDeleted);
    Add(&m_folders, 5, 1, L"Also deleted", SpecialDeleted);
    Add(&m_folders, 6, 5, L"Inbox", SpecialInbox);
    Add(&m_folders, 7, 99, L"Outbox", 2);
    FillRootIds(&m_folders);
  }

  WlmFolders m_folders;
};

TEST_F(LiveSpecialFolder, IsTheFirstChildOfATopFolder) {
  EXPECT_EQ(FindFolderBySpecial(m_folders, SpecialDeleted, ""), 3U);
  EXPECT_EQ(FindFolderBySpecial(m_folders, SpecialInbox, ""), std::nullopt) << "too deep";
  EXPECT_EQ(FindFolderBySpecial(m_folders, 2, ""), std::nullopt) << "below nothing";
}

TEST_F(LiveSpecialFolder, IsLookedForWithinTheFilter) {
  EXPECT_EQ(FindFolderBySpecial(m_folders, SpecialDeleted, "1"), 4U);
  EXPECT_EQ(FindFolderBySpecial(m_folders, SpecialDeleted, "2"), 3U);
  EXPECT_EQ(FindFolderBySpecial(m_folders, SpecialDeleted, "3"), std::nullopt);
}

}  // namespace
}  // namespace postmarker::livemail
