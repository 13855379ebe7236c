// Channels between processes: clients and servers that are killed or stop on the way, many clients
// at once, and long conversations.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelExchange_win.h"
#include "support/ChannelPair_win.h"
#include "support/RendezvousFixture_win.h"

namespace postmarker {
namespace {

using peer::ClientStep;
using peer::ServerStep;
using test::ChannelEnd;
using test::ConnectPair;
using test::FreshObjectName;
using test::kPatience;
using test::PatientConnecting;
using test::PatientListening;
using test::PeerProcess;

constexpr uint32_t kShortTimeMs = 200;

// An end in a process of its own, which stops after a step.
class StoppingEnd {
 public:
  StoppingEnd(const std::wstring& role, const std::wstring& rendezvous, int step)
      : m_reachedName(FreshObjectName()),
        m_reached(::CreateEventW(nullptr, TRUE, FALSE, m_reachedName.c_str())),
        m_process(test::StartPeer(test::PeerPath(L"channel\\channel_end.exe"),
                                  {role, rendezvous, std::to_wstring(step), m_reachedName})) {}

  [[nodiscard]] bool WaitUntilStopped() const { return m_process.WaitFor(m_reached.Get()); }
  void Kill() { m_process.Kill(); }

  // Kills the process as soon as it has stopped, on a thread of its own.
  [[nodiscard]] std::thread KillWhenStopped() {
    return std::thread([this] {
      EXPECT_TRUE(WaitUntilStopped());
      Kill();
    });
  }

 private:
  std::wstring m_reachedName;
  KernelHandle m_reached;
  PeerProcess m_process;
};

bool IsUsable(const std::wstring& rendezvous) {
  const auto [server, client] = ConnectPair(rendezvous);
  return server && client;
}

class ServerKilledTest : public testing::TestWithParam<ServerStep> {};

TEST_P(ServerKilledTest, ClientFailsWithinItsTimeAndTheRendezvousIsUsableAgain) {
  const std::wstring name = FreshObjectName();
  StoppingEnd server(L"serve", name, static_cast<int>(GetParam()));
  std::thread killer = server.KillWhenStopped();
  const ElapsedTime elapsed;
  ChannelEnd client;
  const bool connected =
      ChannelConnect(name.c_str(), &client, {nullptr, kPatience / 4, kShortTimeMs});
  killer.join();
  if (GetParam() == ServerStep::kConnected) {
    // It has said yes and is gone: what shows it is the first message that nobody takes.
    EXPECT_TRUE(connected);
    EXPECT_FALSE(client->SendNumber(1, kShortTimeMs));
  } else {
    EXPECT_FALSE(connected);
  }
  EXPECT_FALSE(elapsed.IsMoreThan(kPatience));
  client.reset();
  EXPECT_TRUE(IsUsable(name));
}

// Before it listens there is nothing to connect to, and the client would wait out its time.
INSTANTIATE_TEST_SUITE_P(Steps, ServerKilledTest,
                         testing::Values(ServerStep::kClaimed, ServerStep::kDropped,
                                         ServerStep::kAnswered, ServerStep::kConnected),
                         [](const auto& tested) {
                           return "Step" + std::to_string(static_cast<int>(tested.param));
                         });

class EarlyServerKilledTest : public testing::TestWithParam<ServerStep> {};

TEST_P(EarlyServerKilledTest, ClientFailsWithinItsTimeAndTheRendezvousIsUsableAgain) {
  const std::wstring name = FreshObjectName();
  StoppingEnd server(L"serve", name, static_cast<int>(GetParam()));
  ASSERT_TRUE(server.WaitUntilStopped());
  server.Kill();
  const ElapsedTime elapsed;
  ChannelEnd client;
  EXPECT_FALSE(ChannelConnect(name.c_str(), &client, {nullptr, kShortTimeMs, kShortTimeMs}));
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_TRUE(IsUsable(name));
}

INSTANTIATE_TEST_SUITE_P(Steps, EarlyServerKilledTest,
                         testing::Values(ServerStep::kPrivateMade, ServerStep::kRendezvousMade,
                                         ServerStep::kListening),
                         [](const auto& tested) {
                           return "Step" + std::to_string(static_cast<int>(tested.param));
                         });

class ServerHangsTest : public testing::TestWithParam<ServerStep> {
 protected:
  void SetUp() override {
    if (GetParam() == ServerStep::kListening) {
      ASSERT_TRUE(m_server.WaitUntilStopped());
    } else {
      ASSERT_TRUE(test::WaitForMutex(m_name));
    }
  }

  std::wstring m_name = FreshObjectName();
  StoppingEnd m_server{L"serve", m_name, static_cast<int>(GetParam())};
  ChannelEnd m_client;
  ElapsedTime m_elapsed;
};

// The server is there, so that it is the handshake's limit that ends the attempt.
TEST_P(ServerHangsTest, ClientFailsWithinTheTimeOfTheHandshake) {
  EXPECT_FALSE(ChannelConnect(m_name.c_str(), &m_client, {nullptr, kPatience, kShortTimeMs}));
  EXPECT_FALSE(m_elapsed.IsMoreThan(5'000));
}

TEST_P(ServerHangsTest, RetriesEndAfterTheTimeOfTheLastAttempt) {
  EXPECT_FALSE(ChannelConnectRetry(m_name.c_str(), &m_client, {nullptr, 500, kShortTimeMs}));
  EXPECT_TRUE(m_elapsed.IsMoreThan(499)) << "there is more than one attempt";
  EXPECT_FALSE(m_elapsed.IsMoreThan(5'000));
}

INSTANTIATE_TEST_SUITE_P(Steps, ServerHangsTest,
                         testing::Values(ServerStep::kListening, ServerStep::kClaimed,
                                         ServerStep::kDropped, ServerStep::kAnswered),
                         [](const auto& tested) {
                           return "Step" + std::to_string(static_cast<int>(tested.param));
                         });

class ClientKilledTest : public testing::TestWithParam<ClientStep> {};

TEST_P(ClientKilledTest, ServerServesTheNextClient) {
  const std::wstring name = FreshObjectName();
  ListenOptions options = PatientListening();
  options.handshakeTimeout = kShortTimeMs;
  auto listen = [=] {
    ChannelEnd end;
    ChannelListenRetry(name.c_str(), &end, options);
    return end;
  };
  auto server = std::async(std::launch::async, listen);
  StoppingEnd first(L"connect", name, static_cast<int>(GetParam()));
  ASSERT_TRUE(first.WaitUntilStopped());
  first.Kill();
  if (GetParam() >= ClientStep::kConfirmed) {
    // The server has its channel; that nobody is there is seen by the first message.
    ChannelEnd gone = server.get();
    ASSERT_NE(gone, nullptr);
    EXPECT_FALSE(gone->SendNumber(1, kShortTimeMs));
    server = std::async(std::launch::async, listen);
  }
  ChannelEnd second;
  EXPECT_TRUE(ChannelConnectRetry(name.c_str(), &second, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, ClientKilledTest,
    testing::Values(ClientStep::kOpened, ClientStep::kHolding, ClientStep::kRead,
                    ClientStep::kCalled, ClientStep::kAnswered, ClientStep::kLetGo,
                    ClientStep::kCleared, ClientStep::kConfirmed, ClientStep::kConnected),
    [](const auto& tested) { return "Step" + std::to_string(static_cast<int>(tested.param)); });

// The server of the stand-in stops before it answers the one that is gone. Whoever comes next must
// not call into that round, but leave the turn and wait for another rendezvous.
TEST(ClientThatCalledAndEnded, NextClientWaitsForTheNextRendezvous) {
  const std::wstring name = FreshObjectName();
  StoppingEnd server(L"serve", name, static_cast<int>(ServerStep::kClaimed));
  StoppingEnd first(L"connect", name, static_cast<int>(ClientStep::kCalled));
  ASSERT_TRUE(first.WaitUntilStopped());
  ASSERT_TRUE(server.WaitUntilStopped());
  first.Kill();
  ChannelEnd client;
  auto second = std::async(std::launch::async, [&] {
    return ChannelConnectRetry(name.c_str(), &client, PatientConnecting());
  });
  EXPECT_EQ(second.wait_for(std::chrono::milliseconds(kShortTimeMs)), std::future_status::timeout);
  server.Kill();
  const ElapsedTime elapsed;
  ChannelEnd next;
  EXPECT_TRUE(ChannelListenRetry(name.c_str(), &next, PatientListening()));
  EXPECT_TRUE(second.get());
  EXPECT_FALSE(elapsed.IsMoreThan(kPatience / 2));
}

TEST(ClientThatHangs, OneAttemptOfTheServerFailsWithinItsTime) {
  const std::wstring name = FreshObjectName();
  const StoppingEnd client(L"connect", name, static_cast<int>(ClientStep::kAnswered));
  ListenOptions options = PatientListening();
  options.handshakeTimeout = kShortTimeMs;
  ChannelEnd end;
  const ElapsedTime elapsed;
  EXPECT_FALSE(ChannelListen(name.c_str(), &end, options));
  EXPECT_FALSE(elapsed.IsMoreThan(10'000));
}

TEST(ClientThatHangs, ItsMutexKeepsTheNextServerFromServingUntilItIsKilled) {
  const std::wstring name = FreshObjectName();
  StoppingEnd client(L"connect", name, static_cast<int>(ClientStep::kAnswered));
  ListenOptions options = PatientListening();
  options.handshakeTimeout = kShortTimeMs;
  ChannelEnd end;
  EXPECT_FALSE(ChannelListen(name.c_str(), &end, options));
  options.timeout = kShortTimeMs;
  EXPECT_FALSE(ChannelListen(name.c_str(), &end, options));
  client.Kill();
  EXPECT_TRUE(IsUsable(name));
}

// Fifty clients and one server: each gets a channel of its own, which its number shows.
TEST(ManyClients, EachGetsAChannelOfItsOwn) {
  constexpr uint32_t kClients = 50;
  const std::wstring name = FreshObjectName();
  std::vector<ChannelEnd> servers(kClients);
  std::thread serving([&] {
    for (ChannelEnd& end : servers) {
      ChannelListenRetry(name.c_str(), &end, PatientListening());
    }
  });
  std::vector<ChannelEnd> ends(kClients);
  std::vector<std::thread> clients;
  clients.reserve(kClients);
  for (ChannelEnd& end : ends) {
    clients.emplace_back([&] { ChannelConnectRetry(name.c_str(), &end, PatientConnecting()); });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  serving.join();

  // Each client announces its number; each server's end finds another one.
  std::vector<std::thread> senders;
  senders.reserve(kClients);
  std::atomic<uint32_t> sent = 0;
  for (uint32_t i = 0; i < kClients; ++i) {
    ASSERT_NE(ends[i], nullptr) << i;
    ASSERT_NE(servers[i], nullptr) << i;
    senders.emplace_back([&, i] { sent += ends[i]->SendNumber(i, kPatience) ? 1 : 0; });
  }
  std::set<uint32_t> seen;
  for (const ChannelEnd& end : servers) {
    uint32_t number = kClients;
    EXPECT_TRUE(end->ReceiveNumber(&number, kPatience));
    seen.insert(number);
  }
  for (std::thread& sender : senders) {
    sender.join();
  }
  EXPECT_EQ(sent, kClients);
  EXPECT_EQ(seen.size(), kClients);
  EXPECT_EQ(*seen.rbegin(), kClients - 1);
}

TEST(LongConversation, NoMessageIsLostOrChangedBetweenTwoProcesses) {
  constexpr uint32_t kMessages = 600;
  const std::wstring name = FreshObjectName();
  const PeerProcess server =
      test::StartPeer(test::PeerPath(L"channel\\channel_exchange.exe"), {L"serve", name});
  ChannelEnd client;
  ASSERT_TRUE(ChannelConnectRetry(name.c_str(), &client, PatientConnecting()));
  EXPECT_EQ(test::ExchangeMessages(*client, test::Side::kClient, kMessages), kMessages);
  EXPECT_EQ(server.WaitForExit(), 0) << "the other side has found an error";
}

}  // namespace
}  // namespace postmarker
