#include "clients/livemail/LiveStoreId.h"

#include <gtest/gtest.h>

#include "clients/livemail/EseJetApi.h"
#include "support/LiveMailStore.h"
#include "support/RecordingJet.h"
#include "support/StoreIdFiles.h"
#include "support/TempFolder.h"

namespace postmarker::livemail {
namespace {

const std::string kId("\xF0\xE4\xA3\x29\xFF\xB9\xDE\x0A", 8);
const std::string kBackupId("BackupId");
const std::string kOtherId("OtherId!");

std::string Marked(const std::string& id) {
  return std::string(test::kStoreIdMark) + id + "end";
}

class LiveStoreId : public testing::Test {
 protected:
  LiveStoreId() { test::WriteFile(m_backup, Marked(kBackupId)); }

  // A database with these rows, and after it what the search finds.
  void Write(const std::vector<test::LiveUserDataRow>& rows) {
    test::WriteFile(m_path, test::MakeLiveMailStore({.userData = rows}) + Marked(kOtherId));
  }

  std::optional<std::string> Read() {
    return ReadLiveMessageStoreId(m_path, m_backup, EseJetApi());
  }

  test::TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("Mail.MSMessageStore");
  std::wstring m_backup = m_folder.PathOf("backup");
};

TEST_F(LiveStoreId, IsReadFromTheDatabase) {
  Write({{u"Messages", -1, "11111111"},
         {u"Folders", 5, "22222222"},
         {u"Folders", -1, kId + std::string(120, '\0')},
         {u"Folders", -1, "33333333"}});
  EXPECT_EQ(Read(), kId) << "the first row of the folders as a whole";
}

TEST_F(LiveStoreId, OfZerosIsTakenFromTheDatabase) {
  Write({test::LiveStoreIdRow(std::string(8, '\0'))});
  EXPECT_EQ(Read(), std::string(8, '\0'));
}

TEST_F(LiveStoreId, IsSearchedInTheFileIfTheDatabaseHasNoRow) {
  Write({{u"Folders", 1, kId}});
  EXPECT_EQ(Read(), kOtherId);
  Write({{u"folder", -1, kId}});
  EXPECT_EQ(Read(), kOtherId);
}

TEST_F(LiveStoreId, IsSearchedInTheFileIfTheDataIsTooShort) {
  Write({test::LiveStoreIdRow(kId.substr(0, 7))});
  EXPECT_EQ(Read(), kOtherId);
  Write({{u"Folders", -1, std::nullopt}, test::LiveStoreIdRow(kId)});
  EXPECT_EQ(Read(), kOtherId) << "only the first row counts";
}

// A text column can hold an odd number of digits, and other characters.
TEST_F(LiveStoreId, IsMadeOfTheFirst16CharactersOfAText) {
  const auto write = [this](const std::u16string& digits) {
    test::WriteFile(m_path,
                    test::MakeEseFile({{.name = "UserDataTable",
                                        .columns = {{"FolderId", 1, test::kEseLongLong, 8},
                                                    {"Table", 128, test::kEseText, 255, 1252},
                                                    {"Data", 129, test::kEseText, 255, 1200}},
                                        .rows = {{{{1, {test::EseBytes(int64_t{-1})}},
                                                   {128, {test::EseUtf16(u"Folders")}},
                                                   {129, {test::EseUtf16(digits)}}}}}}}) +
                        Marked(kOtherId));
  };
  write(u"0123456789ABCDEFxyz");
  EXPECT_EQ(Read(), "\x01\x23\x45\x67\x89\xAB\xCD\xEF");
  write(u"0123456789ABCDE");
  EXPECT_EQ(Read(), kOtherId) << "15 characters";
  write(u"Z0/10000000000000000");
  EXPECT_EQ(Read(), std::string("\x30\xF1\0\0\0\0\0\0", 8)) << "codes less 55 and 48";
}

TEST_F(LiveStoreId, IsSearchedInAFileThatIsNoDatabase) {
  test::WriteFile(m_path, "no database" + Marked(kId));
  EXPECT_EQ(Read(), kId);
}

TEST_F(LiveStoreId, IsSearchedInTheBackupIfThereIsNoFile) {
  EXPECT_EQ(Read(), kBackupId);
  test::WriteFile(m_path, "no mark");
  EXPECT_EQ(Read(), std::nullopt) << "a file without an id hides the backup";
}

TEST_F(LiveStoreId, IsSearchedWhicheverCallOfTheEngineFails) {
  Write({test::LiveStoreIdRow(kId)});
  test::Recorded() = {};
  ASSERT_EQ(ReadLiveMessageStoreId(m_path, m_backup, test::RecordingJet()), kId);
  const auto calls = static_cast<int>(test::Recorded().calls.size());
  for (int failAt = 1; failAt <= calls; ++failAt) {
    test::Recorded() = {};
    test::Recorded().failAt = failAt;
    const auto id = ReadLiveMessageStoreId(m_path, m_backup, test::RecordingJet());
    EXPECT_TRUE(id == kId || id == kOtherId) << failAt;
    EXPECT_TRUE(test::Recorded().NothingIsOpen()) << failAt;
  }
}

TEST_F(LiveStoreId, OfNothingIsNone) {
  EXPECT_EQ(ReadLiveMessageStoreId(L"", L"", EseJetApi()), std::nullopt);
}

}  // namespace
}  // namespace postmarker::livemail
