// Conversations with a stand-in for a module inside a client, which can misbehave.
#include "ipc/HookConnection_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ipc/ChannelWaits_win.h"
#include "support/ChannelPair_win.h"
#include "support/HookModuleFixture_win.h"

namespace postmarker {
namespace {

using nlohmann::json;
using test::kHookTime;
using test::kInbox;
using test::kShortHookTime;
using test::kStrange;
using test::Limits;
using test::UnreachableModule;
using testing::ElementsAre;
using testing::IsEmpty;

class HookConnectionTest : public test::HookModuleFixture {};

TEST_F(HookConnectionTest, WithoutTheEventItFailsAtOnce) {
  const ElapsedTime elapsed;
  HookConnection hook(L"nobody.dll", Limits(kHookTime));
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
  HookConnection hook(module.Name(), Limits(kShortHookTime));
  EXPECT_TRUE(elapsed.IsMoreThan(kShortHookTime - 1));
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
    const KernelHandle over(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    ListenOptions options = test::PatientListening();
    options.kind = kind;
    options.cancel = over.Get();
    auto server = test::ListenInBackground(ModuleTunnelName(module, kind), options);
    const ElapsedTime elapsed;
    const SharedMemClient client(module, kind, 20'000);
    EXPECT_FALSE(elapsed.IsMoreThan(4'000));
    EXPECT_EQ(client.Status(), kFail);
    EXPECT_EQ(client.Channel(), nullptr);
    ::SetEvent(over.Get());
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
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.Status(), 0);
  m_folders = {kInbox};
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_text, L"to be kept");
  EXPECT_THAT(m_folders, ElementsAre(kInbox, kInbox, kStrange));
}

TEST_F(HookConnectionTest, FolderIsLookedUpByItsIndex) {
  StartModule();
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.LookUpFolder(4, &m_record), 0);
  EXPECT_EQ(m_record, kStrange);
  EXPECT_EQ(hook.LookUpFolder(5, &m_record), 0);
  EXPECT_EQ(m_record, MailFolderRef());
}

TEST_F(HookConnectionTest, AddressesAreAddedAsTheyStand) {
  StartModule();
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"A@x.example", L"b@x.example", L"before"));
  EXPECT_EQ(hook.ListSentAddresses(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"A@x.example", L"b@x.example", L"before", L"c@x.example"));
}

TEST_F(HookConnectionTest, EmptyListsAreLists) {
  StartModule({{"folders", json::array()}, {"contacts", json::array()}});
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, IsEmpty());
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
}

TEST_F(HookConnectionTest, FolderIsMadeBelowItsParent) {
  StartModule();
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.MakeFolder(L"Spam #1", kStrange, &m_record), 0);
  EXPECT_EQ(m_record, (MailFolderRef{kStrange.name + L"\\Spam #1", "new-1", "made", 1}));
  const json state = json::parse(test::ReadFile(m_stateFile));
  EXPECT_EQ(state["created"][0], test::ToJson(m_record)) << "it is in the client's mailbox";
}

TEST_F(HookConnectionTest, ConnectingOnceMoreTakesTheOtherModule) {
  StartModule();
  HookConnection hook(L"nobody.dll", Limits(kHookTime));
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
    HookConnection hook(m_module, Limits(kHookTime));
    EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  }
  EXPECT_EQ(m_folders.size(), 6U);
}

TEST_F(HookConnectionTest, FirstAnswerMayTakeTenTimesTheTimeOfAStep) {
  StartFaultyModule({{"do", "late"}, {"command", 1}, {"message", 0}, {"milliseconds", 450}});
  HookConnection hook(m_module, Limits(300));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_folders.size(), 2U);
}

TEST_F(HookConnectionTest, LaterAnswerMayTakeTheTimeOfAStepOnly) {
  StartFaultyModule({{"do", "late"}, {"command", 1}, {"message", 3}, {"milliseconds", 600}});
  HookConnection hook(m_module, Limits(200));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, ElementsAre(kInbox)) << "the second folder came too late";
}

TEST_F(HookConnectionTest, LongTimeDoesNotOverflow) {
  StartModule();
  HookConnection hook(m_module, Limits(0xFFFF'FFFE));
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
  HookConnection hook(m_module, Limits(kShortHookTime));
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
  HookConnection hook(m_module, Limits(kHookTime));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  EXPECT_THAT(m_folders, ElementsAre(kInbox, MailFolderRef()));
}

TEST_F(HookConnectionTest, LengthThatChangesWhileItIsReadIsNoHarm) {
  StartFaultyModule(At("flicker", 3));
  HookConnection hook(m_module, Limits(kShortHookTime));
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0);
  ASSERT_GE(m_folders.size(), 1U);
  EXPECT_LE(m_folders.size(), 2U);
  EXPECT_EQ(m_folders.front(), kInbox);
}

TEST_F(HookConnectionTest, ModuleThatDiesWhileAFolderIsMadeGivesAnEmptyRecord) {
  StartFaultyModule({{"do", "die"}, {"command", 5}, {"message", 0}});
  HookConnection hook(m_module, Limits(kShortHookTime));
  EXPECT_EQ(hook.MakeFolder(L"x", kInbox, &m_record), 0);
  EXPECT_EQ(m_record, MailFolderRef());
}

TEST_F(HookConnectionTest, ModuleKilledFromOutsideEndsACommandWithinItsTime) {
  StartModule();
  HookConnection hook(m_module, Limits(kShortHookTime));
  KillModule();
  const ElapsedTime elapsed;
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_THAT(m_addresses, ElementsAre(L"before"));
  HookConnection again(m_module, Limits(kShortHookTime));
  EXPECT_EQ(again.Status(), kFail) << "its event is gone with it";
}

TEST_F(HookConnectionTest, ModuleThatStopsInTheHandshakeIsUnreachable) {
  StartFaultyModule({{"do", "hang"}, {"step", "claimed"}});
  const ElapsedTime elapsed;
  HookConnection hook(m_module, Limits(kShortHookTime));
  EXPECT_EQ(hook.Status(), kModuleUnreachable);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  KillModule();
}

}  // namespace
}  // namespace postmarker
