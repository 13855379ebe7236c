// Calls to a stand-in for the resident process, which can misbehave, and the trace of them.
#include <windows.h>

#include "ipc/AccountTools_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "ipc/ChannelWaits_win.h"
#include "support/PeerProcess_win.h"
#include "support/Text.h"
#include "support/TraceFolder_win.h"

namespace postmarker {
namespace {

using nlohmann::json;

class AccountToolsTest : public testing::Test {
 protected:
  AccountToolsTest() { m_trace.MakeSuiteFolder(); }

  static void TearDownTestSuite() { s_peer.reset(); }

  // Sees to it that the process runs and answers as usual, with these changes.
  void StartResident(const json& more = json::object()) {
    json state = {{"rendezvous", NarrowUtf8(m_rendezvous)},
                  {"links", {{"http://a.example/", "http://b.example/?x=\u00e9"}}}};
    state.update(more);
    const std::wstring file = s_folder.PathOf("state.json");
    test::WriteFile(file, state.dump());
    const bool inHandshake = more.contains("fault") && more["fault"].contains("step");
    if (!s_peer || s_peer->WaitForExit(0) != -1 || inHandshake) {
      s_peer.reset();
      s_peer.emplace(test::StartPeer(test::PeerPath(L"resident\\resident.exe"), {file}));
    }
  }

  // A call by the test's own rendezvous. `time` is each of its limits.
  uint32_t Resolve(uint32_t time = 20'000) {
    return RunTextCommand({m_rendezvous.c_str(), time, time, time}, 21, L"http://a.example/",
                          m_target);
  }

  // Does a call that fails leave the target alone, take no longer than its limits, and write one
  // line.
  bool FailsWithALine(uint32_t time = 40) {
    const ElapsedTime elapsed;
    const size_t before = m_trace.TraceLines().size();
    EXPECT_EQ(Resolve(time), 0U);
    EXPECT_EQ(m_target, L"(as before)");
    EXPECT_FALSE(elapsed.IsMoreThan(5'000));
    return m_trace.TraceLines().size() == before + 1;
  }

  static inline const test::TempFolder s_folder;
  static inline const std::wstring s_rendezvous = test::FreshObjectName();
  static inline std::optional<test::PeerProcess> s_peer;

  test::TraceFolder m_trace;
  std::wstring m_rendezvous = s_rendezvous;
  std::wstring m_target = L"(as before)";
};

TEST_F(AccountToolsTest, AddressIsResolved) {
  StartResident();
  EXPECT_EQ(Resolve(), 1U);
  EXPECT_EQ(m_target, L"http://b.example/?x=\xE9");
}

TEST_F(AccountToolsTest, SuccessWritesALine) {
  StartResident();
  Resolve();
  Resolve();
  const std::vector<std::wstring> lines = m_trace.TraceLines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1].substr(23, 43), L" | ipc_test.exe                   |    21 |");
}

TEST_F(AccountToolsTest, EmptyAnswerGives0) {
  StartResident({{"links", json::object()}, {"default", ""}});
  EXPECT_TRUE(FailsWithALine(20'000));
}

TEST_F(AccountToolsTest, WithoutAServerTheCallFailsAfterItsTime) {
  m_rendezvous = test::FreshObjectName();
  const ElapsedTime elapsed;
  EXPECT_TRUE(FailsWithALine(60));
  EXPECT_TRUE(elapsed.IsMoreThan(59));
}

TEST_F(AccountToolsTest, EveryFailurePathWritesALine) {
  const json faults[] = {
      {{"do", "hang"}, {"step", "claimed"}},
      {{"do", "die"}, {"step", "answered"}},
      {{"do", "die"}, {"step", "connected"}},
      {{"do", "hang"}, {"command", 21}, {"message", 0}},
      {{"do", "die"}, {"command", 21}, {"message", 0}},
      {{"do", "say"}, {"command", 21}, {"message", 0}, {"value", 5}},
      {{"do", "odd"}, {"command", 21}, {"message", 0}},
      {{"do", "beyond"}, {"command", 21}, {"message", 0}},
      {{"do", "late"}, {"command", 21}, {"message", 0}, {"milliseconds", 400}},
  };
  for (const json& fault : faults) {
    StartResident({{"fault", fault}});
    EXPECT_TRUE(FailsWithALine()) << fault;
    if (fault.contains("step")) {
      s_peer.reset();
    }
  }
}

TEST_F(AccountToolsTest, AddressLongerThanTheRegionIsNotSent) {
  StartResident();
  const std::wstring address(3'000, L'x');
  EXPECT_EQ(RunTextCommand({m_rendezvous.c_str(), 5'000, 5'000, 200}, 21, address, m_target), 0U);
  EXPECT_EQ(m_trace.TraceLines().size(), 1U);
}

TEST_F(AccountToolsTest, CallsOnSeveralThreadsAreIndependent) {
  StartResident();
  std::vector<std::wstring> targets(5);
  std::vector<std::thread> threads;
  threads.reserve(targets.size());
  for (std::wstring& target : targets) {
    threads.emplace_back([&] {
      EXPECT_EQ(RunTextCommand({m_rendezvous.c_str(), 20'000, 20'000, 20'000}, 21,
                               L"http://a.example/", target),
                1U);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(targets, testing::Each(std::wstring(L"http://b.example/?x=\xE9")));
}

TEST_F(AccountToolsTest, ResidentProcessIsReachedUnderItsName) {
  EXPECT_STREQ(kResidentProcess.rendezvous, L"Global\\Kestrelon.KsMain.AccountTools");
  EXPECT_EQ(kResidentProcess.timeout, 10'000U);
  EXPECT_EQ(kResidentProcess.handshakeTimeout, 4'000U);
  EXPECT_EQ(kResidentProcess.exchangeTimeout, 10'000U);
  m_rendezvous = kResidentProcess.rendezvous;
  s_peer.reset();
  StartResident();
  EXPECT_EQ(ResolveLink(L"http://a.example/", m_target), 1U);
  EXPECT_EQ(m_target, L"http://b.example/?x=\xE9");
  s_peer.reset();
}

}  // namespace
}  // namespace postmarker
