#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <set>

#include "ipc/ChannelNames.h"
#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelPair_win.h"
#include "support/RendezvousFixture_win.h"

namespace postmarker {
namespace {

using test::ChannelEnd;
using test::ConnectPair;
using test::FailsAtOnce;
using test::FreshObjectName;
using test::kPatience;
using test::ListenInBackground;
using test::ListenUntilItEnds;
using test::PatientConnecting;
using test::PatientListening;
using test::SectionExists;
using test::WaitForMutex;

bool EventExists(const std::wstring& name) {
  return static_cast<bool>(KernelHandle(::OpenEventW(SYNCHRONIZE, FALSE, name.c_str())));
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

class ChannelHandshakeTest : public test::RendezvousFixture {};

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

TEST_F(ChannelHandshakeTest, ServerUsesTheWholePagesThatItGets) {
  // 5000 bytes are two pages.
  const auto [server, client] = ConnectPair(m_name, PatientListening(5'000));
  ASSERT_TRUE(server && client);
  EXPECT_EQ(server->RegionSize(), 8'192U);
  EXPECT_EQ(client->RegionSize(), 8'192U);
  const std::wstring longest((8'192 - 8) / 2, L'x');
  for (const auto& [from, to] :
       {std::pair(server.get(), client.get()), std::pair(client.get(), server.get())}) {
    EXPECT_FALSE(from->SendText((longest + L"y").c_str(), 5'000)) << "it does not fit";
    auto sent = std::async(std::launch::async,
                           [&, sender = from] { return sender->SendText(longest.c_str(), 5'000); });
    std::wstring text;
    EXPECT_TRUE(to->ReceiveText(&text, 5'000));
    EXPECT_EQ(text, longest);
    EXPECT_TRUE(sent.get());
  }
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
  EXPECT_EQ(ListenUntilItEnds(m_name, options), nullptr);
  EXPECT_GE(::GetTickCount64() - start, 39U);
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

TEST_F(ChannelHandshakeTest, HandshakeTimeIsTheSmallerOfTheTwo) {
  for (const ConnectOptions& options :
       {ConnectOptions{nullptr, kPatience, 30}, ConnectOptions{nullptr, 30, kPatience}}) {
    const std::wstring name = FreshObjectName();
    const test::SilentServer server(name);
    ASSERT_TRUE(WaitForMutex(name));
    ChannelEnd end;
    EXPECT_TRUE(FailsAtOnce([&] { return ChannelConnect(name.c_str(), &end, options); }));
  }
}

TEST_F(ChannelHandshakeTest, CancelWakesAClientThatWaitsForTheServer) {
  const KernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const test::SilentServer server(m_name, cancel.Get());
  ASSERT_TRUE(WaitForMutex(m_name));
  EXPECT_TRUE(FailsAtOnce([&] { return Connect({cancel.Get(), kPatience, kPatience}); }));
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

}  // namespace
}  // namespace postmarker
