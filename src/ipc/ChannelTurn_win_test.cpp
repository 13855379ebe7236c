// The mutex that gives a rendezvous to one client at a time: old ones, abandoned ones, and who puts
// it back.
#include <windows.h>

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelPair_win.h"
#include "support/RendezvousFixture_win.h"

namespace postmarker {
namespace {

using test::ChannelEnd;
using test::FailsAtOnce;
using test::kPatience;
using test::ListenInBackground;
using test::PatientConnecting;
using test::PatientListening;
using test::SectionExists;
using test::WaitForMutex;

class ChannelTurnTest : public test::RendezvousFixture {};

TEST_F(ChannelTurnTest, CancelEndsTheWaitForAMutexThatExists) {
  const KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, TRUE, nullptr));
  ListenOptions options = PatientListening();
  options.cancel = cancel.Get();
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(options); }));
  ::WaitForSingleObject(old.Get(), 0);
  bool failed = false;
  std::thread([&] {
    failed = FailsAtOnce([&] { return Connect({cancel.Get(), kPatience, kPatience}); });
  }).join();
  EXPECT_TRUE(failed);
}

TEST_F(ChannelTurnTest, ServerWaitsForAnOldMutexToGo) {
  KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  ::WaitForSingleObject(old.Get(), 0);
  auto server = ListenInBackground(m_name, PatientListening());
  const ElapsedTime elapsed;
  while (!SectionExists(m_name) && !elapsed.IsMoreThan(kPatience)) {
    ::Sleep(1);
  }
  auto client = test::ConnectInBackground(m_name, PatientConnecting());
  EXPECT_EQ(server.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  old.Reset();
  EXPECT_NE(server.get(), nullptr);
  EXPECT_NE(client.get(), nullptr);
}

TEST_F(ChannelTurnTest, ServerTakesAClientThatCameByTheOldMutex) {
  // Somebody's handle keeps the mutex of the last round alive.
  const KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  auto server = ListenInBackground(m_name, PatientListening());
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnectRetry(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

TEST_F(ChannelTurnTest, ServerGivesUpOnAnOldMutexAfterItsTime) {
  const KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  ListenOptions options = PatientListening();
  options.timeout = 40;
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(options); }));
  EXPECT_FALSE(SectionExists(m_name));
}

TEST_F(ChannelTurnTest, AbandonedMutexIsTakenAtALaterTry) {
  auto server = ListenInBackground(m_name, PatientListening());
  ASSERT_TRUE(WaitForMutex(m_name));
  const KernelHandle mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(m_name).c_str()));
  std::thread([&] { ::WaitForSingleObject(mutex.Get(), 0); }).join();
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnect(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

TEST_F(ChannelTurnTest, AbandonedMutexIsNotKeptByTheThreadThatFoundIt) {
  // A mutex and no rendezvous: the client finds it abandoned, takes it at a later try and fails.
  // Its thread lives on, so that the system does not free what it may still own.
  const KernelHandle mutex = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  std::thread([&] { ::WaitForSingleObject(mutex.Get(), 0); }).join();
  const KernelHandle failed(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const KernelHandle over(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::thread client([&] {
    EXPECT_FALSE(Connect({nullptr, 5'000, 5'000}));
    ::SetEvent(failed.Get());
    ::WaitForSingleObject(over.Get(), kPatience);
  });
  ::WaitForSingleObject(failed.Get(), kPatience);
  EXPECT_TRUE(IsSignalled(mutex.Get())) << "the client's thread still owns the mutex";
  ::SetEvent(over.Get());
  client.join();
}

TEST_F(ChannelTurnTest, FailedClientPutsTheMutexBack) {
  // A mutex and no rendezvous: the client takes it and then fails.
  const KernelHandle mutex = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  EXPECT_TRUE(FailsAtOnce([&] { return Connect(PatientConnecting()); }));
  bool free = false;
  std::thread([&] { free = IsSignalled(mutex.Get()); }).join();
  EXPECT_TRUE(free);
}

// A server may wait for the mutex of the last round before it looks for a client. The client that
// has come by that mutex must not be what it waits for.
TEST_F(ChannelTurnTest, ClientThatCameByTheOldMutexDoesNotKeepTheServerFromAnswering) {
  KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  peer::RawServerOptions server;
  server.name = m_name;
  server.timeout = kPatience;
  const KernelHandle published(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  server.onStep = [&](peer::ServerStep step) {
    if (step == peer::ServerStep::kRendezvousMade) {
      ::SetEvent(published.Get());
    }
  };
  auto serving = std::async(std::launch::async, [&] { return peer::RawListen(server); });
  ASSERT_EQ(::WaitForSingleObject(published.Get(), kPatience), WAIT_OBJECT_0);
  auto client = test::ConnectInBackground(m_name, {nullptr, 5'000, 5'000});
  const ElapsedTime elapsed;
  while (IsSignalled(old.Get()) && !elapsed.IsMoreThan(kPatience)) {
    ::ReleaseMutex(old.Get());
    ::Sleep(1);
  }
  old.Reset();
  EXPECT_NE(client.get(), nullptr);
  EXPECT_TRUE(serving.get());
}

TEST_F(ChannelTurnTest, ClientThatIsNotAnsweredPutsTheMutexBack) {
  const test::SilentServer server(m_name);
  ASSERT_TRUE(WaitForMutex(m_name));
  const KernelHandle mutex(
      ::OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, DispatchMutexName(m_name).c_str()));
  // Its thread lives on, so that the system does not free what it may still own.
  EXPECT_FALSE(Connect({nullptr, kPatience, 50}));
  std::async(std::launch::async, [&] {
    EXPECT_EQ(::WaitForSingleObject(mutex.Get(), 0), WAIT_OBJECT_0);
    ::ReleaseMutex(mutex.Get());
  }).get();
}

// Whoever still looks at it must not get it: it is the mutex of a round that is over.
TEST_F(ChannelTurnTest, ConnectedClientDoesNotPutTheMutexBack) {
  auto server = ListenInBackground(m_name, PatientListening());
  ASSERT_TRUE(WaitForMutex(m_name));
  const KernelHandle mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(m_name).c_str()));
  EXPECT_TRUE(Connect(PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
  std::async(std::launch::async, [&] {
    EXPECT_EQ(::WaitForSingleObject(mutex.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
  }).get();
}

}  // namespace
}  // namespace postmarker
