#include "clients/incredimail/ImSentMail.h"

#include <gtest/gtest.h>

#include "clients/incredimail/ImTemporaryFile.h"
#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/Prefixes.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using test::ImDatabase;
using test::ImGuid;
using test::ImHeaderRow;
using test::ImMessages;

class ImSentMailTest : public testing::Test {
 protected:
  AddressSet Collect() {
    ImAddressCollector collector;
    CollectSentOf(m_identity.Directory(), &collector);
    AddressSet addresses;
    collector.AddTo(&addresses);
    return addresses;
  }

  [[nodiscard]] std::wstring Database() const { return m_identity.StoreFile("Containers.db"); }

  // A folder database whose sent mail went to these lists.
  void MakeDatabase(const std::vector<std::wstring>& lists) {
    test::MakeContainersDatabase(Database(), {{ImGuid(1), L"", 0, L""},
                                              {ImGuid(2), ImGuid(1), 0, L"Inbox"},
                                              {ImGuid(3), ImGuid(1), 2, L"Sent Items"},
                                              {ImGuid(4), ImGuid(2), 2, L"Below"}});
    ImDatabase database(Database());
    database.AddHeadersTable();
    std::vector<ImHeaderRow> rows = {{ImGuid(100), ImGuid(2), L"received@x"},
                                     {ImGuid(101), ImGuid(4), L"below@x"}};
    for (const std::wstring& list : lists) {
      rows.push_back({ImGuid(static_cast<uint32_t>(200 + rows.size())), ImGuid(3), list});
    }
    database.AddHeaderRows(rows);
  }

  AddressSet Gather(ResultCode expected = kOk) {
    AddressSet addresses;
    EXPECT_EQ(GatherOlderSentAddresses(m_identity.Directory(), &addresses), expected);
    return addresses;
  }

  test::TempFolder m_folder;
  test::ImIdentityFolder m_identity{m_folder.Path() / "{1}"};
};

TEST_F(ImSentMailTest, RecipientsAreThoseOfTheRootsChildWithTheIndex2) {
  MakeDatabase({L"ann@x", L"Ben <ben@x>"});
  EXPECT_EQ(Collect(), (AddressSet{L"ann@x", L"ben@x"}));
}

TEST_F(ImSentMailTest, ListsAreSplitAndLowerCased) {
  MakeDatabase({L"Ann <Ann@X.COM>, \"B, C\" <b@x>", L"c@x,D@x", L"J\u00DCRGEN@x", L"ann@x.com"});
  EXPECT_EQ(Collect(), (AddressSet{L"ann@x.com", L"b@x", L"c@x", L"d@x", L"j\u00FCrgen@x"}));
}

TEST_F(ImSentMailTest, IdInOtherCaseIsTheSameFolder) {
  test::MakeContainersDatabase(Database(),
                               {{L"{R}", L"", 0, L""}, {L"{abc}", L"{R}", 2, L"Sent Items"}});
  ImDatabase database(Database());
  database.AddHeadersTable();
  database.AddHeaderRows({{L"{1}", L"{ABC}", L"ann@x"}, {L"{2}", L"{abc}x", L"ben@x"}});
  EXPECT_EQ(Collect(), AddressSet{L"ann@x"});
}

TEST_F(ImSentMailTest, DatabaseThatCanNotBeReadAddsNothing) {
  test::WriteFile(Database(), "no database");
  EXPECT_EQ(Collect(), AddressSet{});
  std::filesystem::remove(Database());
  test::MakeContainersDatabase(Database(), {{ImGuid(1), L"", 0, L""}});  // lacks the headers
  EXPECT_EQ(Collect(), AddressSet{});
}

TEST_F(ImSentMailTest, LockedDatabaseAddsNothing) {
  MakeDatabase({L"ann@x"});
  ImDatabase client(Database());
  client.Run("BEGIN EXCLUSIVE");
  EXPECT_EQ(Collect(), AddressSet{});
}

TEST_F(ImSentMailTest, OlderStoreIsNotReadBesideADatabase) {
  MakeDatabase({L"newer@x"});
  ImMessages messages;
  messages.Add({1, L"older@x", L"", L""}, "x");
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Collect(), AddressSet{L"newer@x"});
}

std::string MailWithCopies(const std::string& copies) {
  return "From: me@x\r\nTo: you@x\r\n" + copies + "Subject: s\r\n\r\nbody\r\n";
}

TEST_F(ImSentMailTest, OlderStoreGivesRecipientsAndCopies) {
  ImMessages messages;
  messages.Add({1, L"Ann <Ann@x>", L"me@x", L"s"}, MailWithCopies("Cc: Ben <Ben@x>, carl@x\r\n"));
  messages.Add({2, L"dora@x", L"me@x", L"s"}, MailWithCopies(""));
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Gather(), (AddressSet{L"Ann <Ann@x>", L"Ben <Ben@x>, carl@x", L"dora@x"}));
  EXPECT_EQ(Collect(), (AddressSet{L"ann@x", L"ben@x", L"carl@x", L"dora@x"}));
}

TEST_F(ImSentMailTest, OnlyTheFirstHeaderOfCopiesCounts) {
  ImMessages messages;
  messages.Add({1, L"ann@x", L"me@x", L"s"}, MailWithCopies("CC: ben@x\r\nCc: carl@x\r\n"));
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Gather(), (AddressSet{L"ann@x", L"ben@x"}));
}

TEST_F(ImSentMailTest, CopiesAreWidened) {
  ImMessages messages;
  messages.Add({1, L"ann@x", L"me@x", L"s"}, MailWithCopies("Cc: J\xFCrgen \x80 <j@x>\r\n"));
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Gather(), (AddressSet{L"ann@x", L"J\u00FCrgen \u20AC <j@x>"}));
}

TEST_F(ImSentMailTest, HeaderBlockOfBareLineFeedsIsReadAsRebuilt) {
  ImMessages messages;
  messages.Add({1, L"ann@x", L"me@x", L"s"}, "From: me@x\nCc: ben@x\nSubject: s\n\nbody\n");
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Gather(), (AddressSet{L"ann@x", L"ben@x"}));
}

TEST_F(ImSentMailTest, WithoutHeadersTheOlderStoreFails) {
  EXPECT_EQ(Gather(kFail), AddressSet{});
  EXPECT_EQ(Collect(), AddressSet{});
}

TEST_F(ImSentMailTest, StoreWithoutMessagesSucceeds) {
  test::WriteFile(m_identity.StoreFile("Sent Items.imh"), "twelve bytes");
  EXPECT_EQ(Gather(), AddressSet{});
}

TEST_F(ImSentMailTest, EveryCutOfTheOlderStoreGivesAddressesThatWereThere) {
  ImMessages messages;
  messages.Add({1, L"ann@x", L"me@x", L"s"}, MailWithCopies("Cc: ben@x\r\n"));
  m_identity.WriteMessages("Sent Items", messages);
  const std::string mails = messages.Bytes();
  test::ForEveryPrefix(mails, [&](std::string_view prefix) {
    test::WriteFile(m_identity.StoreFile("Sent Items.imm"), prefix);
    const AddressSet gathered = Gather(prefix.empty() ? kFail : kOk);
    EXPECT_TRUE(gathered.contains(L"ann@x"));
    for (const std::wstring& each : gathered) {
      EXPECT_TRUE(each == L"ann@x" || std::wstring_view(L"ben@x").starts_with(each));
    }
  });
}

TEST(ImAddressCollector, SameListAgainAddsNothing) {
  ImAddressCollector collector;
  collector.AddInLowerCase(L"A@x");
  collector.AddInLowerCase(L"A@x");
  collector.AddInLowerCase(L"a@X");
  collector.Add(L"a@x, b@x");
  AddressSet addresses = {L"there@x"};
  collector.AddTo(&addresses);
  EXPECT_EQ(addresses, (AddressSet{L"a@x", L"b@x", L"there@x"}));
}

TEST(ImAddressCollector, ManyListsAreTakenWhetherTheyComeAgainOrNot) {
  ImAddressCollector collector;
  AddressSet expected;
  for (const int round : {1, 2}) {
    for (int person = 0; person < 20'000; ++person) {
      const std::string number = std::to_string(person % (round == 1 ? 20'000 : 30));
      std::string list = "Person <P";
      list.append(number).append("@X>, new").append(number).append("@x");
      collector.AddAsciiInLowerCase(list);
      expected.insert(Widen("p" + number + "@x"));
      expected.insert(Widen("new" + number + "@x"));
    }
  }
  AddressSet addresses;
  collector.AddTo(&addresses);
  EXPECT_EQ(addresses, expected);
}

TEST(ImAddressCollector, EmptyItemIsTheAddressThatTheListHas) {
  ImAddressCollector collector;
  collector.Add(L"");
  AddressSet addresses;
  collector.AddTo(&addresses);
  EXPECT_EQ(addresses, AddressSet{});
  collector.Add(L"a@x,,b@x");
  collector.AddTo(&addresses);
  EXPECT_EQ(addresses, (AddressSet{L"", L"a@x", L"b@x"}));
}

TEST(ImTemporaryFile, IsMadeWrittenAndDeleted) {
  const std::wstring path = MakeTemporaryFile();
  ASSERT_FALSE(path.empty());
  const std::filesystem::path file(std::u16string(path.begin(), path.end()));
  EXPECT_EQ(std::filesystem::file_size(file), 0U);
  EXPECT_TRUE(file.filename().string().starts_with("tmp"));
  EXPECT_NE(MakeTemporaryFile(), path);
  EXPECT_TRUE(WriteTemporaryFile(path, "content"));
  EXPECT_TRUE(WriteTemporaryFile(path, "less"));
  EXPECT_EQ(test::ReadFile(path), "less");
  DeleteTemporaryFile(path);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FALSE(WriteTemporaryFile(L"", "x"));
}

}  // namespace
}  // namespace postmarker
