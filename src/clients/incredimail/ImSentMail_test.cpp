#include "clients/incredimail/ImSentMail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory_resource>

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
  AddressSet Collect(PacedStop stop = PacedStop()) {
    ImAddressCollector collector;
    CollectSentOf(m_identity.Directory(), &stop, &collector);
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

  AddressSet Gather(ResultCode expected = kOk, PacedStop stop = PacedStop()) {
    AddressSet addresses;
    EXPECT_EQ(GatherOlderSentAddresses(m_identity.Directory(), &stop, &addresses), expected);
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

// A stop at this question.
PacedStop StopAt(int question) {
  return PacedStop([asked = 0, question]() mutable { return ++asked >= question; });
}

TEST_F(ImSentMailTest, StopEndsTheRowsOfADatabaseWithinAHundred) {
  std::vector<std::wstring> lists;
  for (int i = 0; i < 1000; ++i) {
    lists.push_back(L"to" + std::to_wstring(i) + L"@x");
  }
  MakeDatabase(lists);
  EXPECT_EQ(Collect(StopAt(3)).size(), 300U);
  EXPECT_EQ(Collect().size(), 1000U);
}

TEST_F(ImSentMailTest, StopIsAskedBetweenTwoMessagesAndKeepsThoseBefore) {
  ImMessages messages;
  for (uint32_t i = 1; i <= 9; ++i) {
    messages.Add({i, L"to" + std::to_wstring(i) + L"@x", L"me@x", L"s"},
                 MailWithCopies("Cc: cc" + std::to_string(i) + "@x\r\n"));
  }
  m_identity.WriteMessages("Sent Items", messages);
  const AddressSet three = {L"cc1@x", L"cc2@x", L"cc3@x", L"to1@x", L"to2@x", L"to3@x"};
  EXPECT_EQ(Gather(kOk, StopAt(3)), three);
  EXPECT_EQ(Collect(StopAt(3)), three);
}

TEST_F(ImSentMailTest, AttachmentsAreNotReadForTheCopies) {
  ImMessages messages;
  messages.Add({1, L"ann@x", L"me@x", L"s"}, std::string("From: me@x\r\n") + test::kImMarker +
                                                 "head\r\nSubject: s\r\n\r\nbody\r\n");
  m_identity.WriteMessages("Sent Items", messages);
  test::WriteFile(m_identity.Attachment("head"), "Cc: attached@x\r\n");
  EXPECT_EQ(Gather(), AddressSet{L"ann@x"});
}

// Records that name one stretch, and after them one of another message.
TEST_F(ImSentMailTest, RecordsOfOneStretchAreRebuiltUpToFourTimesTheFileOnly) {
  constexpr uint32_t kStretch = 0x000FFFFF;
  const std::string last = MailWithCopies("Cc: last@x\r\n");
  std::string mails(kStretch, 'x');
  mails.replace(0, 13, "Cc: one@x\r\n\r\n");
  mails += last;
  test::WriteFile(m_identity.StoreFile("Sent Items.imm"), mails);
  const auto write = [&](uint32_t records) {
    std::vector<test::ImRecord> list;
    for (uint32_t id = 1; id <= records; ++id) {
      list.push_back({id, L"to@x", L"me@x", L"s", L"", kStretch, 0});
    }
    list.push_back(
        {records + 1, L"to@x", L"me@x", L"s", L"", static_cast<uint32_t>(last.size()), kStretch});
    test::WriteFile(m_identity.StoreFile("Sent Items.imh"), test::MakeImHeaderFile(list));
  };
  write(1);
  EXPECT_EQ(Gather(), (AddressSet{L"last@x", L"one@x", L"to@x"}));
  write(30);
  EXPECT_EQ(Gather(), (AddressSet{L"one@x", L"to@x"})) << "a harvest rebuilds without end";
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

// Knows how many bytes are allocated.
class CountedMemory : public std::pmr::memory_resource {
 public:
  CountedMemory() : m_before(std::pmr::set_default_resource(this)) {}
  CountedMemory(const CountedMemory&) = delete;
  CountedMemory& operator=(const CountedMemory&) = delete;
  ~CountedMemory() override { std::pmr::set_default_resource(m_before); }

  [[nodiscard]] size_t Peak() const { return m_peak; }

 private:
  void* do_allocate(size_t bytes, size_t alignment) override {
    m_bytes += bytes;
    m_peak = std::max(m_peak, m_bytes);
    return m_before->allocate(bytes, alignment);
  }
  void do_deallocate(void* memory, size_t bytes, size_t alignment) override {
    m_bytes -= bytes;
    m_before->deallocate(memory, bytes, alignment);
  }
  [[nodiscard]] bool do_is_equal(const memory_resource& other) const noexcept override {
    return this == &other;
  }

  std::pmr::memory_resource* m_before;
  size_t m_bytes = 0;
  size_t m_peak = 0;
};

TEST(ImAddressCollector, AddressesThatComeAgainInOtherListsTakeNoMemory) {
  constexpr uint32_t kLists = 120'000;
  const CountedMemory memory;
  ImAddressCollector collector;
  AddressSet expected = {L"same@x"};
  const std::string alike(300, 'p');
  for (uint32_t i = 0; i < kLists; ++i) {
    const std::string address = alike + std::to_string(i % 2000) + "@x";
    // Each list is another one.
    collector.AddAsciiInLowerCase(std::to_string(i) + " <" + address + ">, same@x");
    expected.insert(Widen(address));
  }
  AddressSet addresses;
  collector.AddTo(&addresses);
  EXPECT_EQ(addresses, expected);
  // The lists' addresses are 36 MiB together, and half as much again is allocated for more.
  EXPECT_LT(memory.Peak(), size_t{32} * 1024 * 1024);
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

}  // namespace
}  // namespace postmarker
