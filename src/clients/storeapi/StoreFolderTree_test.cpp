#include "clients/storeapi/StoreFolderTree.h"

#include <gmock/gmock.h>

#include <cstring>

namespace postmarker::storeapi {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int32_t kPlain = -1;

StoreFolderProps Folder(uint32_t id, const std::string& name, int32_t type = kPlain) {
  StoreFolderProps props;
  props.dwFolderId = id;
  props.sfType = type;
  name.copy(props.szName, kFolderNameRoom);
  return props;
}

MailFolderList RecordsOf(const StoreFolderTree& tree) {
  MailFolderList folders;
  tree.AppendRecords(&folders);
  return folders;
}

std::vector<std::string> IdsOf(const StoreFolderTree& tree) {
  std::vector<std::string> ids;
  for (const MailFolderRef& folder : RecordsOf(tree)) {
    ids.push_back(folder.firstId);
  }
  return ids;
}

TEST(StoreFolderProps, LongFormBecomesTheShortOne) {
  StoreFolderPropsLong props;
  props.reserved = 0xAAAAAAAA;
  props.dwFolderId = 0x100000007;
  props.cSubFolders = 2;
  props.sfType = 3;
  props.cUnread = 4;
  props.cMessage = 5;
  std::memset(props.szName, 'n', kFolderNameRoom);
  const StoreFolderProps shortForm = ToShortForm(props);
  EXPECT_EQ(shortForm.cbSize, 280U);
  EXPECT_EQ(shortForm.dwFolderId, 7U);
  EXPECT_EQ(shortForm.cSubFolders, 2U);
  EXPECT_EQ(shortForm.sfType, 3);
  EXPECT_EQ(shortForm.cUnread, 4U);
  EXPECT_EQ(shortForm.cMessage, 5U);
  EXPECT_EQ(std::string(shortForm.szName, kFolderNameRoom), std::string(kFolderNameRoom, 'n'));
}

TEST(StoreFolderProps, SpecialFolderTypesBecomeKinds) {
  EXPECT_EQ(KindOf(-1), StoreFolderKind::kOther);
  EXPECT_EQ(KindOf(0), StoreFolderKind::kInbox);
  EXPECT_EQ(KindOf(1), StoreFolderKind::kOutbox);
  EXPECT_EQ(KindOf(2), StoreFolderKind::kSent);
  EXPECT_EQ(KindOf(3), StoreFolderKind::kDeleted);
  EXPECT_EQ(KindOf(4), StoreFolderKind::kDraft);
  for (const int32_t type : {5, 6, 100, -2, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(KindOf(type), StoreFolderKind::kOther) << type;
  }
}

TEST(StoreFolderIds, TextIsSignedAndComesBack) {
  EXPECT_EQ(FolderIdText(7), "7");
  EXPECT_EQ(FolderIdText(0xFFFFFFFB), "-5");
  for (const uint32_t id : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(ParseFolderId(FolderIdText(id)), id);
  }
}

TEST(StoreFolderIds, TextIsReadAsFarAsItIsANumber) {
  EXPECT_EQ(ParseFolderId(" 12abc"), 12U);
  EXPECT_EQ(ParseFolderId(""), 0U);
  EXPECT_EQ(ParseFolderId("abc"), 0U);
  EXPECT_EQ(ParseFolderId("4294967291"), 0xFFFFFFFBU);
  (void)ParseFolderId(std::string(1000, '9'));
}

TEST(StoreFolderTree, FolderBelowTheRootHasItsPathAndItsFile) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, "Local Folders"));
  const auto spam = tree.Add(root, Folder(9, "Spam"));
  const auto deep = tree.Add(spam, Folder(12, "Old", 3));
  EXPECT_EQ(tree.At(root).path, "Local Folders");
  EXPECT_EQ(tree.At(spam).path, "Local Folders\\Spam");
  EXPECT_EQ(tree.At(spam).fileName, "Spam.dbx");
  EXPECT_EQ(tree.At(deep).path, "Local Folders\\Spam\\Old");
  EXPECT_EQ(tree.At(deep).folderId, 12U);
  EXPECT_EQ(tree.At(deep).parentId, 9U);
  EXPECT_EQ(tree.At(deep).kind, StoreFolderKind::kDeleted);
}

TEST(StoreFolderTree, RootHasTheIdZeroAndAllFoldersTheRootsStoreId) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(17, "Local Folders"));
  tree.Add(root, Folder(20, "Inbox", 0));
  tree.Add(root, Folder(21,
                        "Gr\xFC\xDF"
                        "e"));
  EXPECT_THAT(RecordsOf(tree),
              ElementsAre(MailFolderRef{L"\\\\Local Folders", "0", "17", 1},
                          MailFolderRef{L"\\\\Local Folders\\Inbox", "20", "17", 1},
                          MailFolderRef{L"\\\\Local Folders\\Gr\xFC\xDF"
                                        L"e",
                                        "21", "17", 1}));
}

TEST(StoreFolderTree, RecordsStandInTheOrderOfIdsWithTheRootFirst) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(50, "R"));
  tree.Add(root, Folder(9, "b"));
  tree.Add(root, Folder(70, "c"));
  tree.Add(root, Folder(4, "a"));
  EXPECT_THAT(IdsOf(tree), ElementsAre("0", "4", "9", "70"));
}

TEST(StoreFolderTree, ParentIsListedBeforeAChildWithALowerId) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, "R"));
  const auto late = tree.Add(root, Folder(30, "late"));
  const auto later = tree.Add(late, Folder(40, "later"));
  tree.Add(later, Folder(5, "moved"));
  tree.Add(root, Folder(6, "six"));
  EXPECT_THAT(IdsOf(tree), ElementsAre("0", "30", "40", "5", "6"));
}

TEST(StoreFolderTree, TakenIdMovesTheKeyUpUntilItIsFree) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, "R"));
  EXPECT_EQ(tree.Add(root, Folder(5, "a")), 5U);
  EXPECT_EQ(tree.Add(root, Folder(6, "b")), 6U);
  EXPECT_EQ(tree.Add(root, Folder(5, "c")), 7U);
  EXPECT_EQ(tree.Add(root, Folder(0, "d")), 1U);
  EXPECT_EQ(tree.Add(root, Folder(0xFFFFFFFF, "e")), 0xFFFFFFFFU);
  EXPECT_EQ(tree.Add(root, Folder(0xFFFFFFFF, "f")), 0x100000000U);
  EXPECT_EQ(tree.At(7).folderId, 5U);
  EXPECT_THAT(IdsOf(tree), ElementsAre("0", "0", "5", "6", "5", "-1", "-1"));
}

// A search from the start for each would take minutes.
TEST(StoreFolderTree, IdRepeated200000TimesIsAddedInLinearTime) {
  constexpr uint32_t kCount = 200'000;
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, ""));
  for (uint32_t i = 0; i < kCount; ++i) {
    tree.Add(root, Folder(5, ""));
  }
  EXPECT_EQ(tree.Size(), kCount + 1);
  EXPECT_EQ(tree.Add(root, Folder(5, "")), uint64_t{5} + kCount);
}

TEST(StoreFolderTree, NameWithoutTerminatorEndsWithItsRoom) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, std::string(kFolderNameRoom + 9, 'n')));
  EXPECT_EQ(tree.At(root).path, std::string(kFolderNameRoom, 'n'));
}

TEST(StoreFolderTree, NamelessRootStillHasFoldersBelowIt) {
  StoreFolderTree tree;
  const auto root = tree.Add(std::nullopt, Folder(0, ""));
  tree.Add(root, Folder(4, "Inbox"));
  EXPECT_EQ(RecordsOf(tree).back().name, L"\\\\\\Inbox");
}

TEST(StoreFolderTree, NestingWithoutMeasureEndsAtTheLimitForAllPaths) {
  StoreFolderTree tree;
  StoreFolderTree::Key last = tree.Add(std::nullopt, Folder(0, std::string(200, 'r')));
  for (uint32_t id = 1; id < 20'000; ++id) {
    last = tree.Add(last, Folder(id, std::string(200, 'n')));
  }
  const MailFolderList folders = RecordsOf(tree);
  EXPECT_GT(folders.size(), 300U);
  size_t bytes = 0;
  for (const MailFolderRef& folder : folders) {
    bytes += folder.name.size();
  }
  EXPECT_LT(bytes, size_t{20} << 20);
}

TEST(StoreFolderTree, FolderOfAKindIsTheFirstInTheOrderOfIds) {
  StoreFolderTree tree;
  EXPECT_EQ(tree.FindRecord(StoreFolderKind::kDeleted), std::nullopt);
  const auto root = tree.Add(std::nullopt, Folder(2, "R"));
  tree.Add(root, Folder(9, "Trash two", 3));
  tree.Add(root, Folder(7, "Trash", 3));
  tree.Add(root, Folder(3, "Inbox", 0));
  EXPECT_EQ(tree.FindRecord(StoreFolderKind::kDeleted),
            (MailFolderRef{L"\\\\R\\Trash", "7", "2", 1}));
  EXPECT_EQ(tree.FindRecord(StoreFolderKind::kDraft), std::nullopt);
}

TEST(StoreFolderTree, EmptyTreeHasNoRecords) {
  EXPECT_TRUE(StoreFolderTree().IsEmpty());
  EXPECT_THAT(RecordsOf(StoreFolderTree()), IsEmpty());
}

TEST(StoreFolderTree, FailureTextTellsCodeAndTheSizeConstant) {
  EXPECT_EQ(SubFolderFailureText(kFail),
            "getfirstsubfolder failed hr=-2147467259 hrstructsize=-2146644121");
}

}  // namespace
}  // namespace postmarker::storeapi
