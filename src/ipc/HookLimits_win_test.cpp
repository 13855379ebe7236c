// What ends a command to a module inside a client: somebody who asks it to stop, its time, and the
// bytes that it may receive. In each case it returns 0 with what has arrived.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ipc/ChannelWaits_win.h"
#include "ipc/HookConnection_win.h"
#include "support/HookModuleFixture_win.h"

namespace postmarker {
namespace {

using nlohmann::json;
using test::kInbox;
using testing::ElementsAre;

// What no test waits for.
constexpr uint32_t kNever = 8'000;

// What all of these end in, on a busy machine as well.
constexpr uint32_t kSoon = 5'000;

class HookLimitsTest : public test::HookModuleFixture {
 protected:
  // Answers "stop" from so many milliseconds after the first question on.
  StopQuery StopAfter(uint32_t milliseconds) {
    return [this, milliseconds] {
      if (m_asked++ == 0) {
        m_firstAsked = ElapsedTime();
      }
      return m_firstAsked.Left(milliseconds) == 0;
    };
  }

  // A module that has so many contacts, each of this length and different from the others.
  void StartModuleWithContacts(uint32_t count, size_t length, json more = json::object()) {
    more["contacts"] = json::array();
    for (uint32_t i = 0; i < count; ++i) {
      std::string text = std::to_string(100'000 + i);
      text.resize(length, 'x');
      more["contacts"].push_back(text);
    }
    m_addresses.clear();
    StartModule(more);
  }

  // How many contacts a command receives within these limits.
  size_t ContactsWithin(const HookLimits& limits, const StopQuery& stop = {}) {
    m_addresses.clear();
    HookConnection hook(m_module, limits, stop);
    EXPECT_EQ(hook.Status(), 0);
    EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
    return m_addresses.size();
  }

  ElapsedTime m_firstAsked;
  int m_asked = 0;
};

// A command, and the message of its answer at which the module stops for good.
struct StopPlace {
  const char* name;
  uint32_t command;
  uint32_t message;
};

class StopPlaceTest : public HookLimitsTest, public testing::WithParamInterface<StopPlace> {
 protected:
  ResultCode RunCommand(HookConnection& hook) {
    switch (GetParam().command) {
      case 1:
        return hook.ListFolders(&m_text, &m_folders);
      case 2:
        return hook.LookUpFolder(4, &m_record);
      case 3:
        return hook.ListContacts(&m_addresses);
      case 4:
        return hook.ListSentAddresses(&m_addresses);
      default:
        return hook.MakeFolder(L"x", kInbox, &m_record);
    }
  }
};

TEST_P(StopPlaceTest, StopEndsTheCommandWithWhatHasArrived) {
  StartFaultyModule(
      {{"do", "hang"}, {"command", GetParam().command}, {"message", GetParam().message}});
  HookConnection hook(m_module, test::Limits(kNever), StopAfter(250));
  ASSERT_EQ(hook.Status(), 0);
  m_asked = 0;
  const ElapsedTime elapsed;
  EXPECT_EQ(RunCommand(hook), 0);
  EXPECT_FALSE(elapsed.IsMoreThan(kSoon));
  EXPECT_GE(m_asked, 3) << "it is asked at least every 100 ms";
  EXPECT_EQ(m_folders.size(), GetParam().command == 1 && GetParam().message == 3 ? 1U : 0U);
  EXPECT_EQ(m_addresses.size(), GetParam().command == 3 && GetParam().message == 2 ? 2U : 1U);
  const bool isRecordCleared = GetParam().command == 2 || GetParam().command == 5;
  EXPECT_EQ(m_record == MailFolderRef(), isRecordCleared);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, StopPlaceTest,
    testing::Values(StopPlace{"AtTheTextAheadOfFolders", 1, 0},
                    StopPlace{"AtTheCountOfFolders", 1, 1}, StopPlace{"InTheFolders", 1, 3},
                    StopPlace{"AtTheFolderLookedUp", 2, 0}, StopPlace{"AtTheCountOfContacts", 3, 0},
                    StopPlace{"InTheContacts", 3, 2}, StopPlace{"AtTheCountOfSentAddresses", 4, 0},
                    StopPlace{"AtTheFolderMade", 5, 0}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(HookLimitsTest, StopEndsACommandWhoseModuleNeverPauses) {
  StartModuleWithContacts(300, 10);
  HookConnection hook(m_module, test::Limits(kNever), [this] { return m_addresses.size() >= 7; });
  ASSERT_EQ(hook.Status(), 0);
  EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
  EXPECT_EQ(m_addresses.size(), 7U) << "it is asked at each step";
}

TEST_F(HookLimitsTest, StopEndsTheWaitForAModuleThatDoesNotTakeTheCommand) {
  StartModule({{"deaf", true}});
  HookConnection hook(m_module, test::Limits(kNever), StopAfter(100));
  ASSERT_EQ(hook.Status(), 0);
  m_asked = 0;
  const ElapsedTime elapsed;
  EXPECT_EQ(hook.MakeFolder(L"x", kInbox, &m_record), 0);
  EXPECT_FALSE(elapsed.IsMoreThan(kSoon));
  EXPECT_EQ(m_record, MailFolderRef());
}

TEST_F(HookLimitsTest, StopEndsConnectingToAModuleWithoutAChannel) {
  const test::UnreachableModule module;
  const ElapsedTime elapsed;
  HookConnection hook(module.Name(), test::Limits(kNever), StopAfter(250));
  EXPECT_FALSE(elapsed.IsMoreThan(kSoon));
  EXPECT_GE(m_asked, 3);
  EXPECT_EQ(hook.Status(), kModuleUnreachable);
  EXPECT_EQ(hook.ListFolders(&m_text, &m_folders), 0) << "an empty answer: the store stays closed";
}

TEST_F(HookLimitsTest, StopEndsConnectingToAModuleThatHangsInTheHandshake) {
  for (const char* const step : {"listening", "claimed", "answered"}) {
    StartFaultyModule({{"do", "hang"}, {"step", step}});
    m_asked = 0;
    const ElapsedTime elapsed;
    const HookConnection hook(m_module, test::Limits(kNever), StopAfter(250));
    EXPECT_FALSE(elapsed.IsMoreThan(kSoon)) << step;
    EXPECT_GE(m_asked, 3) << step;
    EXPECT_EQ(hook.Status(), kModuleUnreachable) << step;
  }
  KillModule();
}

TEST_F(HookLimitsTest, CommandEndsAfterItsTimeThoughEachStepIsInTime) {
  StartModuleWithContacts(
      200, 10, {{"fault", {{"do", "slow"}, {"command", 3}, {"message", 1}, {"milliseconds", 40}}}});
  HookLimits limits = test::Limits(kNever);
  limits.commandMilliseconds = 300;
  const ElapsedTime elapsed;
  const size_t taken = ContactsWithin(limits);
  EXPECT_TRUE(elapsed.IsMoreThan(298));
  EXPECT_FALSE(elapsed.IsMoreThan(kSoon));
  EXPECT_GT(taken, 0U);
  EXPECT_LT(taken, 10U) << "each takes 40 ms";
}

TEST_F(HookLimitsTest, CommandEndsAfterItsTimeThoughEveryMessageIsThereBeforeItIsWaitedFor) {
  StartModuleWithContacts(60, 10);
  HookLimits limits = test::Limits(kNever);
  limits.commandMilliseconds = 200;
  const StopQuery slow = [] {
    ::Sleep(30);
    return false;
  };
  EXPECT_LT(ContactsWithin(limits, slow), 10U);
}

TEST_F(HookLimitsTest, CommandEndsAfterItsTimeThoughTheFirstAnswerMayTakeLonger) {
  StartFaultyModule({{"do", "hang"}, {"command", 3}, {"message", 0}});
  HookLimits limits = test::Limits(kNever);
  limits.commandMilliseconds = 200;
  const ElapsedTime elapsed;
  EXPECT_EQ(ContactsWithin(limits), 0U);
  EXPECT_TRUE(elapsed.IsMoreThan(198));
  EXPECT_FALSE(elapsed.IsMoreThan(kSoon));
}

TEST_F(HookLimitsTest, EachTextCountsWithItsBytesAndWhatItCostsToHold) {
  StartModuleWithContacts(20, 100);
  HookLimits limits = test::Limits(test::kHookTime);
  limits.commandBytes = 3 * (kHookTextCost + 200);
  EXPECT_EQ(ContactsWithin(limits), 3U);
  EXPECT_THAT(m_addresses, testing::Contains(L"100000" + std::wstring(94, L'x')));
  --limits.commandBytes;
  EXPECT_EQ(ContactsWithin(limits), 2U) << "the one that would go beyond is dropped";
  limits.commandBytes = 20 * (kHookTextCost + 200);
  EXPECT_EQ(ContactsWithin(limits), 20U);
  limits.commandBytes = kHookTextCost - 1;
  EXPECT_EQ(ContactsWithin(limits), 0U);
}

TEST_F(HookLimitsTest, BytesOfFoldersCountAsWellAsTheTextAheadOfThem) {
  StartModule({{"text", std::string(500, 't')}});
  HookLimits limits = test::Limits(test::kHookTime);
  limits.commandBytes = kHookTextCost + 999;
  EXPECT_EQ(HookConnection(m_module, limits).ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_text, L"(as before)");
  limits.commandBytes = kHookTextCost + 1'000 + kHookTextCost + 100;
  EXPECT_EQ(HookConnection(m_module, limits).ListFolders(&m_text, &m_folders), 0);
  EXPECT_EQ(m_text, std::wstring(500, L't'));
  EXPECT_THAT(m_folders, ElementsAre(kInbox));
}

TEST_F(HookLimitsTest, BytesAreCountedForEachCommand) {
  StartModuleWithContacts(3, 100);
  HookLimits limits = test::Limits(test::kHookTime);
  limits.commandBytes = 3 * (kHookTextCost + 200);
  HookConnection hook(m_module, limits);
  for (int i = 0; i < 2; ++i) {
    m_addresses.clear();
    EXPECT_EQ(hook.ListContacts(&m_addresses), 0);
    EXPECT_EQ(m_addresses.size(), 3U);
  }
}

TEST(HookLimits, UsualOnesLetAModuleWith50000AddressesPass) {
  constexpr uint32_t kAddresses = 50'000;
  constexpr uint32_t kCoarseTick = 16;
  constexpr size_t kMaxAddressChars = 254;
  EXPECT_GE(HookLimits().commandMilliseconds / kAddresses, kCoarseTick);
  EXPECT_GE(HookLimits().commandBytes / kAddresses,
            kHookTextCost + kMaxAddressChars * sizeof(wchar_t));
  EXPECT_EQ(HookLimits().stepMilliseconds, 2'000U);
}

}  // namespace
}  // namespace postmarker
