#include "clients/incredimail/ImAddressFile.h"

#include <gtest/gtest.h>

#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/Prefixes.h"

namespace postmarker {
namespace {

using Entries = std::vector<std::string>;

constexpr size_t kFirst = 470;
constexpr size_t kSlot = 4916;

Entries Parse(std::string_view bytes) {
  PacedStop never;
  return ParseAddressFile(bytes, &never);
}

std::string Head() {
  return std::string(kFirst, 'h');
}

TEST(ImAddressFile, ReadsOneEntryASlot) {
  EXPECT_EQ(Parse(test::MakeImAddressFile({L"a@b", L"Second@C", L"J\u00FCrgen@d"})),
            (Entries{"a@b", "Second@C", "J\xFCrgen@d"}));
}

TEST(ImAddressFile, FileOf470BytesOrLessGivesNoContact) {
  EXPECT_TRUE(Parse("").empty());
  EXPECT_TRUE(Parse(Head()).empty());
  EXPECT_EQ(Parse(Head() + "x"), Entries{"x"});
}

TEST(ImAddressFile, EmptySlotsAddNothing) {
  EXPECT_EQ(Parse(test::MakeImAddressFile({L"a", L"", L"c"})), (Entries{"a", "c"}));
}

TEST(ImAddressFile, EntryEndsAtTwoZerosInARow) {
  EXPECT_EQ(Parse(Head() + std::string("ab\0c\0d\0\0e", 9)), Entries{"abcd"});
  EXPECT_TRUE(Parse(Head() + std::string("\0\0e", 3)).empty());
  EXPECT_EQ(Parse(Head() + std::string("\0e\0", 3)), Entries{"e"});
}

TEST(ImAddressFile, OtherTextsComeAsTheirNonZeroBytes) {
  EXPECT_EQ(Parse(test::MakeImAddressFile({L"\u0416\u5E73a"})), Entries{"\x16\x04s^a"});
}

TEST(ImAddressFile, EntryWithoutAnEndDoesNotHideTheNext) {
  std::string bytes = Head();
  while (bytes.size() < kFirst + kSlot) {
    bytes += std::string_view("b\0", 2);
  }
  const Entries entries = Parse(bytes + std::string("x\0y\0\0", 5));
  EXPECT_EQ(entries, (Entries{std::string(1023, 'b'), "xy"}));
}

TEST(ImAddressFile, EntryKeeps1023Bytes) {
  EXPECT_EQ(Parse(Head() + std::string(1023, 'x') + std::string(2, '\0'))[0].size(), 1023U);
  EXPECT_EQ(Parse(Head() + std::string(1024, 'x') + std::string(2, '\0'))[0].size(), 1023U);
}

TEST(ImAddressFile, EveryPrefixGivesTheEntriesBeforeTheCut) {
  const std::string bytes = test::MakeImAddressFile({L"a@b", L"c@d"});
  for (size_t size = 0; size < bytes.size(); size += size == 480 ? 4900 : 1) {
    const Entries entries = Parse(bytes.substr(0, size));
    if (!entries.empty()) {
      EXPECT_TRUE(std::string("a@b").starts_with(entries[0]));
    }
    EXPECT_LE(entries.size(), 2U);
  }
}

class ImContacts : public testing::Test {
 protected:
  AddressSet Collect(PacedStop stop = PacedStop()) {
    AddressSet addresses;
    CollectContactsOf(m_identity.Directory(), &stop, &addresses);
    return addresses;
  }

  test::TempFolder m_folder;
  test::ImIdentityFolder m_identity{m_folder.Path() / "{1}"};
};

TEST_F(ImContacts, OfTheDatabaseAreTakenInLowerCase) {
  test::ImDatabase(m_identity.AddressFile("AddrBook.db3"))
      .AddContacts({L"Ann@Example.COM", L"ann@example.com", L"\u00C4rzte@x", L""});
  EXPECT_EQ(Collect(), (AddressSet{L"", L"ann@example.com", L"\u00E4rzte@x"}));
}

TEST_F(ImContacts, OfTheOlderBookAreTakenAsTheyStand) {
  test::WriteFile(m_identity.AddressFile("AddressBook.imb"),
                  test::MakeImAddressFile({L"Ann@Example.COM", L"J\u00FCrgen@x"}));
  EXPECT_EQ(Collect(), (AddressSet{L"Ann@Example.COM", L"J\u00FCrgen@x"}));
}

TEST_F(ImContacts, OlderBookIsNotReadBesideADatabase) {
  test::WriteFile(m_identity.AddressFile("AddressBook.imb"), test::MakeImAddressFile({L"older@x"}));
  test::ImDatabase(m_identity.AddressFile("AddrBook.db3")).AddContacts({L"newer@x"});
  EXPECT_EQ(Collect(), AddressSet{L"newer@x"});
  test::WriteFile(m_identity.AddressFile("AddrBook.db3"), "no database");
  EXPECT_EQ(Collect(), AddressSet{});
}

TEST_F(ImContacts, DatabaseThatIsLockedOrLacksTheTableAddsNothing) {
  const std::wstring path = m_identity.AddressFile("AddrBook.db3");
  test::ImDatabase(path).Run("CREATE TABLE Other (Email TEXT)");
  EXPECT_EQ(Collect(), AddressSet{});
  test::ImDatabase client(path);
  client.AddContacts({L"ann@x"});
  client.Run("BEGIN EXCLUSIVE");
  EXPECT_EQ(Collect(), AddressSet{});
  client.Run("COMMIT");
  EXPECT_EQ(Collect(), AddressSet{L"ann@x"});
}

TEST_F(ImContacts, StopIsAskedAfterEveryHundredEntriesAndKeepsThoseBefore) {
  std::vector<std::wstring> entries;
  for (int i = 0; i < 1000; ++i) {
    entries.push_back(L"contact" + std::to_wstring(i) + L"@x");
  }
  const auto stopAtTheThird = [] {
    return PacedStop([asked = 0]() mutable { return ++asked == 3; });
  };
  test::WriteFile(m_identity.AddressFile("AddressBook.imb"), test::MakeImAddressFile(entries));
  EXPECT_EQ(Collect(stopAtTheThird()).size(), 300U);
  test::ImDatabase database(m_identity.AddressFile("AddrBook.db3"));
  database.Run("BEGIN");
  database.AddContacts(entries);
  database.Run("COMMIT");
  EXPECT_EQ(Collect(stopAtTheThird()).size(), 300U);
  EXPECT_EQ(Collect().size(), 1000U);
}

TEST_F(ImContacts, WithoutABookNothingIsAdded) {
  EXPECT_EQ(Collect(), AddressSet{});
}

}  // namespace
}  // namespace postmarker
