// The silent harvest of all clients.
#include <windows.h>

#include <combaseapi.h>
#include <gmock/gmock.h>

#include <functional>

#include "clients/ClientTable.h"
#include "clients/WhitelistPrefill_win.h"
#include "module/ModuleFixture_win.h"
#include "support/SuiteKeys.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

// What the crashing peer is asked for.
constexpr int kAccessViolation = 1;
constexpr int kStackOverflow = 2;
constexpr int kOwnCode = 3;

// The stand-in for a client's module with a fault.
class CrashingPeer {
 public:
  CrashingPeer()
      : m_library(::LoadLibraryW(
            (TestProgramFolder().parent_path() / L"peers" / L"suite" / L"CrashOnDemand.dll")
                .wstring()
                .c_str())) {}
  [[nodiscard]] bool IsLoaded() const { return static_cast<bool>(m_library); }
  void Crash(int kind) const {
    using Function = int(__stdcall*)(int kind);
    const auto crash = reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(m_library.Get(), "CrashOnDemand")));
    crash(kind);
  }

 private:
  LibraryHandle m_library;
};

class HarvestedClient : public MailClientAdapter {
 public:
  AddressSet addresses;
  std::function<void()> afterwards;  // when the addresses have been given
  mutable int harvests = 0;
  mutable bool hadCallbacks = false;
  mutable bool wasInApartment = false;

  ResultCode CollectSentAddresses(const ClientSession& /*session*/,
                                  const ProgressCallbacks* callbacks,
                                  AddressSet* out) const override {
    ++harvests;
    hadCallbacks = callbacks != nullptr;
    // A thread that is in an apartment may ask what its objects are called for.
    ULONG_PTR token = 0;
    wasInApartment = SUCCEEDED(::CoGetContextToken(&token));
    out->insert(addresses.begin(), addresses.end());
    if (afterwards) {
      afterwards();
    }
    return kOk;
  }
};

bool Always(const MachineView& /*machine*/) {
  return true;
}
bool Never(const MachineView& /*machine*/) {
  return false;
}

class HarvestTest : public testing::Test {
 protected:
  HarvestTest() {
    m_first.addresses = {L"first@a.org"};
    m_second.addresses = {L"second@a.org"};
    m_third.addresses = {L"third@a.org"};
  }

  HarvestedClient m_first;
  HarvestedClient m_second;
  HarvestedClient m_third;
  // Their turns are not the order of the rows.
  std::array<ClientRow, 4> m_rows = {{
      {.displayName = L"Third", .harvestTurn = 3, .adapter = &m_third, .isInstalled = Always},
      {.displayName = L"First", .harvestTurn = 1, .adapter = &m_first, .isInstalled = Always},
      {.displayName = L"Same store", .adapter = &m_first, .isInstalled = Always},
      {.displayName = L"Second", .harvestTurn = 2, .adapter = &m_second, .isInstalled = Always},
  }};
  RegistrySandbox m_registry;
  ScopedClientTable m_table{m_rows};
};

TEST_F(HarvestTest, EveryClientsAddressesReachTheAllowedList) {
  HarvestAllClients();
  EXPECT_THAT(Whitelist(), ElementsAre(L"first@a.org", L"second@a.org", L"third@a.org"));
  EXPECT_EQ(m_first.harvests, 1);
  EXPECT_FALSE(m_first.hadCallbacks);
}

TEST_F(HarvestTest, HarvestedAddressLeavesTheBlockedList) {
  AddAddressToBlacklist(L"first@a.org", false);
  AddAddressToBlacklist(L"other@a.org", false);
  HarvestAllClients();
  EXPECT_FALSE(IsAddressBlacklisted(L"first@a.org"));
  EXPECT_TRUE(IsAddressBlacklisted(L"other@a.org"));
}

TEST_F(HarvestTest, ClientsTakeTheirTurns) {
  std::vector<int> order;
  m_first.afterwards = [&order] { order.push_back(1); };
  m_second.afterwards = [&order] { order.push_back(2); };
  m_third.afterwards = [&order] { order.push_back(3); };
  HarvestAllClients();
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(HarvestTest, ClientThatIsNotInstalledIsLeftAlone) {
  m_rows[3].isInstalled = Never;
  m_rows[0].isInstalled = {};
  HarvestAllClients();
  EXPECT_THAT(Whitelist(), ElementsAre(L"first@a.org"));
}

TEST_F(HarvestTest, CrashInOneClientLeavesTheOthersRunning) {
  const CrashingPeer peer;
  ASSERT_TRUE(peer.IsLoaded());
  for (const int kind : {kAccessViolation, kStackOverflow, kOwnCode}) {
    SCOPED_TRACE(kind);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software");
    m_second.afterwards = [&peer, kind] { peer.Crash(kind); };
    HarvestAllClients();
    EXPECT_THAT(Whitelist(), ElementsAre(L"first@a.org", L"third@a.org"));
  }
}

TEST_F(HarvestTest, CrashInEveryClientEndsNothingButTheirHarvests) {
  const CrashingPeer peer;
  ASSERT_TRUE(peer.IsLoaded());
  for (HarvestedClient* client : {&m_first, &m_second, &m_third}) {
    client->afterwards = [&peer] { peer.Crash(kStackOverflow); };
  }
  const KernelHandle thread = LaunchWhitelistPrefill();
  EXPECT_EQ(::WaitForSingleObject(thread.Get(), 10000), WAIT_OBJECT_0);
  EXPECT_TRUE(Whitelist().empty());
  EXPECT_EQ(m_third.harvests, 1);
}

TEST_F(HarvestTest, ExceptionOfAClientEndsItsHarvestOnly) {
  m_first.afterwards = [] { throw std::bad_alloc(); };
  HarvestAllClients();
  EXPECT_THAT(Whitelist(), ElementsAre(L"second@a.org", L"third@a.org"));
}

TEST_F(HarvestTest, ClientsAreHarvestedInNoApartment) {
  const KernelHandle thread = LaunchWhitelistPrefill();
  ASSERT_EQ(::WaitForSingleObject(thread.Get(), 10000), WAIT_OBJECT_0);
  ASSERT_EQ(m_first.harvests, 1);
  EXPECT_FALSE(m_first.wasInApartment);
}

TEST_F(HarvestTest, LaunchNotesThatItWasStarted) {
  const KernelHandle thread = LaunchWhitelistPrefill();
  EXPECT_EQ(RegistryKey::Open(HKEY_CURRENT_USER, kSpamfilterKey, KEY_READ | SuiteKeyView())
                .ReadDword(L"WhitelistPrefilled"),
            1U);
  EXPECT_EQ(::WaitForSingleObject(thread.Get(), 10000), WAIT_OBJECT_0);
  EXPECT_THAT(Whitelist(), ElementsAre(L"first@a.org", L"second@a.org", L"third@a.org"));
}

class PrefillExportTest : public ModuleFixture {};

TEST_F(PrefillExportTest, StartNotesItselfAndTheModuleStaysUntilTheHarvestEnded) {
  Load();
  m_module->StartWhitelistPrefill();
  Unload();
  EXPECT_EQ(RegistryKey::Open(HKEY_CURRENT_USER, kSpamfilterKey, KEY_READ | SuiteKeyView())
                .ReadDword(L"WhitelistPrefilled"),
            1U);
  EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }));
}

}  // namespace
}  // namespace postmarker::test
