#include "clients/incredimail/ImFolderFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "clients/incredimail/ImFieldReader.h"
#include "clients/incredimail/ImFolderTree.h"
#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/ImPlainReaders.h"
#include "support/Prefixes.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::ImBytes;
using test::ImEntry;
using test::ImGuid;
using Names = std::vector<std::wstring>;

constexpr std::wstring_view kRoot = L"\\\\Ann";

// "label parent index file" of each folder but the root, in the order of the ids.
Names Lines(const ImContainerMap& map) {
  Names lines;
  for (const ImContainer& each : map.Containers()) {
    if (!each.ParentContainerID.empty()) {
      const ImContainer* const parent = map.Find(each.ParentContainerID);
      const std::wstring above = parent == nullptr       ? L"?"
                                 : parent->Label.empty() ? L"root"
                                                         : std::wstring(parent->Label);
      lines.push_back(std::wstring(each.Label) + L" in " + above + L" " +
                      std::to_wstring(each.IndexInParent) + L" " + std::wstring(each.FileName));
    }
  }
  return lines;
}

Names LinesOf(std::string_view bytes) {
  return Lines(ParseFolderFile(bytes, kRoot));
}

std::vector<ImEntry> SmallTree() {
  return {{ImGuid(1),
           L"Inbox",
           L"In",
           {{ImGuid(2), L"Bills", L"B1", {{ImGuid(3), L"Old", L"B2"}}},
            {ImGuid(4), L"Friends", L"B3"}}},
          {ImGuid(5), L"Sent", L"Sent Items"}};
}

TEST(ImFolderFile, ReadsTheTree) {
  EXPECT_EQ(LinesOf(test::MakeImFolderFile(SmallTree())),
            (Names{L"Inbox in root 0 In", L"Bills in Inbox 0 Bills", L"Old in Bills 0 Old",
                   L"Friends in Inbox 1 Friends", L"Sent in root 1 Sent Items"}));
}

TEST(ImFolderFile, RootHasTheRootLabelAsItsIdAndNothingElse) {
  const ImContainerMap map = ParseFolderFile(test::MakeImFolderFile(SmallTree()), kRoot);
  const ImContainer* const root = map.Find(kRoot);
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->ParentContainerID, L"");
  EXPECT_EQ(root->Label, L"");
  EXPECT_EQ(root->FileName, L"");
  EXPECT_EQ(root->IndexInParent, 0U);
  EXPECT_EQ(root->MsgsCount, 0U);
  EXPECT_EQ(map.Find(ImGuid(1))->ParentContainerID, kRoot);
  EXPECT_EQ(map.Find(ImGuid(1))->Path, L"");
}

TEST(ImFolderFile, WithoutARootLabelTheRootHasTheZeroId) {
  const ImContainerMap map = ParseFolderFile("", L"");
  ASSERT_EQ(map.Size(), 1U);
  EXPECT_NE(map.Find(L"{00000000-0000-0000-0000-000000000000}"), nullptr);
}

TEST(ImFolderFile, TreeIsListedBelowTheRoot) {
  ImContainerMap map = ParseFolderFile(test::MakeImFolderFile(SmallTree()), kRoot);
  FillPaths(&map, kRoot);
  MailFolderList folders;
  AppendFolders(map, L"{identity}", &folders);
  ASSERT_EQ(folders.size(), 6U);
  EXPECT_EQ(folders[0], (MailFolderRef{L"\\\\Ann", "\\\\Ann", "{identity}", 1}));
  EXPECT_EQ(folders[3].name, L"\\\\Ann\\Inbox\\Bills\\Old");
}

TEST(ImFolderFile, FileOf58BytesOrLessGivesOnlyTheRoot) {
  for (size_t size = 0; size <= 58; ++size) {
    EXPECT_EQ(ParseFolderFile(std::string(size, 'x'), kRoot).Size(), 1U);
  }
}

TEST(ImFolderFile, TopLevelEntryWithAnEmptyFileNameEndsTheRead) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 0);
  test::PutImEntry(&out, ImGuid(2), L"B", L"", 0);
  test::PutImEntry(&out, ImGuid(3), L"C", L"c", 0);
  EXPECT_EQ(LinesOf(test::ImFolderFileOf(out)), (Names{L"A in root 0 a"}));
}

TEST(ImFolderFile, EntryWithAnEmptyLabelEndsTheReadAtTheTopAndTheChildrenBelow) {
  EXPECT_EQ(LinesOf(test::MakeImFolderFile({{ImGuid(1), L"", L"a"}, {ImGuid(2), L"B", L"b"}})),
            Names{});
  // The child fails after its label, which is empty. What follows is read as a top-level entry.
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 2);
  out.Guid(ImGuid(2)).Text(L"");
  test::PutImEntry(&out, ImGuid(3), L"C", L"c", 0);
  EXPECT_EQ(LinesOf(test::ImFolderFileOf(out)), (Names{L"A in root 0 a", L"C in root 1 c"}));
}

TEST(ImFolderFile, FailedChildEndsTheChildrenOfAllEntriesAroundIt) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 3);
  test::PutImEntry(&out, ImGuid(2), L"AB", L"ab", 3);
  out.Guid(ImGuid(3)).Text(L"");
  test::PutImEntry(&out, ImGuid(4), L"D", L"d", 1);
  test::PutImEntry(&out, ImGuid(5), L"DE", L"de", 0);
  EXPECT_EQ(LinesOf(test::ImFolderFileOf(out)),
            (Names{L"A in root 0 a", L"AB in A 0 AB", L"D in root 1 d", L"DE in D 0 DE"}));
}

TEST(ImFolderFile, EntryWithAnIdThatIsThereAlreadyReplacesIt) {
  EXPECT_EQ(LinesOf(test::MakeImFolderFile(
                {{ImGuid(1), L"A", L"a", {{ImGuid(2), L"B", L"b"}}}, {ImGuid(2), L"C", L"c"}})),
            (Names{L"A in root 0 a", L"C in root 1 c"}));
}

TEST(ImFolderFile, EntryMustEndInTheFileOrFourBytesAhead) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 0);
  const std::string bytes = out.Bytes() + "x";
  const auto count = [&bytes](size_t missing) {
    return LinesOf(std::string_view(bytes).substr(0, bytes.size() - missing)).size();
  };
  EXPECT_EQ(count(0), 1U);  // a byte after the entry
  EXPECT_EQ(count(1), 0U);  // exactly its end
  EXPECT_EQ(count(2), 0U);
  EXPECT_EQ(count(4), 0U);
  EXPECT_EQ(count(5), 1U);  // where the client ends the file
  EXPECT_EQ(count(6), 0U);
}

TEST(ImFolderFile, ChildMustEndInTheFileOrFourBytesAhead) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 1);
  test::PutImEntry(&out, ImGuid(2), L"B", L"b", 0);
  const std::string bytes = out.Bytes() + "x";
  for (size_t missing = 0; missing < 8; ++missing) {
    const bool isWhole = missing == 0 || missing == 5;
    EXPECT_EQ(LinesOf(std::string_view(bytes).substr(0, bytes.size() - missing)).size(),
              isWhole ? 2U : 1U)
        << missing;
  }
}

TEST(ImFolderFile, NumberOfChildrenIsASignedByte) {
  for (const int count : {0x80, 0xFF}) {
    ImBytes out = test::ImFolderFileHead();
    test::PutImEntry(&out, ImGuid(1), L"A", L"a", count);
    test::PutImEntry(&out, ImGuid(2), L"B", L"b", 0);
    EXPECT_EQ(LinesOf(test::ImFolderFileOf(out)), (Names{L"A in root 0 a", L"B in root 1 b"}));
  }
}

TEST(ImFolderFile, NameLengthIsAWholeNumberAtTheTopAndOneByteBelow) {
  const std::wstring longName(300, L'n');  // 0x012C
  EXPECT_EQ(LinesOf(test::MakeImFolderFile({{ImGuid(1), L"A", longName}, {ImGuid(2), L"B", L"b"}})),
            (Names{L"A in root 0 " + longName, L"B in root 1 b"}));
  // Below, 0x0102 is read as 1: the next child is looked for one unit after the name's start.
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 1);
  out.Guid(ImGuid(2)).Text(L"B").Dword(0x0102).Unread(2 + 8).Byte(1).Unread(11);
  test::PutImEntry(&out, ImGuid(3), L"C", L"c", 0);
  EXPECT_EQ(LinesOf(test::ImFolderFileOf(out)),
            (Names{L"A in root 0 a", L"B in A 0 B", L"C in B 0 C"}));
}

TEST(ImFolderFile, NameLengthOf128OrMoreLeadsBack) {
  // The child's number of children is looked for 8 - 256 bytes after its length: in the unread
  // bytes of the entry ahead, where it is 0. The next child is read 12 bytes after that.
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 2);
  const size_t base = out.Bytes().size();
  const size_t length = base + 400;  // where the first child's name length ends
  std::string child = ImBytes().Guid(ImGuid(2)).Dword(188).Bytes();
  child.resize(400 - 4, 'l');
  const size_t count = length + 8 - 256;
  child[count - base] = 0;
  const std::string next =
      ImBytes().Guid(ImGuid(3)).Text(L"C").Dword(0).Unread(8).Byte(0).Unread(11).Bytes();
  child.replace(count + 12 - base, next.size(), next);
  child += ImBytes().Dword(0x80).Bytes();
  child.resize(child.size() + 40, 0);
  const ImContainerMap map = ParseFolderFile(out.Raw(child).Bytes(), kRoot);
  ASSERT_NE(map.Find(ImGuid(3)), nullptr);
  EXPECT_EQ(map.Find(ImGuid(3))->Label, L"C");
  EXPECT_EQ(map.Find(ImGuid(3))->ParentContainerID, ImGuid(1));
  EXPECT_EQ(map.Find(ImGuid(3))->IndexInParent, 1U);
}

TEST(ImFolderFile, NameLengthThatLeadsBelowTheFileFailsTheChild) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", 1);
  out.Guid(ImGuid(2)).Text(L"B").Dword(0x80).Unread(200);
  EXPECT_EQ(LinesOf(out.Bytes()), (Names{L"A in root 0 a"}));
}

// A folder that is its own child, again and again: its name leads back to its own beginning, and
// the count of its children is the one of the folder around it.
std::string EndlessFolder(int children) {
  ImBytes out = test::ImFolderFileHead();
  test::PutImEntry(&out, ImGuid(1), L"A", L"a", children);
  // 16 + 4 + 2 * 56 + 4 bytes to the length's end; 20 bytes to the next entry; 2 * 78 back.
  const std::wstring label(56, L'l');
  return out.Guid(ImGuid(2)).Text(label).Dword(0xB2).Unread(100).Bytes();
}

TEST(ImFolderFile, FolderThatIsItsOwnAncestorEnds) {
  for (const int children : {1, 127}) {
    ImContainerMap map = ParseFolderFile(EndlessFolder(children), kRoot);
    EXPECT_NE(map.Find(ImGuid(1)), nullptr);
    FillPaths(&map, kRoot);
    MailFolderList folders;
    AppendFolders(map, L"{identity}", &folders);
    EXPECT_GE(folders.size(), 2U);
    EXPECT_LE(folders.size(), map.Size());
  }
}

// In each part a folder has 127 children: one as it should be, and one whose name leads back to its
// own beginning, after the other's count of no children. Read as a top-level entry, which the list
// goes on with, that one leads on.
TEST(ImFolderFile, ListThatLeadsBackManyTimesIsReadToItsEnd) {
  constexpr uint32_t kParts = 200;
  ImBytes out = test::ImFolderFileHead();
  for (uint32_t part = 1; part <= kParts; ++part) {
    test::PutImEntry(&out, ImGuid(part), L"A", L"a", 127);
    test::PutImEntry(&out, ImGuid(1000 + part), L"B", L"b", 0);
    out.Guid(ImGuid(2000 + part)).Text(std::wstring(56, L'l')).Dword(0xB2);
    out.Units(std::wstring(0xB2, L'n')).Unread(8).Byte(0).Unread(11);
  }
  const ImContainerMap map = ParseFolderFile(out.Raw("x").Bytes(), kRoot);
  EXPECT_EQ(map.Size(), 1 + 3 * kParts);
  ASSERT_NE(map.Find(ImGuid(kParts)), nullptr);
  EXPECT_EQ(map.Find(ImGuid(kParts))->ParentContainerID, kRoot);
}

std::string NestedFile(uint32_t depth) {
  ImBytes entry;
  test::PutImEntry(&entry, ImGuid(0), L"x", L"f", 1);
  std::string bytes = test::ImFolderFileHead().Bytes();
  for (uint32_t level = 1; level <= depth; ++level) {
    bytes += entry.Bytes();
    // The id's last bytes.
    for (size_t i = 0; i < 3; ++i) {
      bytes[bytes.size() - entry.Bytes().size() + 15 - i] = static_cast<char>(level >> (8 * i));
    }
  }
  bytes.resize(bytes.size() - 4);
  return bytes;
}

TEST(ImFolderFile, ThreeHundredThousandNestedEntriesAreRead) {
  const std::string bytes = NestedFile(300'000);
  const ImContainerMap map = ParseFolderFile(bytes, kRoot);
  EXPECT_EQ(map.Size(), 300'001U);
  EXPECT_EQ(OrderContainers(map).size(), 300'001U);
  EXPECT_EQ(map.Find(ImGuid(300'000))->ParentContainerID, ImGuid(299'999));
  EXPECT_EQ(FindContainerName(bytes, ImGuid(300'000)), L"f");
}

TEST(ImFolderFile, EveryPrefixGivesWhatCameBefore) {
  const std::string bytes = test::MakeImFolderFile(SmallTree());
  const Names whole = LinesOf(bytes);
  test::ForEveryPrefix(bytes, [&](std::string_view prefix) {
    const ImContainerMap map = ParseFolderFile(prefix, kRoot);
    ASSERT_NE(map.Find(kRoot), nullptr);
    for (const std::wstring& line : Lines(map)) {
      EXPECT_NE(std::find(whole.begin(), whole.end(), line), whole.end());
    }
    FindContainerName(prefix, ImGuid(5));
  });
}

void ExpectAsPlainReader(std::string_view bytes) {
  test::PlainFolderReader plain(bytes, 2000);
  plain.Read();
  const ImContainerMap map = ParseFolderFile(bytes, kRoot);
  if (plain.isTooLong) {
    return;
  }
  ASSERT_EQ(map.Size(), plain.folders.size() + 1);
  const auto idOf = [](const std::string& id) {
    return id.empty() ? std::wstring(kRoot) : ImFieldReader(id, 0).ReadGuid();
  };
  for (const auto& [id, folder] : plain.folders) {
    const ImContainer* const found = map.Find(idOf(id));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->ParentContainerID, idOf(folder.parent));
    EXPECT_EQ(found->IndexInParent, folder.index);
    EXPECT_EQ(found->Label, Widen(folder.label));
    EXPECT_EQ(found->FileName, Widen(folder.fileName));
  }
}

TEST(ImFolderFile, FlippedBytesGiveWhatThePlainReaderGives) {
  test::ForEveryFlippedByte(test::MakeImFolderFile(SmallTree()), [](std::string_view harmed) {
    ExpectAsPlainReader(harmed);
    FindContainerName(harmed, ImGuid(5));
  });
}

TEST(ImFolderFile, RandomTreesGiveWhatThePlainReaderGives) {
  std::mt19937 random(1);
  const auto below = [&random](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
  for (int round = 0; round < 1500; ++round) {
    ImBytes out = test::ImFolderFileHead();
    for (uint32_t entries = below(12); entries > 0; --entries) {
      out.Guid(below(8)).Text(std::wstring(below(5), L'l'));
      const uint32_t name = below(4);
      out.Dword(below(9) == 0 ? below(512) : name).Units(std::wstring(name, L'n'));
      out.Unread(8).Byte(static_cast<int>(below(4))).Raw(std::string(11, '\0'));
    }
    std::string bytes = out.Raw("12345678").Bytes();
    bytes.resize(bytes.size() - below(9));
    ExpectAsPlainReader(bytes);
  }
}

TEST(ImFolderFile, FileThatCanNotBeReadFails) {
  const test::TempFolder folder;
  ImContainerMap map = ParseFolderFile("", kRoot);
  EXPECT_EQ(ReadFolderFile(&map, std::wstring(kRoot), folder.PathOf("missing")), kFail);
  EXPECT_TRUE(map.IsEmpty());
  test::WriteFile(folder.PathOf("empty"), "");
  EXPECT_EQ(ReadFolderFile(&map, std::wstring(kRoot), folder.PathOf("empty")), kFail);
  test::WriteFile(folder.PathOf("file"), test::MakeImFolderFile(SmallTree()));
  EXPECT_EQ(ReadFolderFile(&map, std::wstring(kRoot), folder.PathOf("file")), kOk);
  EXPECT_EQ(map.Size(), 6U);
}

TEST(ImFolderSearch, FindsTheStoredNameAtEveryLevelWhateverTheCase) {
  const std::string bytes = test::MakeImFolderFile(
      {{L"{AABBCCDD-0000-4000-8000-000000000001}", L"A", L"a", {{ImGuid(2), L"B", L"b", {}}}},
       {ImGuid(3), L"C", L"c", {{ImGuid(4), L"D", L"d", {{ImGuid(5), L"E", L"e"}}}}}});
  EXPECT_EQ(FindContainerName(bytes, L"{aabbccdd-0000-4000-8000-000000000001}"), L"a");
  EXPECT_EQ(FindContainerName(bytes, ImGuid(2)), L"b");
  EXPECT_EQ(FindContainerName(bytes, ImGuid(3)), L"c");
  EXPECT_EQ(FindContainerName(bytes, ImGuid(5)), L"e");
  EXPECT_EQ(FindContainerName(bytes, ImGuid(6)), L"");
}

TEST(ImFolderSearch, NameOfAMatchIsReadByItsWholeLength) {
  const std::wstring longName(300, L'n');
  EXPECT_EQ(FindContainerName(test::MakeImFolderFile({{ImGuid(1), L"A", longName}}), ImGuid(1)),
            longName);
  EXPECT_EQ(FindContainerName(
                test::MakeImFolderFile({{ImGuid(1), L"A", L"a", {{ImGuid(2), L"B", longName}}}}),
                ImGuid(2)),
            longName);
}

TEST(ImFolderSearch, NamesOnTheWayArePassedOverByTheirShortLength) {
  const std::string bytes =
      test::MakeImFolderFile({{ImGuid(1), L"A", std::wstring(300, L'n')}, {ImGuid(2), L"B", L"b"}});
  EXPECT_EQ(FindContainerName(bytes, ImGuid(2)), L"");
  EXPECT_EQ(ParseFolderFile(bytes, kRoot).Find(ImGuid(2))->FileName, L"b");
}

TEST(ImFolderSearch, MatchWithAnEmptyNameEndsTheSearch) {
  const std::string bytes = test::MakeImFolderFile(
      {{ImGuid(1), L"A", L"", {}}, {ImGuid(2), L"B", L"b", {{ImGuid(3), L"C", L""}}}});
  EXPECT_EQ(FindContainerName(bytes, ImGuid(1)), L"");
  EXPECT_EQ(FindContainerName(bytes, ImGuid(3)), L"");
}

TEST(ImFolderSearch, LabelMayBeEmptyOnTheWay) {
  const std::string bytes =
      test::MakeImFolderFile({{ImGuid(1), L"", L"a"}, {ImGuid(2), L"B", L"b"}});
  EXPECT_EQ(FindContainerName(bytes, ImGuid(2)), L"b");
}

// An entry whose name length is the file's last bytes and leads back to where the file is sound.
// At the top level the place that it leads to decides, below it the length's own end does.
TEST(ImFolderSearch, BelowTheTopTheLengthItselfMustNotEndTheFile) {
  const auto search = [](bool below) {
    ImBytes out = test::ImFolderFileHead();
    if (below) {
      test::PutImEntry(&out, ImGuid(1), L"A", L"a", 1);
    }
    // Read again from here, 20 bytes after the place that the length leads to.
    std::string back = ImBytes().Unread(40).Byte(0).Unread(11).Guid(ImGuid(3)).Text(L"C").Bytes();
    back += ImBytes().Text(L"c").Unread(8).Byte(0).Unread(11).Bytes();
    const std::string entry = ImBytes().Guid(ImGuid(2)).Dword(60).Bytes();
    std::string label = back;
    label.resize(120, '\0');
    // From the length's end: 4 + 120 - 40 bytes back to the count of children.
    const int length = -(4 + 120 - 40 + 8) / 2;
    out.Raw(entry).Raw(label).Dword(static_cast<uint32_t>(length) & 0xFF);
    return FindContainerName(out.Bytes(), ImGuid(3));
  };
  EXPECT_EQ(search(false), L"c");
  EXPECT_EQ(search(true), L"");
}

TEST(ImFolderSearch, OlderContainerHasItsHeadersAndItsName) {
  const test::TempFolder folder;
  const test::ImIdentityFolder identity(folder.Path() / "{1}");
  identity.WriteFolders(SmallTree());
  std::wstring path = L"(as before)";
  std::wstring name;
  EXPECT_EQ(ResolveOlderContainer(identity.Directory(), ImGuid(9), &path, &name), kFail);
  EXPECT_EQ(path, L"(as before)");
  EXPECT_EQ(ResolveOlderContainer(identity.Directory(), ImGuid(5), &path, &name), kOk);
  EXPECT_EQ(name, L"Sent Items");
  EXPECT_EQ(std::filesystem::path(path),
            std::filesystem::path(identity.StoreFile("Sent Items.imh")));
  EXPECT_EQ(ResolveOlderContainer(folder.PathOf("gone"), ImGuid(5), &path, &name), kFail);
}

}  // namespace
}  // namespace postmarker
