#include "settings/AddressLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/MemorySettingsStore.h"

namespace postmarker {
namespace {

using test::MemorySettingsStore;
using testing::ElementsAre;
using testing::IsEmpty;

class AddressLists : public testing::Test {
 protected:
  ListEntries Read(const std::wstring& list) {
    ListEntries entries = {{L"left over", L""}};
    ReadList(&entries, list, m_store);
    return entries;
  }

  MemorySettingsStore m_store;
};

TEST_F(AddressLists, EntryIsAValueOfItsNameWithoutData) {
  EXPECT_EQ(AddListEntry(L"A@b.com", kWhitelistAddresses, m_store), 0);
  EXPECT_THAT(m_store.Dump(), ElementsAre("\\WhitelistAddresses | A@b.com | 1 | "));
}

TEST_F(AddressLists, EntriesAreReadInLowerCase) {
  AddListEntry(L"A@b.com", kWhitelistAddresses, m_store);
  EXPECT_EQ(Read(kWhitelistAddresses), (ListEntries{{L"a@b.com", L""}}));
}

TEST_F(AddressLists, AddingTwiceLeavesOneValue) {
  AddListEntry(L"a@b.com", kWhitelistAddresses, m_store);
  AddListEntry(L"A@B.com", kWhitelistAddresses, m_store);
  EXPECT_EQ(m_store.keys[kWhitelistAddresses].size(), 1U);
}

TEST_F(AddressLists, ListThatCannotBeCreatedGivesMinusOne) {
  m_store.refusesAll = true;
  EXPECT_EQ(AddListEntry(L"a@b.com", kWhitelistAddresses, m_store), -1);
  EXPECT_EQ(RemoveListEntry(L"a@b.com", kWhitelistAddresses, m_store), -1);
  EXPECT_EQ(AddAddressToWhitelist(L"a@b.com", true, m_store), 0) << "not reported";
}

TEST_F(AddressLists, RemovingFromAMissingListCreatesIt) {
  EXPECT_EQ(RemoveListEntry(L"a@b.com", kBlacklistDomains, m_store), 0);
  EXPECT_TRUE(m_store.keys.contains(kBlacklistDomains));
}

TEST_F(AddressLists, RemovedEntryIsGone) {
  AddListEntry(L"a@b.com", kWhitelistAddresses, m_store);
  EXPECT_EQ(RemoveListEntry(L"A@B.COM", kWhitelistAddresses, m_store), 0);
  EXPECT_FALSE(HasListEntry(L"a@b.com", kWhitelistAddresses, m_store));
}

TEST_F(AddressLists, EntryIsFoundWithoutRegardToCaseOnItsOwnListOnly) {
  EXPECT_FALSE(HasListEntry(L"a@b.com", kWhitelistAddresses, m_store));
  AddListEntry(L"A@b.com", kWhitelistAddresses, m_store);
  EXPECT_TRUE(HasListEntry(L"a@B.com", kWhitelistAddresses, m_store));
  EXPECT_FALSE(HasListEntry(L"a@b.com", kBlacklistAddresses, m_store));
  EXPECT_FALSE(HasListEntry(L"b.com", kWhitelistAddresses, m_store));
}

TEST_F(AddressLists, ForeignEntryWithMuchDataIsNotFound) {
  m_store.SetBinary(kWhitelistAddresses, L"full@b.com", std::vector<uint8_t>(260, 1));
  m_store.SetBinary(kWhitelistAddresses, L"over@b.com", std::vector<uint8_t>(261, 1));
  EXPECT_TRUE(HasListEntry(L"full@b.com", kWhitelistAddresses, m_store));
  EXPECT_FALSE(HasListEntry(L"over@b.com", kWhitelistAddresses, m_store));
}

TEST_F(AddressLists, ReadingAMissingListGivesNothing) {
  EXPECT_THAT(Read(kBlacklistDomains), IsEmpty());
}

TEST_F(AddressLists, ReadingLeavesOutTheNamelessValue) {
  m_store.SetText(kWhitelistAddresses, L"", L"default");
  m_store.SetText(kWhitelistAddresses, L"a@b.com", L"");
  EXPECT_EQ(Read(kWhitelistAddresses), (ListEntries{{L"a@b.com", L""}}));
}

TEST_F(AddressLists, ReadingEndsAtTheFirstNameThatDoesNotFit) {
  m_store.SetText(kWhitelistAddresses, std::wstring(259, L'a'), L"");
  m_store.SetText(kWhitelistAddresses, std::wstring(260, L'b'), L"");
  m_store.SetText(kWhitelistAddresses, L"c@d.com", L"");
  EXPECT_EQ(Read(kWhitelistAddresses), (ListEntries{{std::wstring(259, L'a'), L""}}));
}

TEST_F(AddressLists, ReadingStopsAfter10000Entries) {
  for (int i = 10'000; i <= 20'000; ++i) {
    m_store.SetText(kWhitelistAddresses, std::to_wstring(i) + L"@b.com", L"");
  }
  const ListEntries entries = Read(kWhitelistAddresses);
  EXPECT_EQ(entries.size(), 10'000U);
  EXPECT_FALSE(entries.contains(L"20000@b.com")) << "the last in the store's order";
}

TEST_F(AddressLists, EmptyTextReturnsOneAndCreatesNothing) {
  EXPECT_EQ(AddAddressToWhitelist(L"", true, m_store), 1);
  EXPECT_EQ(AddAddressToBlacklist(L"", true, m_store), 1);
  EXPECT_EQ(AddDomainToWhitelist(L"", true, m_store), 1);
  EXPECT_EQ(AddDomainToBlacklist(L"", true, m_store), 1);
  EXPECT_THAT(m_store.log, IsEmpty());
}

TEST_F(AddressLists, AddingWithTheFlagMovesTheEntryFromTheOtherList) {
  const struct {
    decltype(&AddAddressToWhitelist) add;
    const wchar_t* list;
    const wchar_t* other;
  } cases[] = {{AddAddressToWhitelist, kWhitelistAddresses, kBlacklistAddresses},
               {AddAddressToBlacklist, kBlacklistAddresses, kWhitelistAddresses},
               {AddDomainToWhitelist, kWhitelistDomains, kBlacklistDomains},
               {AddDomainToBlacklist, kBlacklistDomains, kWhitelistDomains}};
  for (const auto& one : cases) {
    m_store.keys.clear();
    AddListEntry(L"x@y.org", one.other, m_store);
    EXPECT_EQ(one.add(L"X@y.org", true, m_store), 0);
    EXPECT_TRUE(HasListEntry(L"x@y.org", one.list, m_store));
    EXPECT_FALSE(HasListEntry(L"x@y.org", one.other, m_store));
    EXPECT_EQ(m_store.keys.size(), 2U) << "no other list is touched";
  }
}

TEST_F(AddressLists, AddingWithoutTheFlagLeavesTheEntryOnBothLists) {
  AddListEntry(L"x@y.org", kBlacklistAddresses, m_store);
  EXPECT_EQ(AddAddressToWhitelist(L"x@y.org", false, m_store), 0);
  EXPECT_TRUE(IsAddressWhitelisted(L"x@y.org", m_store));
  EXPECT_TRUE(IsAddressBlacklisted(L"x@y.org", m_store));
}

TEST_F(AddressLists, DomainOfAnAddressIsWhatFollowsItsFirstAt) {
  AddListEntry(L"x.y.org", kBlacklistDomains, m_store);
  EXPECT_TRUE(IsDomainBlacklisted(L"user@x.y.org", m_store));
  EXPECT_TRUE(IsDomainBlacklisted(L"x.y.org", m_store));
  EXPECT_FALSE(IsDomainBlacklisted(L"y.org", m_store));
  EXPECT_FALSE(IsDomainWhitelisted(L"user@x.y.org", m_store));
  AddListEntry(L"b@c.org", kBlacklistDomains, m_store);
  EXPECT_TRUE(IsDomainBlacklisted(L"a@b@c.org", m_store));
  AddListEntry(L"c.org", kWhitelistDomains, m_store);
  EXPECT_FALSE(IsDomainWhitelisted(L"a@b@c.org", m_store));
  EXPECT_TRUE(IsDomainWhitelisted(L"a@c.org", m_store));
}

TEST_F(AddressLists, NamedReadersAndRemoversWorkOnTheirOwnLists) {
  const struct {
    decltype(&GetWhitelistAddresses) get;
    decltype(&RemoveWhitelistAddresses) remove;
    const wchar_t* list;
  } cases[] = {{GetWhitelistAddresses, RemoveWhitelistAddresses, kWhitelistAddresses},
               {GetBlacklistAddresses, RemoveBlacklistAddresses, kBlacklistAddresses},
               {GetWhitelistDomains, RemoveWhitelistDomains, kWhitelistDomains},
               {GetBlacklistDomains, RemoveBlacklistDomains, kBlacklistDomains}};
  for (const auto& one : cases) {
    for (const wchar_t* const entry : {L"stays", L"goes", L"goes too"}) {
      AddListEntry(entry, one.list, m_store);
    }
    one.remove({{L"goes", L""}, {L"goes too", L""}, {L"was never there", L""}}, m_store);
    ListEntries entries;
    one.get(&entries, m_store);
    EXPECT_EQ(entries, (ListEntries{{L"stays", L""}}));
  }
  EXPECT_EQ(m_store.keys.size(), 4U);
}

}  // namespace
}  // namespace postmarker
