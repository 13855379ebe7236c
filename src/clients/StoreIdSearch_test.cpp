#include "clients/StoreIdSearch.h"

#include <gtest/gtest.h>

#include "support/StoreIdFiles.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using test::kStoreIdMark;

const std::string kId("\x01\x23\x45\x67\x89\xAB\xCD\xEF", 8);
const std::string kOtherId("\xFE\xDC\xBA\x98\x76\x54\x32\x10", 8);
const std::string kZeroId(8, '\0');

std::string Marked(const std::string& id) {
  return std::string(kStoreIdMark).append(id);
}

TEST(StoreIdSearch, ReturnsTheEightBytesAfterTheMark) {
  EXPECT_EQ(FindStoreId(Marked(kId) + "x"), kId);
  EXPECT_EQ(FindStoreId(std::string(5000, '@') + Marked(kId) + "x"), kId);
}

TEST(StoreIdSearch, FindsNothingWithoutTheMark) {
  EXPECT_EQ(FindStoreId(""), std::nullopt);
  EXPECT_EQ(FindStoreId("Folders"), std::nullopt);
  EXPECT_EQ(FindStoreId(std::string(100'000, '@')), std::nullopt);
}

TEST(StoreIdSearch, ComparesEachByteOfTheMark) {
  for (size_t i = 0; i < kStoreIdMark.size(); ++i) {
    std::string bytes = Marked(kId) + "x";
    bytes[i] = static_cast<char>(bytes[i] ^ 0x20);
    EXPECT_EQ(FindStoreId(bytes), std::nullopt) << "byte " << i;
  }
}

TEST(StoreIdSearch, FindsAMarkAfterABrokenOne) {
  for (size_t length = 1; length < kStoreIdMark.size(); ++length) {
    const std::string start(kStoreIdMark.substr(0, length));
    EXPECT_EQ(FindStoreId(start + Marked(kId) + "x"), kId) << length << " bytes";
  }
}

TEST(StoreIdSearch, TheFirstMarkWins) {
  EXPECT_EQ(FindStoreId(Marked(kId) + Marked(kOtherId) + "x"), kId);
}

TEST(StoreIdSearch, AnIdOfZerosFailsAndHidesLaterOnes) {
  EXPECT_EQ(FindStoreId(Marked(kZeroId) + Marked(kId) + "x"), std::nullopt);
  for (size_t i = 0; i < kStoreIdBytes; ++i) {
    std::string id = kZeroId;
    id[i] = '\x80';
    EXPECT_EQ(FindStoreId(Marked(id) + "x"), id) << "byte " << i;
  }
}

TEST(StoreIdSearch, TheIdMustEndBeforeTheLastByte) {
  const std::string bytes = "head" + Marked(kId);
  for (size_t length = 0; length <= bytes.size(); ++length) {
    EXPECT_EQ(FindStoreId(std::string_view(bytes).substr(0, length)), std::nullopt) << length;
  }
  EXPECT_EQ(FindStoreId(bytes + '\0'), kId);
}

TEST(StoreIdSearch, ReadsADbxFileAtItsOffset) {
  EXPECT_EQ(DbxStoreId(test::MakeDbxFile(kId)), kId);
  EXPECT_EQ(DbxStoreId(test::MakeDbxFile(kId) + "more"), kId);
}

TEST(StoreIdSearch, ADbxFileThatEndsWithinTheIdHasNone) {
  const std::string bytes = test::MakeDbxFile(kId);
  for (size_t cut = 1; cut <= kStoreIdBytes; ++cut) {
    EXPECT_EQ(DbxStoreId(std::string_view(bytes).substr(0, bytes.size() - cut)), std::nullopt)
        << cut << " bytes missing";
  }
  EXPECT_EQ(DbxStoreId(""), std::nullopt);
}

TEST(StoreIdSearch, ADbxFileWithAnIdOfZerosHasNone) {
  EXPECT_EQ(DbxStoreId(test::MakeDbxFile(kZeroId)), std::nullopt);
}

class StoreIdFiles : public testing::Test {
 protected:
  test::TempFolder m_folder;
  std::wstring m_live = m_folder.PathOf("live");
  std::wstring m_backup = m_folder.PathOf("backup");
};

TEST_F(StoreIdFiles, ReadsTheLiveFileBeforeTheBackup) {
  test::WriteFile(m_live, Marked(kId) + "x");
  test::WriteFile(m_backup, Marked(kOtherId) + "x");
  EXPECT_EQ(FindStoreIdInFile(m_live, m_backup), kId);
}

TEST_F(StoreIdFiles, ReadsTheBackupIfTheLiveFileIsMissingOrEmpty) {
  test::WriteFile(m_backup, Marked(kOtherId) + "x");
  EXPECT_EQ(FindStoreIdInFile(m_live, m_backup), kOtherId);
  test::WriteFile(m_live, "");
  EXPECT_EQ(FindStoreIdInFile(m_live, m_backup), kOtherId);
}

TEST_F(StoreIdFiles, ALiveFileWithoutAnIdIsNotReplacedByTheBackup) {
  test::WriteFile(m_live, "no mark");
  test::WriteFile(m_backup, Marked(kOtherId) + "x");
  EXPECT_EQ(FindStoreIdInFile(m_live, m_backup), std::nullopt);
}

TEST_F(StoreIdFiles, NoFileGivesNoId) {
  EXPECT_EQ(FindStoreIdInFile(m_live, m_backup), std::nullopt);
  EXPECT_EQ(ReadDbxStoreId(m_live), std::nullopt);
}

TEST_F(StoreIdFiles, ReadsADbxFileByItsPath) {
  test::WriteFile(m_live, test::MakeDbxFile(kId));
  EXPECT_EQ(ReadDbxStoreId(m_live), kId);
}

}  // namespace
}  // namespace postmarker
