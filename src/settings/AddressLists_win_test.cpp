#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/AddressLists.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

using test::DumpRegistry;
using test::RegistrySandbox;
using testing::ElementsAre;
using testing::IsEmpty;

class RegistryAddressLists : public testing::Test {
 protected:
  RegistrySandbox m_sandbox;
};

TEST_F(RegistryAddressLists, EntryIsATextWithoutDataInTheListsKey) {
  EXPECT_EQ(AddListEntry(L"A@b.com", kWhitelistAddresses), 0);
  EXPECT_EQ(AddListEntry(L"a@B.com", kWhitelistAddresses), 0);
  EXPECT_THAT(DumpRegistry(m_sandbox.User()),
              ElementsAre("Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter\\WhitelistAddresses | "
                          "A@b.com | REG_SZ | ",
                          "[Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter\\WhitelistAddresses]",
                          "[Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter]",
                          "[Software\\Kestrelon Ltd.\\Kestrelon]", "[Software\\Kestrelon Ltd.]",
                          "[Software]"));
  ListEntries entries;
  GetWhitelistAddresses(&entries);
  EXPECT_EQ(entries, (ListEntries{{L"a@b.com", L""}}));
}

TEST_F(RegistryAddressLists, AddingWithTheFlagMovesAnEntryBetweenLists) {
  AddAddressToBlacklist(L"x@y.org", true);
  EXPECT_TRUE(IsAddressBlacklisted(L"X@y.org"));
  AddAddressToWhitelist(L"x@y.org", true);
  EXPECT_TRUE(IsAddressWhitelisted(L"x@y.org"));
  EXPECT_FALSE(IsAddressBlacklisted(L"x@y.org"));
}

TEST_F(RegistryAddressLists, EmptyAddressCreatesNoKey) {
  EXPECT_EQ(AddAddressToWhitelist(L"", true), 1);
  EXPECT_THAT(DumpRegistry(m_sandbox.User()), IsEmpty());
}

TEST_F(RegistryAddressLists, MissingListReadsAsEmptyAndIsNotCreated) {
  ListEntries entries = {{L"left over", L""}};
  GetBlacklistDomains(&entries);
  EXPECT_THAT(entries, IsEmpty());
  EXPECT_FALSE(IsDomainBlacklisted(L"y.org"));
  EXPECT_THAT(DumpRegistry(m_sandbox.User()), IsEmpty());
}

TEST_F(RegistryAddressLists, LongestEntryIsReadAndALongerOneEndsTheWalk) {
  AddListEntry(std::wstring(259, L'a'), kWhitelistDomains);
  ListEntries entries;
  GetWhitelistDomains(&entries);
  EXPECT_EQ(entries, (ListEntries{{std::wstring(259, L'a'), L""}}));
  AddListEntry(std::wstring(260, L'a'), kBlacklistDomains);
  GetBlacklistDomains(&entries);
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(RegistryAddressLists, TenThousandAndOneEntriesGiveTheFirst10000InTheRegistrysOrder) {
  const RegistryKey key = RegistryKey::Create(
      HKEY_CURRENT_USER, std::wstring(kSpamfilterKey) + kWhitelistAddresses, KEY_READ | KEY_WRITE);
  for (int i = 0; i < 10'001; ++i) {
    ASSERT_TRUE(key.WriteBytes((std::to_wstring(i) + L"@b.com").c_str(), REG_SZ, nullptr, 0));
  }
  wchar_t last[260];
  DWORD length = 260;
  ASSERT_EQ(::RegEnumValueW(key.Get(), 10'000, last, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_SUCCESS);
  ListEntries entries;
  GetWhitelistAddresses(&entries);
  EXPECT_EQ(entries.size(), 10'000U);
  EXPECT_FALSE(entries.contains(last));
}

TEST_F(RegistryAddressLists, ListThatDeniesWritesKeepsItsEntriesAndReportsMinusOne) {
  AddListEntry(L"old@b.com", kWhitelistAddresses);
  test::DenyWrites(HKEY_CURRENT_USER, std::wstring(kSpamfilterKey) + kWhitelistAddresses);
  EXPECT_EQ(AddListEntry(L"new@b.com", kWhitelistAddresses), -1);
  EXPECT_EQ(RemoveListEntry(L"old@b.com", kWhitelistAddresses), -1);
  EXPECT_EQ(AddAddressToWhitelist(L"new@b.com", true), 0);
  ListEntries entries;
  GetWhitelistAddresses(&entries);
  EXPECT_EQ(entries, (ListEntries{{L"old@b.com", L""}}));
}

TEST(RegistryThatTakesNoKeys, AddingReportsMinusOne) {
  const RegistrySandbox sandbox(test::Redirect::kUser, test::NewKeys::kRefused);
  EXPECT_EQ(AddListEntry(L"new@b.com", kWhitelistAddresses), -1);
  EXPECT_EQ(RemoveListEntry(L"new@b.com", kWhitelistAddresses), -1);
  EXPECT_THAT(DumpRegistry(sandbox.User()), IsEmpty());
}

}  // namespace
}  // namespace postmarker
