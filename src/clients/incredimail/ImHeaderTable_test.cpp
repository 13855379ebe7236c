#include "clients/incredimail/ImHeaderTable.h"

#include <gtest/gtest.h>

#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::ImGuid;

class ImHeaderTableTest : public testing::Test {
 protected:
  ImHeaderTableTest() {
    test::MakeContainersDatabase(
        Database(), {{ImGuid(1), L"", 0, L""}, {ImGuid(2), ImGuid(1), 0, L"Inbox", L"In"}});
    ImDatabase database(Database());
    database.AddHeadersTable();
    database.AddHeaderRows({{ImGuid(11), ImGuid(2), L"to@x", L"from@x", L"S\u00FC\u0416", L"work",
                             0x10000, 300, 0x7FFFFFFF},
                            {ImGuid(12), ImGuid(2), L"two@x"},
                            {ImGuid(13), ImGuid(9), L"lost@x"}});
  }

  [[nodiscard]] std::wstring Database() const { return m_identity.StoreFile("Containers.db"); }

  test::TempFolder m_folder;
  test::ImIdentityFolder m_identity{m_folder.Path() / "{1}"};
};

TEST_F(ImHeaderTableTest, ReadsAllColumns) {
  ImHeader header;
  ASSERT_EQ(ReadHeaderRow(&header, ImGuid(11), m_identity.Directory()), kOk);
  EXPECT_EQ(header.HeaderID, ImGuid(11));
  EXPECT_EQ(header.ContainerID, ImGuid(2));
  EXPECT_EQ(header.FileName, L"In");
  EXPECT_EQ(header.StorePath, m_identity.StorePath());
  EXPECT_EQ(header.FromSender, L"from@x");
  EXPECT_EQ(header.ToSender, L"to@x");
  EXPECT_EQ(header.Subject, L"S\u00FC\u0416");
  EXPECT_EQ(header.Account, L"work");
  EXPECT_EQ(header.ReceivedDate, 1);
  EXPECT_EQ(header.SentDate, 2);
  EXPECT_EQ(header.Unread, 3);
  EXPECT_EQ(header.Flagged, 4);
  EXPECT_EQ(header.OnlineImages, 5);
  EXPECT_EQ(header.HighlightColor, 6);
  EXPECT_EQ(header.Priority, 7);
  EXPECT_EQ(header.MsgSize, 0x10000U);
  EXPECT_EQ(header.LightMsgSize, 300U);
  EXPECT_EQ(header.MsgPos, 0x7FFFFFFFU);
  EXPECT_EQ(header.Deleted, 8);
}

TEST_F(ImHeaderTableTest, MissingMessageFailsAndChangesNothing) {
  ImHeader header;
  header.Subject = L"(as before)";
  EXPECT_EQ(ReadHeaderRow(&header, ImGuid(99), m_identity.Directory()), kFail);
  EXPECT_EQ(ReadHeaderRow(&header, ImGuid(13), m_identity.Directory()), kFail);  // has no folder
  EXPECT_EQ(ReadHeaderRow(&header, L"it's", m_identity.Directory()), kFail);
  EXPECT_EQ(header.Subject, L"(as before)");
}

TEST_F(ImHeaderTableTest, ListsTheMessagesOfAFolder) {
  std::set<std::wstring> ids = {L"there"};
  EXPECT_EQ(ListContainerMessages(ImGuid(2), &ids, Database()), kOk);
  EXPECT_EQ(ids, (std::set<std::wstring>{L"there", ImGuid(11), ImGuid(12)}));
  EXPECT_EQ(ListContainerMessages(ImGuid(77), &ids, Database()), kOk);
  EXPECT_EQ(ids.size(), 3U);
}

TEST_F(ImHeaderTableTest, DatabaseThatCanNotBeReadFails) {
  std::set<std::wstring> ids;
  EXPECT_EQ(ListContainerMessages(L"it's", &ids, Database()), kFail);
  {
    ImDatabase client(Database());
    client.Run("BEGIN EXCLUSIVE");
    EXPECT_EQ(ListContainerMessages(ImGuid(2), &ids, Database()), kFail);
  }
  test::WriteFile(Database(), "no database");
  EXPECT_EQ(ListContainerMessages(ImGuid(2), &ids, Database()), kFail);
  EXPECT_TRUE(ids.empty());
}

}  // namespace
}  // namespace postmarker
