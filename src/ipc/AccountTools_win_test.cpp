// Calls to a stand-in for the resident process, which can misbehave, and the trace of them.
#include <windows.h>

#include "ipc/AccountTools_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "ipc/ChannelWaits_win.h"
#include "support/PeerProcess_win.h"
#include "support/Text.h"
#include "support/TraceFolder_win.h"

namespace {

thread_local size_t t_largestBlock = SIZE_MAX;

}  // namespace

// The program's own, so that a test can run short of memory.
void* operator new(size_t size) {
  void* const block = size > t_largestBlock ? nullptr : std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, size_t) noexcept {
  std::free(block);
}

namespace postmarker {
namespace {

// While it lives, this thread gets no block of memory with more bytes than these.
class MemoryShortage {
 public:
  explicit MemoryShortage(size_t largestBlock) { t_largestBlock = largestBlock; }
  MemoryShortage(const MemoryShortage&) = delete;
  MemoryShortage& operator=(const MemoryShortage&) = delete;
  ~MemoryShortage() { t_largestBlock = SIZE_MAX; }
};

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

  // The limits of a call, so long that none is reached.
  struct Limits {
    uint32_t timeout = 20'000;
    uint32_t handshakeTimeout = 19'000;
    uint32_t exchangeTimeout = 18'000;
  };

  // A call by the test's own rendezvous.
  uint32_t Resolve(const Limits& limits) {
    return RunTextCommand(
        {m_rendezvous.c_str(), limits.timeout, limits.handshakeTimeout, limits.exchangeTimeout}, 21,
        L"http://a.example/", m_target);
  }
  uint32_t Resolve() { return Resolve(Limits()); }

  // Does a call that fails leave the target alone and write one line, and is it ended by the limit
  // that takes at least so long.
  bool FailsWithALine(const Limits& limits, uint32_t least = 0) {
    const size_t before = m_trace.TraceLines().size();
    const ElapsedTime elapsed;
    EXPECT_EQ(Resolve(limits), 0U);
    EXPECT_EQ(m_target, L"(as before)");
    EXPECT_EQ(elapsed.Left(least), 0U) << "something else has ended it before its time";
    EXPECT_FALSE(elapsed.IsMoreThan(10'000));
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
  EXPECT_TRUE(FailsWithALine(Limits()));
}

TEST_F(AccountToolsTest, WithoutAServerTheCallFailsAfterItsTime) {
  m_rendezvous = test::FreshObjectName();
  EXPECT_TRUE(FailsWithALine({.timeout = 60}, 60));
}

// The first attempt to connect fails in the handshake, and the next ones until the time is over.
TEST_F(AccountToolsTest, EveryFailureToConnectWritesALine) {
  const json faults[] = {
      {{"do", "hang"}, {"step", "listening"}}, {{"do", "hang"}, {"step", "claimed"}},
      {{"do", "hang"}, {"step", "answered"}},  {{"do", "die"}, {"step", "claimed"}},
      {{"do", "die"}, {"step", "answered"}},
  };
  for (const json& fault : faults) {
    StartResident({{"fault", fault}});
    EXPECT_TRUE(FailsWithALine({.timeout = 250, .handshakeTimeout = 60}, 250)) << fault;
    s_peer.reset();
  }
}

// The connection has all the time it wants, so that it is the exchange that fails.
TEST_F(AccountToolsTest, EveryFailureOfTheExchangeWritesALine) {
  const json faults[] = {
      {{"do", "hang"}, {"command", 21}, {"message", 0}},
      {{"do", "die"}, {"command", 21}, {"message", 0}},
      {{"do", "late"}, {"command", 21}, {"message", 0}, {"milliseconds", 2'000}},
  };
  for (const json& fault : faults) {
    StartResident({{"fault", fault}});
    EXPECT_TRUE(FailsWithALine({.exchangeTimeout = 200}, 200)) << fault;
  }
}

TEST_F(AccountToolsTest, EveryAnswerThatIsNoTextWritesALine) {
  const json faults[] = {
      {{"do", "say"}, {"command", 21}, {"message", 0}, {"value", 5}},
      {{"do", "odd"}, {"command", 21}, {"message", 0}},
      {{"do", "beyond"}, {"command", 21}, {"message", 0}},
      {{"do", "type"}, {"command", 21}, {"message", 0}},
  };
  for (const json& fault : faults) {
    StartResident({{"fault", fault}});
    EXPECT_TRUE(FailsWithALine(Limits())) << fault;
  }
}

TEST_F(AccountToolsTest, ServerThatDiesAfterTheHandshakeWritesALine) {
  StartResident({{"fault", {{"do", "die"}, {"step", "connected"}}}});
  EXPECT_TRUE(FailsWithALine({.exchangeTimeout = 200}, 200));
  s_peer.reset();
}

TEST_F(AccountToolsTest, AnswerForWhichThereIsNoMemoryWritesALine) {
  StartResident({{"default", std::string(1'900, 'x')}, {"links", json::object()}});
  uint32_t result = 1;
  {
    const MemoryShortage shortage(3'000);
    EXPECT_NO_THROW(result = Resolve());
  }
  EXPECT_EQ(result, 0U);
  EXPECT_EQ(m_target, L"(as before)");
  EXPECT_EQ(m_trace.TraceLines().size(), 1U);
  EXPECT_EQ(Resolve(), 1U) << "with memory it arrives";
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

TEST_F(AccountToolsTest, WebLinkIsTheAnswerIfThatIsAWebAddress) {
  const AccountToolsRoute route = {m_rendezvous.c_str(), 20'000, 19'000, 18'000};
  StartResident();
  EXPECT_EQ(ResolveWebLink(route, L"http://a.example/", nullptr), L"http://b.example/?x=\xE9");
  for (const char* const answer : {"", "file:///C:/x.exe", "calc.exe", "http://b.example/\u0007",
                                   "http://b.example/> <a href=x", "ftp://b.example/"}) {
    StartResident({{"default", answer}, {"links", json::object()}});
    EXPECT_EQ(ResolveWebLink(route, L"http://a.example/", nullptr), L"http://a.example/") << answer;
  }
}

// A limit that only the event can be the end of, in every state of the server.
TEST_F(AccountToolsTest, EventEndsEveryWait) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const json faults[] = {
      {{"do", "hang"}, {"step", "listening"}},
      {{"do", "hang"}, {"step", "claimed"}},
      {{"do", "hang"}, {"command", 21}, {"message", 0}},
  };
  for (const json& fault : faults) {
    ::ResetEvent(cancel.Get());
    StartResident({{"fault", fault}});
    std::thread canceler([&] {
      ::Sleep(300);
      ::SetEvent(cancel.Get());
    });
    const ElapsedTime elapsed;
    EXPECT_EQ(ResolveWebLink({m_rendezvous.c_str(), 60'000, 60'000, 60'000}, L"http://a.example/",
                             cancel.Get()),
              L"http://a.example/");
    EXPECT_FALSE(elapsed.IsMoreThan(20'000)) << fault;
    canceler.join();
    s_peer.reset();
  }
  EXPECT_EQ(m_trace.TraceLines().size(), std::size(faults)) << "each call writes its line";
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
