// What ends a client's connecting: its two limits and the two ways to cancel, in every state that a
// server can hang in.
#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "support/ChannelPair_win.h"
#include "support/DetachedThread_win.h"
#include "support/HangGuard_win.h"
#include "support/RendezvousFixture_win.h"

namespace postmarker {
namespace {

// Nearly everything that this program tests waits for somebody.
[[maybe_unused]] const bool s_isGuarded = test::HangGuard::Install(90);

using peer::ServerStep;
using test::ChannelEnd;
using test::FreshObjectName;
using test::PatientListening;

// Within this time every attempt ends that ends at all, on a busy machine as well.
constexpr uint32_t kSoon = 20'000;

constexpr uint32_t kLate = 60;  // until a late cancel, and until a server that recovers goes on
constexpr uint32_t kShortLimit = 120;  // of a server that does not recover
constexpr uint32_t kShorter = 30;      // a limit that must not be the one that ends it
constexpr uint32_t kLonger = 60'000;   // the same
constexpr uint32_t kLongest = 61'000;

enum class ServerState {
  kAbsent,
  kPublished,  // the rendezvous is there, and nobody looks at it
  kClaimed,    // another client has the turn
  kCalled,     // another client has called and gone, and is not answered
  kConnected,  // the server answers, and then doesn't take the confirmation
  kDead,       // only other processes' handles keep what it made alive
};

KernelHandle MakeManualEvent() {
  return KernelHandle(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// Keeps the objects of a rendezvous alive when their server goes.
struct Leftovers {
  explicit Leftovers(const std::wstring& rendezvous)
      : published(::OpenFileMappingW(FILE_MAP_READ, FALSE, rendezvous.c_str())),
        mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(rendezvous).c_str())) {
    const FileView view(::MapViewOfFile(published.Get(), FILE_MAP_READ, 0, 0, 0));
    const std::wstring name(
        reinterpret_cast<const wchar_t*>(static_cast<const std::byte*>(view.Get()) + 4));
    section.Reset(::OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    serverEvent.Reset(::OpenEventW(SYNCHRONIZE, FALSE, ServerEventName(name).c_str()));
    clientEvent.Reset(::OpenEventW(SYNCHRONIZE, FALSE, ClientEventName(name).c_str()));
  }

  KernelHandle published;
  KernelHandle mutex;
  KernelHandle section;
  KernelHandle serverEvent;
  KernelHandle clientEvent;
};

// A server at a rendezvous of its own, which hangs in one state until it is let go on. It then
// serves whoever comes next, except when it is dead.
class HangingServer {
 public:
  explicit HangingServer(ServerState state) : m_state(state) {
    m_thread = std::thread([this] { Serve(); });
    ::WaitForSingleObject(m_standing.Get(), test::kPatience);
    if (m_state == ServerState::kClaimed) {
      m_holder = std::thread([this] { HoldTheTurn(); });
      ::WaitForSingleObject(m_held.Get(), test::kPatience);
    }
  }
  HangingServer(const HangingServer&) = delete;
  HangingServer& operator=(const HangingServer&) = delete;
  ~HangingServer() {
    ::SetEvent(m_over.Get());
    GoOn();
    m_thread.join();
    if (m_holder.joinable()) {
      m_holder.join();
    }
  }

  void GoOn() const { ::SetEvent(m_goOn.Get()); }
  [[nodiscard]] const std::wstring& Name() const { return m_name; }

 private:
  void Hang() const {
    ::SetEvent(m_standing.Get());
    ::WaitForSingleObject(m_goOn.Get(), INFINITE);
  }

  void HoldTheTurn() const {
    const KernelHandle mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(m_name).c_str()));
    ::WaitForSingleObject(mutex.Get(), test::kPatience);
    ::SetEvent(m_held.Get());
    ::WaitForSingleObject(m_goOn.Get(), INFINITE);
    ::ReleaseMutex(mutex.Get());
  }

  void OnStep(ServerStep step) {
    if (m_state == ServerState::kDead && step == ServerStep::kListening) {
      m_leftovers.emplace(m_name);
      ::SetEvent(m_die.Get());
    }
    if (m_state == ServerState::kCalled && step == ServerStep::kListening) {
      peer::RawClientOptions client;
      client.name = m_name;
      client.timeout = 0;
      peer::RawConnect(client);
    }
    if ((m_state == ServerState::kClaimed || m_state == ServerState::kConnected) &&
        step == ServerStep::kListening) {
      ::SetEvent(m_standing.Get());
    }
    if ((m_state == ServerState::kPublished && step == ServerStep::kListening) ||
        (m_state == ServerState::kCalled && step == ServerStep::kClaimed) ||
        (m_state == ServerState::kConnected && step == ServerStep::kAnswered)) {
      Hang();
    }
  }

  // The first round, in which it hangs.
  std::optional<peer::RawEnd> ServeFirst() {
    peer::RawServerOptions options;
    options.name = m_name;
    options.cancel = m_state == ServerState::kDead ? m_die.Get() : m_over.Get();
    options.timeout = m_state == ServerState::kCalled ? 50 : INFINITE;
    options.onStep = [this](ServerStep step) { OnStep(step); };
    return peer::RawListen(options);
  }

  void Serve() {
    if (m_state == ServerState::kAbsent) {
      Hang();
    } else {
      m_first = ServeFirst();
    }
    if (m_state == ServerState::kDead) {
      Hang();
    } else if (!m_first && !IsSignalled(m_over.Get())) {
      ListenOptions options = PatientListening();
      options.cancel = m_over.Get();
      ChannelListenRetry(m_name.c_str(), &m_next, options);
    }
  }

  std::wstring m_name = FreshObjectName();
  ServerState m_state;
  KernelHandle m_standing = MakeManualEvent();
  KernelHandle m_held = MakeManualEvent();
  KernelHandle m_goOn = MakeManualEvent();
  KernelHandle m_die = MakeManualEvent();
  KernelHandle m_over = MakeManualEvent();
  std::optional<Leftovers> m_leftovers;
  std::optional<peer::RawEnd> m_first;
  ChannelEnd m_next;
  std::thread m_thread;
  std::thread m_holder;
};

enum class Limit { kZero, kShorterThanTheHang, kLongerThanTheHang };
enum class Cancel { kNever, kEventEarly, kEventLate, kQueryEarly, kQueryLate };

struct Outcome {
  bool ended = false;
  bool connected = false;
  uint32_t milliseconds = 0;
};

// Runs an attempt that may never end. What it uses must outlive it then, so it owns all of that.
Outcome RunGuarded(std::function<bool()> attempt) {
  const auto task = std::make_shared<std::packaged_task<Outcome()>>([attempt = std::move(attempt)] {
    const uint64_t start = ::GetTickCount64();
    const bool connected = attempt();
    return Outcome{true, connected, static_cast<uint32_t>(::GetTickCount64() - start)};
  });
  std::future<Outcome> outcome = task->get_future();
  test::RunDetached([task] { (*task)(); });
  return outcome.wait_for(std::chrono::milliseconds(kSoon)) == std::future_status::ready
             ? outcome.get()
             : Outcome();
}

struct Case {
  ServerState state;
  Limit limit;
  Cancel cancel;
};

bool IsTurnBound(ServerState state) {
  return state == ServerState::kAbsent || state == ServerState::kClaimed ||
         state == ServerState::kCalled;
}

// The two limits always differ, so that the time an attempt takes shows which one has ended it.
ConnectOptions OptionsOf(const Case& tested) {
  ConnectOptions options;
  if (tested.limit == Limit::kZero) {
    options.timeout = 0;
    options.handshakeTimeout = kLonger;
  } else if (tested.limit == Limit::kLongerThanTheHang) {
    options.timeout = kLongest;
    options.handshakeTimeout = kLonger;
    if (tested.state == ServerState::kDead && tested.cancel == Cancel::kNever) {
      options.handshakeTimeout = 2 * kShortLimit;
    }
  } else if (IsTurnBound(tested.state)) {
    options.timeout = kShortLimit;
    options.handshakeTimeout = kShorter;
  } else {
    options.timeout = kLonger;
    options.handshakeTimeout = kShortLimit;
  }
  return options;
}

bool IsLate(Cancel cancel) {
  return cancel == Cancel::kEventLate || cancel == Cancel::kQueryLate;
}

// Is this the case in which the server goes on in time.
bool Connects(const Case& tested) {
  return tested.limit == Limit::kLongerThanTheHang && tested.cancel == Cancel::kNever &&
         tested.state != ServerState::kDead;
}

Outcome RunCase(const Case& tested) {
  const auto server = std::make_shared<HangingServer>(tested.state);
  const auto cancel = std::make_shared<KernelHandle>(MakeManualEvent());
  const auto begun = std::make_shared<KernelHandle>(MakeManualEvent());
  ConnectOptions options = OptionsOf(tested);
  if (tested.cancel == Cancel::kQueryEarly || tested.cancel == Cancel::kQueryLate) {
    options.stop = [cancel] { return IsSignalled(cancel->Get()); };
  } else {
    options.cancel = cancel->Get();
  }
  if (tested.cancel == Cancel::kEventEarly || tested.cancel == Cancel::kQueryEarly) {
    ::SetEvent(cancel->Get());
  }
  std::thread later([=] {
    ::WaitForSingleObject(begun->Get(), test::kPatience);
    ::Sleep(kLate);
    if (IsLate(tested.cancel)) {
      ::SetEvent(cancel->Get());
    }
    if (Connects(tested)) {
      server->GoOn();
    }
  });
  const Outcome outcome = RunGuarded([=] {
    ChannelEnd end;
    ::SetEvent(begun->Get());
    // An attempt that comes between two rounds of a server fails.
    return Connects(tested) ? ChannelConnectRetry(server->Name().c_str(), &end, options)
                            : ChannelConnect(server->Name().c_str(), &end, options);
  });
  later.join();
  return outcome;
}

// When an attempt can't have ended yet. The system's waits can be a millisecond short.
uint32_t LeastTime(const Case& tested) {
  if (tested.limit == Limit::kZero || tested.cancel == Cancel::kEventEarly ||
      tested.cancel == Cancel::kQueryEarly) {
    return 0;
  }
  if (IsLate(tested.cancel) || Connects(tested)) {
    return kLate - 2;
  }
  const bool isSecondDeath = tested.limit == Limit::kLongerThanTheHang;
  return isSecondDeath ? 2 * kShortLimit - 2 : kShortLimit - 2;
}

std::string NameOf(ServerState state) {
  constexpr const char* kNames[] = {"Absent", "Published", "Claimed",
                                    "Called", "Connected", "Dead"};
  return kNames[static_cast<int>(state)];
}

class ConnectLimitsTest : public testing::TestWithParam<ServerState> {};

// Every limit by every cancel, all at once.
TEST_P(ConnectLimitsTest, LimitOrCancelEndsTheAttempt) {
  std::vector<std::pair<Case, std::future<Outcome>>> attempts;
  for (const Limit limit : {Limit::kZero, Limit::kShorterThanTheHang, Limit::kLongerThanTheHang}) {
    for (const Cancel cancel : {Cancel::kNever, Cancel::kEventEarly, Cancel::kEventLate,
                                Cancel::kQueryEarly, Cancel::kQueryLate}) {
      const Case tested = {GetParam(), limit, cancel};
      attempts.emplace_back(tested,
                            std::async(std::launch::async, [tested] { return RunCase(tested); }));
    }
  }
  for (auto& [tested, running] : attempts) {
    const Outcome outcome = running.get();
    SCOPED_TRACE(testing::Message() << "limit " << static_cast<int>(tested.limit) << ", cancel "
                                    << static_cast<int>(tested.cancel));
    EXPECT_TRUE(outcome.ended) << "the attempt goes on for ever";
    EXPECT_EQ(outcome.connected, Connects(tested));
    EXPECT_GE(outcome.milliseconds, outcome.ended ? LeastTime(tested) : 0);
  }
}

INSTANTIATE_TEST_SUITE_P(ServerIs, ConnectLimitsTest,
                         testing::Values(ServerState::kAbsent, ServerState::kPublished,
                                         ServerState::kClaimed, ServerState::kCalled,
                                         ServerState::kConnected, ServerState::kDead),
                         [](const auto& tested) { return NameOf(tested.param); });

// The first attempt calls a server that hangs, and its call stands. So the second one finds a turn
// that is free and a call that is not its own.
TEST(ConnectRetryLimits, TimeEndsTheSecondAttemptAtAServerThatHangsAfterTheCall) {
  const auto server = std::make_shared<HangingServer>(ServerState::kPublished);
  const Outcome outcome = RunGuarded([server] {
    ChannelEnd end;
    return ChannelConnectRetry(server->Name().c_str(), &end, {nullptr, 400, 100});
  });
  EXPECT_TRUE(outcome.ended);
  EXPECT_FALSE(outcome.connected);
  EXPECT_GE(outcome.milliseconds, 100U + 100U + 400U - 2U) << "the second attempt has its time";
}

TEST(ConnectRetryLimits, CancelEndsTheSecondAttemptAtAServerThatHangsAfterTheCall) {
  const auto server = std::make_shared<HangingServer>(ServerState::kPublished);
  const auto cancel = std::make_shared<KernelHandle>(MakeManualEvent());
  std::thread later([cancel] {
    ::Sleep(300);
    ::SetEvent(cancel->Get());
  });
  const Outcome outcome = RunGuarded([=] {
    ChannelEnd end;
    return ChannelConnectRetry(server->Name().c_str(), &end, {cancel->Get(), kLongest, 50});
  });
  later.join();
  EXPECT_TRUE(outcome.ended);
  EXPECT_FALSE(outcome.connected);
  EXPECT_GE(outcome.milliseconds, 200U);
}

// A server that sees a call, is given up, and answers then.
TEST(ClientThatGaveUp, LeavesItsRoundToTheServerAndTheNextRoundToOthers) {
  const std::wstring name = FreshObjectName();
  const KernelHandle goOn = MakeManualEvent();
  const KernelHandle called = MakeManualEvent();
  std::optional<peer::RawEnd> firstRound;
  ChannelEnd nextRound;
  std::thread serving([&] {
    peer::RawServerOptions options;
    options.name = name;
    options.timeout = 800;
    options.onStep = [&](ServerStep step) {
      if (step == ServerStep::kClaimed) {
        ::SetEvent(called.Get());
        ::WaitForSingleObject(goOn.Get(), test::kPatience);
      }
    };
    firstRound = peer::RawListen(options);
    ListenOptions next = PatientListening();
    next.timeout = kSoon;
    ChannelListenRetry(name.c_str(), &nextRound, next);
  });
  ASSERT_TRUE(test::WaitForMutex(name));
  ChannelEnd first;
  EXPECT_FALSE(ChannelConnect(name.c_str(), &first, {nullptr, test::kPatience, 100}));
  ::WaitForSingleObject(called.Get(), test::kPatience);
  ChannelEnd second;
  std::thread connecting([&] {
    ChannelConnectRetry(name.c_str(), &second, {nullptr, kSoon, kSoon});
  });
  ::Sleep(50);
  ::SetEvent(goOn.Get());
  connecting.join();
  serving.join();
  EXPECT_FALSE(firstRound) << "nobody confirms the answer that came late";
  ASSERT_TRUE(second && nextRound);
  auto sent = std::async(std::launch::async, [&] { return second->SendNumber(21, 5'000); });
  uint32_t number = 0;
  EXPECT_TRUE(nextRound->ReceiveNumber(&number, 5'000));
  EXPECT_TRUE(sent.get());
  EXPECT_EQ(number, 21U);
}

TEST(ClientThatIsCancelledBeforehand, DoesNotCallTheServer) {
  const std::wstring name = FreshObjectName();
  ListenOptions listening = PatientListening();
  listening.handshakeTimeout = 100;
  auto server = test::ListenInBackground(name, listening);
  ASSERT_TRUE(test::WaitForMutex(name));
  ChannelEnd end;
  EXPECT_FALSE(ChannelConnect(name.c_str(), &end, {nullptr, 5'000, 5'000, [] { return true; }}));
  EXPECT_EQ(server.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout)
      << "the server has answered somebody";
  EXPECT_TRUE(ChannelConnect(name.c_str(), &end, {nullptr, kSoon, kSoon}));
  EXPECT_NE(server.get(), nullptr);
}

}  // namespace
}  // namespace postmarker
