#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <thread>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelPair_win.h"

namespace postmarker {
namespace {

using test::ChannelEnd;
using test::ConnectPair;
using test::FreshObjectName;
using test::kPatience;
using test::ListenInBackground;
using test::PatientConnecting;
using test::PatientListening;

// Fails at once or not at all.
bool FailsAtOnce(const std::function<bool()>& attempt) {
  const ElapsedTime elapsed;
  return !attempt() && !elapsed.IsMoreThan(5'000);
}

bool SectionExists(const std::wstring& name) {
  return static_cast<bool>(KernelHandle(::OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str())));
}

bool EventExists(const std::wstring& name) {
  return static_cast<bool>(KernelHandle(::OpenEventW(SYNCHRONIZE, FALSE, name.c_str())));
}

bool WaitForMutex(const std::wstring& rendezvous) {
  const ElapsedTime elapsed;
  while (!MutexExists(DispatchMutexName(rendezvous).c_str())) {
    if (elapsed.IsMoreThan(kPatience)) {
      return false;
    }
    ::Sleep(1);
  }
  return true;
}

// A rendezvous as bytes, read while its server listens.
std::string RendezvousBytes(const std::wstring& name) {
  const KernelHandle section(::OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
  const FileView view(::MapViewOfFile(section.Get(), FILE_MAP_READ, 0, 0, 0));
  MEMORY_BASIC_INFORMATION memory = {};
  if (!view || ::VirtualQuery(view.Get(), &memory, sizeof(memory)) == 0) {
    return {};
  }
  return {static_cast<const char*>(view.Get()), memory.RegionSize};
}

class ChannelHandshakeTest : public testing::Test {
 protected:
  bool Listen(const ListenOptions& options) {
    ChannelEnd end;
    return ChannelListen(m_name.c_str(), &end, options);
  }
  bool Connect(const ConnectOptions& options) {
    ChannelEnd end;
    return ChannelConnect(m_name.c_str(), &end, options);
  }
  // Are the next server and the next client at this rendezvous as if nothing had been.
  bool IsUsable() {
    const auto [server, client] = ConnectPair(m_name);
    return server && client;
  }

  std::wstring m_name = FreshObjectName();
};

TEST_F(ChannelHandshakeTest, NameOf210CharactersWorks) {
  m_name.resize(210, L'n');
  EXPECT_TRUE(IsUsable());
}

TEST_F(ChannelHandshakeTest, NameOf211CharactersFailsOnBothSides) {
  m_name.resize(211, L'n');
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(PatientListening()); }));
  EXPECT_TRUE(FailsAtOnce([&] { return Connect(PatientConnecting()); }));
}

TEST_F(ChannelHandshakeTest, NoNameFailsOnBothSides) {
  m_name.clear();
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(PatientListening()); }));
  EXPECT_TRUE(FailsAtOnce([&] { return Connect(PatientConnecting()); }));
  ChannelEnd end;
  EXPECT_TRUE(FailsAtOnce([&] { return ChannelListen(nullptr, &end, PatientListening()); }));
  EXPECT_TRUE(FailsAtOnce([&] { return ChannelConnect(nullptr, &end, PatientConnecting()); }));
}

TEST_F(ChannelHandshakeTest, ServerAskedFor4095BytesFailsAtOnce) {
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(PatientListening(4095)); }));
}

TEST_F(ChannelHandshakeTest, FailedAttemptClearsTheChannelThatWasThere) {
  auto [server, client] = ConnectPair(m_name);
  EXPECT_FALSE(ChannelListen(L"", &server, PatientListening()));
  EXPECT_EQ(server, nullptr);
  EXPECT_FALSE(ChannelConnect(L"", &client, PatientConnecting()));
  EXPECT_EQ(client, nullptr);
}

TEST_F(ChannelHandshakeTest, ClientLearnsTheSizeFromTheMapping) {
  const auto [server, client] = ConnectPair(m_name, PatientListening(65'536));
  ASSERT_TRUE(server && client);
  EXPECT_EQ(server->RegionSize(), 65'536U);
  EXPECT_EQ(client->RegionSize(), 65'536U);
}

TEST_F(ChannelHandshakeTest, RendezvousHoldsTheRandomPrivateName) {
  auto server = ListenInBackground(m_name, PatientListening());
  ASSERT_TRUE(WaitForMutex(m_name));
  const std::string bytes = RendezvousBytes(m_name);
  ASSERT_EQ(bytes.size(), 4096U);
  uint32_t length = 0;
  std::memcpy(&length, bytes.data(), sizeof(length));
  ASSERT_EQ(length, (m_name.size() + 33) * 2);
  std::wstring name(length / 2 + 1, L'?');
  std::memcpy(name.data(), bytes.data() + 4, length + 2);
  EXPECT_EQ(name.substr(0, m_name.size() + 1), m_name + L".");
  EXPECT_EQ(name.find_first_not_of(L"0123456789ABCDEFGHIJKLMNOPQRSTUV", m_name.size() + 1),
            name.size() - 1);
  EXPECT_EQ(name.back(), L'\0');
  name.pop_back();
  EXPECT_TRUE(SectionExists(name));
  EXPECT_TRUE(EventExists(name + L".ServerEvt"));
  EXPECT_TRUE(EventExists(name + L".ClientEvt"));

  ChannelEnd client;
  EXPECT_TRUE(ChannelConnect(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_FALSE(SectionExists(m_name)) << "the rendezvous is free for the next server";
  EXPECT_FALSE(MutexExists(DispatchMutexName(m_name).c_str()));
  EXPECT_TRUE(SectionExists(name));
  server.get().reset();
  client.reset();
  EXPECT_FALSE(SectionExists(name)) << "the ends have closed what they had";
  EXPECT_FALSE(EventExists(name + L".ServerEvt"));
  EXPECT_FALSE(EventExists(name + L".ClientEvt"));
}

// The mask that the object's list grants to everyone; 0 if the list is another.
DWORD MaskForEveryone(HANDLE object) {
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (::GetSecurityInfo(object, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                        &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return 0;
  }
  const ScopeExit free([descriptor] { ::LocalFree(descriptor); });
  void* found = nullptr;
  if (list == nullptr || list->AceCount != 1 || !::GetAce(list, 0, &found)) {
    return 0;
  }
  auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(found);
  return ::IsWellKnownSid(&entry->SidStart, WinWorldSid) ? entry->Mask : 0;
}

TEST_F(ChannelHandshakeTest, EachObjectGrantsItsOwnRightsToEveryone) {
  auto server = ListenInBackground(m_name, PatientListening());
  ASSERT_TRUE(WaitForMutex(m_name));
  const std::string bytes = RendezvousBytes(m_name);
  std::wstring name(m_name.size() + 33, L'?');
  std::memcpy(name.data(), bytes.data() + 4, name.size() * sizeof(wchar_t));
  const auto section = [](const std::wstring& which) {
    return KernelHandle(::OpenFileMappingW(READ_CONTROL, FALSE, which.c_str()));
  };
  const auto event = [](const std::wstring& which) {
    return KernelHandle(::OpenEventW(READ_CONTROL, FALSE, which.c_str()));
  };
  EXPECT_EQ(MaskForEveryone(section(m_name).Get()), 0x6U);
  EXPECT_EQ(MaskForEveryone(section(name).Get()), 0x6U);
  EXPECT_EQ(MaskForEveryone(event(name + L".ServerEvt").Get()), 0x100002U);
  EXPECT_EQ(MaskForEveryone(event(name + L".ClientEvt").Get()), 0x100002U);
  const KernelHandle mutex(::OpenMutexW(READ_CONTROL, FALSE, DispatchMutexName(m_name).c_str()));
  EXPECT_EQ(MaskForEveryone(mutex.Get()), 0x100001U);
  EXPECT_TRUE(Connect(PatientConnecting()));
}

TEST_F(ChannelHandshakeTest, PrivateNamesDiffer) {
  std::set<std::string> rendezvous;
  for (int i = 0; i < 3; ++i) {
    auto server = ListenInBackground(m_name, PatientListening());
    ASSERT_TRUE(WaitForMutex(m_name));
    rendezvous.insert(RendezvousBytes(m_name));
    EXPECT_TRUE(Connect(PatientConnecting()));
    server.get();
  }
  EXPECT_EQ(rendezvous.size(), 3U);
}

TEST_F(ChannelHandshakeTest, EveryKindConnects) {
  for (const ChannelKind kind :
       {ChannelKind::kLocal, ChannelKind::kGlobal, ChannelKind::kGlobalLowIntegrity}) {
    ListenOptions options = PatientListening();
    options.kind = kind;
    const auto [server, client] = ConnectPair(m_name, options);
    EXPECT_TRUE(server && client) << static_cast<int>(kind);
  }
}

TEST_F(ChannelHandshakeTest, ServerFailsWhereTheRendezvousExists) {
  const KernelHandle section(
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, m_name.c_str()));
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(PatientListening()); }));
}

TEST_F(ChannelHandshakeTest, ServerWithoutAClientFailsAfterItsTime) {
  ListenOptions options = PatientListening();
  options.timeout = 40;
  const uint64_t start = ::GetTickCount64();
  EXPECT_FALSE(Listen(options));
  EXPECT_GE(::GetTickCount64() - start, 39U);
  EXPECT_LT(::GetTickCount64() - start, 5'000U);
  EXPECT_FALSE(SectionExists(m_name));
  EXPECT_TRUE(IsUsable());
}

TEST_F(ChannelHandshakeTest, ClientWithoutAServerFailsAfterItsTime) {
  const uint64_t start = ::GetTickCount64();
  EXPECT_FALSE(Connect({nullptr, 40, kPatience}));
  EXPECT_GE(::GetTickCount64() - start, 40U);
  EXPECT_LT(::GetTickCount64() - start, 5'000U);
}

TEST_F(ChannelHandshakeTest, CancelWakesAServerThatWaitsForAClient) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  ListenOptions options = PatientListening();
  options.cancel = cancel.Get();
  auto server = ListenInBackground(m_name, options);
  ASSERT_TRUE(WaitForMutex(m_name));
  ::SetEvent(cancel.Get());
  const ElapsedTime elapsed;
  EXPECT_EQ(server.get(), nullptr);
  EXPECT_FALSE(elapsed.IsMoreThan(5'000));
  EXPECT_TRUE(IsUsable());
}

TEST_F(ChannelHandshakeTest, CancelEndsTheWaitForAMutexThatExists) {
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

TEST_F(ChannelHandshakeTest, ServerWaitsForAnOldMutexToGo) {
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

TEST_F(ChannelHandshakeTest, ServerTakesAClientThatCameByTheOldMutex) {
  // Somebody's handle keeps the mutex of the last round alive.
  const KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  auto server = ListenInBackground(m_name, PatientListening());
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnectRetry(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

TEST_F(ChannelHandshakeTest, ServerGivesUpOnAnOldMutexAfterItsTime) {
  const KernelHandle old = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  ListenOptions options = PatientListening();
  options.timeout = 40;
  EXPECT_TRUE(FailsAtOnce([&] { return Listen(options); }));
  EXPECT_FALSE(SectionExists(m_name));
}

TEST_F(ChannelHandshakeTest, AbandonedMutexIsTakenAtALaterTry) {
  auto server = ListenInBackground(m_name, PatientListening());
  ASSERT_TRUE(WaitForMutex(m_name));
  const KernelHandle mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(m_name).c_str()));
  std::thread([&] { ::WaitForSingleObject(mutex.Get(), 0); }).join();
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnect(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

TEST_F(ChannelHandshakeTest, FailedClientPutsTheMutexBack) {
  // A mutex and no rendezvous: the client takes it and then fails.
  const KernelHandle mutex = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  EXPECT_TRUE(FailsAtOnce([&] { return Connect(PatientConnecting()); }));
  bool free = false;
  std::thread([&] { free = IsSignalled(mutex.Get()); }).join();
  EXPECT_TRUE(free);
}

TEST_F(ChannelHandshakeTest, HandshakeTimeIsTheSmallerOfTheTwo) {
  for (const ConnectOptions& options :
       {ConnectOptions{nullptr, kPatience, 30}, ConnectOptions{nullptr, 30, kPatience}}) {
    const std::wstring name = FreshObjectName();
    peer::RawServerOptions server;
    server.name = name;
    // It does not answer until the client has given up.
    const KernelHandle givenUp(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    server.cancel = givenUp.Get();
    server.onStep = [&](peer::ServerStep step) {
      if (step == peer::ServerStep::kClaimed) {
        ::WaitForSingleObject(givenUp.Get(), kPatience);
      }
    };
    std::thread serving([&] { peer::RawListen(server); });
    ASSERT_TRUE(WaitForMutex(name));
    ChannelEnd end;
    EXPECT_TRUE(FailsAtOnce([&] { return ChannelConnect(name.c_str(), &end, options); }));
    ::SetEvent(givenUp.Get());
    serving.join();
  }
}

TEST_F(ChannelHandshakeTest, CancelWakesAClientThatWaitsForTheServer) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  peer::RawServerOptions server;
  server.name = m_name;
  const KernelHandle givenUp(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  server.cancel = givenUp.Get();
  server.onStep = [&](peer::ServerStep step) {
    if (step == peer::ServerStep::kClaimed) {
      ::SetEvent(cancel.Get());
      ::WaitForSingleObject(givenUp.Get(), kPatience);
    }
  };
  std::thread serving([&] { peer::RawListen(server); });
  ASSERT_TRUE(WaitForMutex(m_name));
  EXPECT_TRUE(FailsAtOnce([&] { return Connect({cancel.Get(), kPatience, kPatience}); }));
  ::SetEvent(givenUp.Get());
  serving.join();
}

TEST_F(ChannelHandshakeTest, RetriesGoOnUntilTheOtherSideIsThere) {
  ListenOptions options = PatientListening();
  options.timeout = kPatience;
  KernelHandle occupied(
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, m_name.c_str()));
  auto server = std::async(std::launch::async, [&] {
    ChannelEnd end;
    ChannelListenRetry(m_name.c_str(), &end, options);
    return end;
  });
  EXPECT_EQ(server.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  occupied.Reset();
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnectRetry(m_name.c_str(), &client, PatientConnecting()));
  EXPECT_NE(server.get(), nullptr);
}

TEST_F(ChannelHandshakeTest, ClientRetriesAnAttemptThatFailed) {
  // A mutex without a rendezvous fails the first attempts.
  KernelHandle mutex = CreateExclusiveMutex(DispatchMutexName(m_name).c_str());
  auto client = std::async(std::launch::async, [&] {
    ChannelEnd end;
    ChannelConnectRetry(m_name.c_str(), &end, PatientConnecting());
    return end;
  });
  EXPECT_EQ(client.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  mutex.Reset();
  ChannelEnd server;
  EXPECT_TRUE(ChannelListenRetry(m_name.c_str(), &server, PatientListening()));
  EXPECT_NE(client.get(), nullptr);
}

TEST_F(ChannelHandshakeTest, RetriesEndAfterTheirTime) {
  ListenOptions options = PatientListening(4095);
  options.timeout = 10;
  ChannelEnd end;
  const uint64_t start = ::GetTickCount64();
  EXPECT_FALSE(ChannelListenRetry(m_name.c_str(), &end, options));
  EXPECT_GE(::GetTickCount64() - start, 80U) << "there is a pause between attempts";
  EXPECT_FALSE(ChannelConnectRetry(m_name.c_str(), &end, {nullptr, 10, 10}));
  EXPECT_LT(::GetTickCount64() - start, 5'000U);
}

TEST_F(ChannelHandshakeTest, CancelEndsRetriesAfterTheAttempt) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, TRUE, nullptr));
  ListenOptions options = PatientListening(4095);
  options.cancel = cancel.Get();
  ChannelEnd end;
  EXPECT_TRUE(FailsAtOnce([&] { return ChannelListenRetry(m_name.c_str(), &end, options); }));
  EXPECT_TRUE(FailsAtOnce([&] {
    return ChannelConnectRetry(m_name.c_str(), &end, {cancel.Get(), kPatience, kPatience});
  }));
}

// Servers whose rendezvous or region is not what it should be.
class LyingServerTest : public ChannelHandshakeTest {
 protected:
  // Does the product's client refuse at once, and let the next one try.
  bool IsRefused(peer::RawServerOptions lie) {
    const KernelHandle over(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    lie.name = m_name;
    lie.cancel = over.Get();
    std::thread serving([&] { peer::RawListen(lie); });
    const bool refused =
        WaitForMutex(m_name) && FailsAtOnce([&] { return Connect(PatientConnecting()); });
    bool free = false;
    std::thread([&] {
      const KernelHandle mutex(::OpenMutexW(SYNCHRONIZE, FALSE, DispatchMutexName(m_name).c_str()));
      free = IsSignalled(mutex.Get());
    }).join();
    ::SetEvent(over.Get());
    serving.join();
    return refused && free;
  }
};

TEST_F(LyingServerTest, WrongLengthFieldIsRefused) {
  const auto right = static_cast<uint32_t>(m_name.size() + 33) * 2;
  for (const uint32_t length : {0U, right - 2, right - 1, right + 1, right + 2, 4'090U, 4'092U,
                                0xFFFF'FFFEU, right | 0x8000'0000}) {
    peer::RawServerOptions lie;
    lie.saidLength = length;
    EXPECT_TRUE(IsRefused(lie)) << length;
  }
}

TEST_F(LyingServerTest, NameOfAnotherLengthIsRefused) {
  peer::RawServerOptions lie;
  lie.saidName = m_name + L".short";
  EXPECT_TRUE(IsRefused(lie));
  lie.saidLength = static_cast<uint32_t>(m_name.size() + 33) * 2;
  EXPECT_TRUE(IsRefused(lie)) << "the length is right, the name is not";
}

TEST_F(LyingServerTest, NameThatLeadsNowhereIsRefused) {
  peer::RawServerOptions lie;
  lie.saidName = m_name + L"." + std::wstring(32, L'X');
  EXPECT_TRUE(IsRefused(lie));
}

TEST_F(LyingServerTest, NameOfAnotherKindOfObjectIsRefused) {
  const std::wstring name = m_name + L"." + std::wstring(32, L'X');
  const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
  peer::RawServerOptions lie;
  lie.saidName = name;
  EXPECT_TRUE(IsRefused(lie));
}

TEST_F(LyingServerTest, RegionWithoutEventsIsRefused) {
  const std::wstring name = m_name + L"." + std::wstring(32, L'X');
  const KernelHandle section(
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str()));
  peer::RawServerOptions lie;
  lie.saidName = name;
  EXPECT_TRUE(IsRefused(lie));
}

TEST_F(LyingServerTest, MemoryThatIsOnlyReservedIsNotRead) {
  peer::RawServerOptions lie;
  lie.reserveRendezvous = true;
  EXPECT_TRUE(IsRefused(lie));
  lie.reserveRendezvous = false;
  lie.reservePrivate = true;
  EXPECT_TRUE(IsRefused(lie));
}

TEST_F(LyingServerTest, RegionThatIsReservedBehindItsFirstPageHasTheSizeOfThatPage) {
  peer::RawServerOptions lie;
  lie.name = m_name;
  lie.size = 65'536;
  lie.reservePrivate = true;
  lie.committed = 4096;
  std::optional<peer::RawEnd> end;
  std::thread serving([&] { end = peer::RawListen(lie); });
  ChannelEnd client;
  EXPECT_TRUE(ChannelConnectRetry(m_name.c_str(), &client, PatientConnecting()));
  serving.join();
  ASSERT_TRUE(client && end);
  EXPECT_EQ(client->RegionSize(), 4096U);
  end->Announce(4090, 1, nullptr, 0);
  std::wstring text;
  EXPECT_FALSE(client->ReceiveText(&text, kPatience)) << "it would end behind the page";
}

}  // namespace
}  // namespace postmarker
