#include "clients/incredimail/ImMessages_win.h"

#include <gtest/gtest.h>

#include "support/ImInstallation_win.h"

namespace postmarker::incredimail {
namespace {

using test::ImDatabase;
using test::ImGuid;
using test::ImIdentityFolder;
using test::ImInstallation;
using test::ImMessages;

// Ann has a database with two messages, Ben an older store with one.
class ImMessagesTest : public testing::Test {
 protected:
  ImMessagesTest() {
    m_client.RegisterData();
    m_client.AddIdentity(L"{a}", L"Ann");
    m_client.AddIdentity(L"{b}", L"Ben");
    ImDatabase database(m_client.AddStore(
        L"{a}", {{ImGuid(1), L"", 0, L""}, {ImGuid(2), ImGuid(1), 0, L"Inbox", L"In"}}));
    database.AddHeadersTable();
    database.AddHeaderRows({{ImGuid(11), ImGuid(2), L"to@x", L"", L"one", L"", 9, 5, 0},
                            {ImGuid(12), ImGuid(2), L"to@x", L"", L"two", L"", 9, 9, 5}});
    test::WriteFile(m_client.IdentityFolder(L"{a}").StoreFile("In.imm"), "a\nb\r\nsecond...");
    const ImIdentityFolder ben = m_client.IdentityFolder(L"{b}");
    ben.WriteFolders({{ImGuid(3), L"Inbox", L"Older"}});
    ImMessages messages;
    messages.Add({21, L"to@x", L"from@x", L"older"}, "older message");
    ben.WriteMessages("Older", messages);
  }

  static std::wstring SubjectOf(const std::wstring& id, const std::wstring& filter = L"") {
    ImHeader header;
    header.Subject = L"(none)";
    const ResultCode result = ReadHeader(&header, id, filter);
    EXPECT_EQ(result, header.Subject == L"(none)" ? kFail : kOk);
    return header.Subject;
  }

  static ImHeaderMap HeadersOf(const std::wstring& container, ResultCode expected,
                               const std::wstring& filter = L"") {
    ImHeaderMap headers;
    EXPECT_EQ(ListContainerHeaders(container, &headers, filter), expected);
    return headers;
  }

  ImInstallation m_client;
};

TEST_F(ImMessagesTest, HeaderIsReadFromTheFirstIdentityThatHasIt) {
  EXPECT_EQ(SubjectOf(ImGuid(12)), L"two");
  EXPECT_EQ(SubjectOf(ImGuid(12), L"{A}"), L"two");
  EXPECT_EQ(SubjectOf(ImGuid(12), L"{b}"), L"(none)");
  EXPECT_EQ(SubjectOf(ImGuid(99)), L"(none)");
  EXPECT_EQ(SubjectOf(ImGuid(21)), L"(none)");  // is in no database
}

TEST_F(ImMessagesTest, HeaderNamesItsStore) {
  ImHeader header;
  ASSERT_EQ(ReadHeader(&header, ImGuid(11), L""), kOk);
  EXPECT_EQ(header.StorePath, m_client.DataFolder() + L"\\Identities\\{a}\\Message Store\\");
  EXPECT_EQ(header.FileName, L"In");
}

TEST_F(ImMessagesTest, FolderOfAMessage) {
  std::wstring id = L"(as before)";
  EXPECT_EQ(ReadMessageContainerId(ImGuid(99), &id, L""), kFail);
  EXPECT_EQ(id, L"(as before)");
  EXPECT_EQ(ReadMessageContainerId(ImGuid(11), &id, L""), kOk);
  EXPECT_EQ(id, ImGuid(2));
}

TEST_F(ImMessagesTest, HeadersOfAFolderInADatabase) {
  const ImHeaderMap headers = HeadersOf(ImGuid(2), kOk);
  ASSERT_EQ(headers.size(), 2U);
  EXPECT_EQ(headers.at(ImGuid(11)).Subject, L"one");
  EXPECT_TRUE(HeadersOf(ImGuid(2), kFail, L"{b}").empty());
}

TEST_F(ImMessagesTest, HeadersOfAFolderInAnOlderStore) {
  const ImHeaderMap headers = HeadersOf(ImGuid(3), kOk);
  ASSERT_EQ(headers.size(), 1U);
  EXPECT_EQ(headers.at(ImGuid(21)).Subject, L"older");
  EXPECT_EQ(headers.at(ImGuid(21)).FileName, L"Older");
  EXPECT_EQ(HeadersOf(ImGuid(3), kOk, L"{B}").size(), 1U);
}

TEST_F(ImMessagesTest, OlderStoreWithTheFolderEndsTheWalk) {
  m_client.AddIdentity(L"{c}", L"Carl");
  ImDatabase database(m_client.AddStore(L"{c}", {{ImGuid(3), L"", 0, L""}}));
  database.AddHeadersTable();
  database.AddHeaderRows({{ImGuid(31), ImGuid(3), L"to@x"}});
  EXPECT_EQ(HeadersOf(ImGuid(3), kOk).size(), 1U);
  EXPECT_EQ(HeadersOf(ImGuid(3), kOk, L"{c}").count(ImGuid(31)), 1U);
}

TEST_F(ImMessagesTest, WithoutAnInstallationEverythingFails) {
  RegistryKey::Open(HKEY_CURRENT_USER, ImInstallation::kClientKey, KEY_ALL_ACCESS)
      .DeleteValue(L"ApplicationPath");
  EXPECT_EQ(SubjectOf(ImGuid(11)), L"(none)");
  EXPECT_TRUE(HeadersOf(ImGuid(2), kFail).empty());
}

std::string Assembled(const std::wstring& id, const ImHeader* header, ResultCode expected) {
  std::unique_ptr<char[]> buffer = std::make_unique<char[]>(1);
  uint32_t length = 7;
  EXPECT_EQ(AssembleMessage(id, &buffer, &length, header), expected);
  EXPECT_EQ(buffer == nullptr, Failed(expected));
  return {buffer.get(), length};
}

TEST_F(ImMessagesTest, MessageIsRebuiltByItsId) {
  EXPECT_EQ(Assembled(ImGuid(11), nullptr, kOk), "a\r\nb\r\n");
  EXPECT_EQ(Assembled(ImGuid(12), nullptr, kOk), "second...");
  EXPECT_EQ(Assembled(ImGuid(99), nullptr, kFail), "");
}

TEST_F(ImMessagesTest, MessageIsRebuiltFromAGivenHeader) {
  const ImHeader older = HeadersOf(ImGuid(3), kOk).at(ImGuid(21));
  EXPECT_EQ(Assembled(L"", &older, kOk), "older message");
  ImHeader gone = older;
  gone.FileName = L"Gone";
  EXPECT_EQ(Assembled(ImGuid(11), &gone, kFail), "");
}

}  // namespace
}  // namespace postmarker::incredimail
