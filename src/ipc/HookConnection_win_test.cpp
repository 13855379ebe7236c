// Conversations with a stand-in for a module inside a client, which can misbehave.
#include "ipc/HookConnection_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <optional>

#include "ipc/ChannelWaits_win.h"
#include "support/ChannelPair_win.h"
#include "support/PeerProcess_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kTime = 5'000;
constexpr uint32_t kShortTime = 150;

const MailFolderRef kInbox = {L"\\\\Post\\Inbox", "1", "s", 1};
const MailFolderRef kStrange = {L"\\\\Post\\a#-#b \x3B1\x4E2D", "i#d", "s", 0};

json ToJson(const MailFolderRef& folder) {
  return {{"name", NarrowUtf8(folder.name)},
          {"firstId", folder.firstId},
          {"secondId", folder.secondId},
          {"flag", folder.flag}};
}

// The stand-in is one process for all tests, as long as it lives.
class HookConnectionTest : public testing::Test {
 protected:
  static void TearDownTestSuite() { s_peer.reset(); }

  // Sees to it that the module runs and answers from the usual mailbox, with these changes.
  void StartModule(const json& more = json::object()) {
    json state = {{"module", NarrowUtf8(m_module)},
                  {"text", "to be kept"},
                  {"folders", {ToJson(kInbox), ToJson(kStrange)}},
                  {"lookup", {{"4", ToJson(kStrange)}}},
                  {"contacts", {"b@x.example", "A@x.example", "b@x.example"}},
                  {"sent", {"c@x.example"}}};
    state.update(more);
    test::WriteFile(m_stateFile, state.dump());
    const bool inHandshake = more.contains("fault") && more["fault"].contains("step");
    if (!s_peer || s_peer->WaitForExit(0) != -1 || inHandshake) {
      s_peer.reset();
      s_peer.emplace(test::StartPeer(test::PeerPath(L"hookmodule\\hookmodule.exe"), {m_stateFile}));
    }
  }
  void StartFaultyModule(const json& fault) { StartModule({{"fault", fault}}); }

  // Ends the process, from outside.
  static void KillModule() { s_peer.reset(); }

  static inline const test::TempFolder s_folder;
  static inline const std::wstring s_module = test::FreshObjectName().substr(6) + L".dll";
  static inline std::optional<test::PeerProcess> s_peer;

  std::wstring m_stateFile = s_folder.PathOf("state.json");
  std::wstring m_module = s_module;

  std::wstring m_text = L"(as before)";
  MailFolderList m_folders;
  MailFolderRef m_record = {L"(as before)", "", "", 0};
  AddressSet m_addresses = {L"before"};
};

// The event of a module that serves nothing.
class UnreachableModule {
 public:
  [[nodiscard]] std::wstring Name() const { return m_name; }

 private:
  std::wstring m_name = test::FreshObjectName().substr(6) + L".dll";
  KernelHandle m_event{
      ::CreateEventW(nullptr, TRUE, FALSE, (L"Local\\Kestrelon." + m_name + L".Event").c_str())};
};

TEST_F(HookConnectionTest, WithoutTheEventItFailsAtOnce) {
  const ElapsedTime elapsed;
  HookConnection hook(L"nobody.dll", kTime);
  EXPECT_EQ(hook.Status(), static_cast<ResultCode>(0x80004005));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), kFail);
  EXPECT_EQ(hook.LookUpFolder(4, &m_record), kFail);
  EXPECT_EQ(hook.ListContacts(&m_addresses), kFail);
  EXPECT_EQ(hook.ListSentAddresses(&m_addresses), kFail);
  EXPECT_EQ(hook.MakeFolder(L"x", kInbox, &m_record), kFail);
  EXPECT_FALSE(elapsed.IsMoreThan(4'000));
  EXPECT_EQ(m_text, L"(as before)");
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
}

TEST_F(HookConnectionTest, EventWithoutAChannelIsAnEmptyAnswer) {
  const UnreachableModule module;
  const ElapsedTime elapsed;
  HookConnection hook(module.Name(), kShortTime);
  EXPECT_TRUE(elapsed.IsMoreThan(kShortTime - 1));
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_EQ(hook.Status(), static_cast<ResultCode>(0x8001011F));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(hook.LookUpFolder(4, &m_record), 0);
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_EQ(hook.ListSentAddresses(&m_addresses), 0);
  EXPECT_EQ(hook.MakeFolder(L"x", kInbox, &m_record), 0);
  EXPECT_EQ(m_text, L"(as before)");
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_EQ(m_record, MailFolderRef());
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
}

TEST(SharedMemClient, WithoutTheEventItFailsWithoutAnyWaiting) {
  const std::wstring module = test::FreshObjectName().substr(6);
  for (const ChannelKind kind : {ChannelKind::kLocal, ChannelKind::kGlobal}) {
    // The channel alone is not looked at.
    auto server =
        test::ListenInBackground(ModuleTunnelName(module, kind), {kind, nullptr, 50, 4096, 50});
    const ElapsedTime elapsed;
    const SharedMemClient client(module, kind, 20'000);
    EXPECT_FALSE(elapsed.IsMoreThan(4'000));
    EXPECT_EQ(client.Status(), kFail);
    EXPECT_EQ(client.Channel(), nullptr);
    EXPECT_EQ(server.get(), nullptr);
  }
}

TEST(SharedMemClient, GlobalKindsMeetInTheNameSpaceOfTheMachine) {
  const std::wstring module = test::FreshObjectName().substr(6);
  const KernelHandle event(
      ::CreateEventW(nullptr, TRUE, FALSE, (L"Global\\Kestrelon." + module + L".Event").c_str()));
  ListenOptions options = test::PatientListening();
  options.kind = ChannelKind::kGlobalLowIntegrity;
  auto server = test::ListenInBackground(L"Global\\Kestrelon." + module + L".Tunnel", options);
  const SharedMemClient client(module, ChannelKind::kGlobalLowIntegrity, 20'000);
  EXPECT_EQ(client.Status(), 0);
  EXPECT_NE(client.Channel(), nullptr);
  EXPECT_NE(server.get(), nullptr);
  EXPECT_EQ(SharedMemClient(module, ChannelKind::kLocal, 20'000).Status(), kFail);
}

TEST_F(HookConnectionTest, FoldersComeBehindATextThatTheCallerKeeps) {
  StartModule();
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.Status(), 0);
  m_folders = {kInbox};
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_text, L"to be kept");
  EXPECT_THAT(m_folders, ElementsAre(kInbox, kInbox, kStrange));
}

TEST_F(HookConnectionTest, FolderIsLookedUpByItsIndex) {
  StartModule();
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.LookUpFolder(4, &m_record), 0);
  EXPECT_EQ(m_record, kStrange);
  EXPECT_EQ(hook.LookUpFolder(5, &m_record), 0);
  EXPECT_EQ(m_record, MailFolderRef());
}

TEST_F(HookConnectionTest, AddressesAreAddedAsTheyStand) {
  StartModule();
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"A@x.example", L"b@x.example", L"before"));
  EXPECT_EQ(hook.ListSentAddresses(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"A@x.example", L"b@x.example", L"before", L"c@x.example"));
}

TEST_F(HookConnectionTest, EmptyListsAreLists) {
  StartModule({{"folders", json::array()}, {"contacts", json::array()}});
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
}

TEST_F(HookConnectionTest, FolderIsMadeBelowItsParent) {
  StartModule();
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.MakeFolder(L"Spam #1", kStrange, &m_record), 0);
  EXPECT_EQ(m_record, (MailFolderRef{kStrange.name + L"\\Spam #1", "new-1", "made", 1}));
  const json state = json::parse(test::ReadFile(m_stateFile));
  EXPECT_EQ(state["created"][0], ToJson(m_record)) << "it is in the client's mailbox";
}

TEST_F(HookConnectionTest, ConnectingOnceMoreTakesTheOtherModule) {
  StartModule();
  HookConnection hook(L"nobody.dll", kTime);
  EXPECT_EQ(hook.Status(), kFail);
  hook.Connect(m_module);
  EXPECT_EQ(hook.Status(), 0);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_folders.size(), 2U);
  hook.Connect(L"nobody.dll");
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), kFail);
}

TEST_F(HookConnectionTest, ConnectionsComeOneAfterAnother) {
  StartModule();
  for (int i = 0; i < 3; ++i) {
    HookConnection hook(m_module, kTime);
    EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  }
  EXPECT_EQ(m_folders.size(), 6U);
}

TEST_F(HookConnectionTest, FirstAnswerMayTakeTenTimesTheTimeOfAStep) {
  StartFaultyModule({{"do", "late"}, {"command", 1}, {"message", 0}, {"milliseconds", 450}});
  HookConnection hook(m_module, 300);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_folders.size(), 2U);
}

TEST_F(HookConnectionTest, LaterAnswerMayTakeTheTimeOfAStepOnly) {
  StartFaultyModule({{"do", "late"}, {"command", 1}, {"message", 3}, {"milliseconds", 600}});
  HookConnection hook(m_module, 200);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, ElementsAre(kInbox)) << "the second folder came too late";
}

TEST_F(HookConnectionTest, LongTimeDoesNotOverflow) {
  StartModule();
  HookConnection hook(m_module, 0xFFFF'FFFE);
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_EQ(m_addresses.size(), 3U);
}

// What arrives of the folder list when the module fails at one of its messages.
struct BrokenList {
  const char* name;
  json fault;
  size_t folders;
};

class BrokenListTest : public HookConnectionTest, public testing::WithParamInterface<BrokenList> {};

TEST_P(BrokenListTest, CommandReturns0WithWhatHasArrived) {
  StartFaultyModule(GetParam().fault);
  const ElapsedTime elapsed;
  HookConnection hook(m_module, kShortTime);
  ASSERT_EQ(hook.Status(), 0);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_EQ(m_folders.size(), GetParam().folders);
  if (GetParam().folders > 0) {
    EXPECT_EQ(m_folders.front(), kInbox);
  }
}

json At(const char* what, int message) {
  return {{"do", what}, {"command", 1}, {"message", message}};
}

json Saying(json value, int message) {
  return {{"do", value.is_string() ? "text" : "say"},
          {"command", 1},
          {"message", message},
          {"value", value}};
}

INSTANTIATE_TEST_SUITE_P(Faults, BrokenListTest,
                         testing::Values(BrokenList{"DiesBeforeTheText", At("die", 0), 0},
                                         BrokenList{"DiesBeforeTheCount", At("die", 1), 0},
                                         BrokenList{"DiesInTheList", At("die", 3), 1},
                                         BrokenList{"HangsInTheList", At("hang", 3), 1},
                                         BrokenList{"CountIsAText", Saying("two", 1), 0},
                                         BrokenList{"TextIsANumber", Saying(7, 0), 0},
                                         BrokenList{"CountIsTooLarge", Saying(5, 1), 2},
                                         BrokenList{"CountIsTheLargest", Saying(0xFFFF'FFFFU, 1),
                                                    2},
                                         BrokenList{"CountIsTooSmall", Saying(1, 1), 1},
                                         BrokenList{"OddLength", At("odd", 3), 1},
                                         BrokenList{"LengthBeyondTheRegion", At("beyond", 3), 1},
                                         BrokenList{"LengthOfAllBits", At("huge", 3), 1},
                                         BrokenList{"UnknownType", At("type", 3), 1}),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(HookConnectionTest, NonsenseInsteadOfAFolderIsAnEmptyRecord) {
  StartFaultyModule(Saying("nonsense", 3));
  HookConnection hook(m_module, kTime);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, ElementsAre(kInbox, MailFolderRef()));
}

TEST_F(HookConnectionTest, LengthThatChangesWhileItIsReadIsNoHarm) {
  StartFaultyModule(At("flicker", 3));
  HookConnection hook(m_module, kShortTime);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  ASSERT_GE(m_folders.size(), 1U);
  EXPECT_LE(m_folders.size(), 2U);
  EXPECT_EQ(m_folders.front(), kInbox);
}

TEST_F(HookConnectionTest, ModuleThatDiesWhileAFolderIsMadeGivesAnEmptyRecord) {
  StartFaultyModule({{"do", "die"}, {"command", 5}, {"message", 0}});
  HookConnection hook(m_module, kShortTime);
  EXPECT_EQ(hook.MakeFolder(L"x", kInbox, &m_record), 0);
  EXPECT_EQ(m_record, MailFolderRef());
}

TEST_F(HookConnectionTest, ModuleKilledFromOutsideEndsACommandWithinItsTime) {
  StartModule();
  HookConnection hook(m_module, kShortTime);
  KillModule();
  const ElapsedTime elapsed;
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
  HookConnection again(m_module, kShortTime);
  EXPECT_EQ(again.Status(), kFail) << "its event is gone with it";
}

TEST_F(HookConnectionTest, ModuleThatStopsInTheHandshakeIsUnreachable) {
  StartFaultyModule({{"do", "hang"}, {"step", "claimed"}});
  const ElapsedTime elapsed;
  HookConnection hook(m_module, kShortTime);
  EXPECT_EQ(hook.Status(), kModuleUnreachable);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  KillModule();
}

// Hook first, store second.
class HookFirstTest : public HookConnectionTest {
 protected:
  ResultCode Run(bool useHook, const std::function<ResultCode(HookConnection&)>& ask) {
    const auto store = [this] {
      ++m_stores;
      return ResultCode{7};
    };
    return HookFirst(useHook, m_module, ask, store, kShortTime);
  }
  ResultCode RunListing(bool useHook = true) {
    return Run(useHook, [this](HookConnection& hook) {
      ++m_asks;
      return hook.ListFolders(&m_text, &m_folders);
    });
  }

  int m_asks = 0;
  int m_stores = 0;
};

TEST_F(HookFirstTest, AnswerOfTheModuleKeepsTheStoreClosed) {
  StartModule();
  EXPECT_EQ(RunListing(), 0);
  EXPECT_EQ(m_folders.size(), 2U);
  EXPECT_EQ(m_stores, 0);
}

TEST_F(HookFirstTest, EmptyAnswerKeepsTheStoreClosedAsWell) {
  StartModule({{"folders", json::array()}});
  EXPECT_EQ(RunListing(), 0);
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_EQ(m_stores, 0);
}

TEST_F(HookFirstTest, WithoutTheModuleTheStoreIsAsked) {
  m_module = L"nobody.dll";
  EXPECT_EQ(RunListing(), 7);
  EXPECT_EQ(m_asks, 1);
  EXPECT_EQ(m_stores, 1);
}

TEST_F(HookFirstTest, AnswerThatTheCallerTurnsDownLeadsToTheStore) {
  StartModule();
  EXPECT_EQ(Run(true, [](HookConnection&) { return kFail; }), 7);
  EXPECT_EQ(m_stores, 1);
}

TEST_F(HookFirstTest, ModuleIsNotAskedOnDemand) {
  StartModule();
  EXPECT_EQ(RunListing(false), 7);
  EXPECT_EQ(m_asks, 0);
  EXPECT_THAT(m_folders, IsEmpty());
}

TEST_F(HookFirstTest, ModuleThatCannotBeReachedKeepsTheStoreClosed) {
  const UnreachableModule module;
  m_module = module.Name();
  EXPECT_EQ(RunListing(), 0);
  EXPECT_EQ(m_stores, 0);
}

}  // namespace
}  // namespace postmarker
