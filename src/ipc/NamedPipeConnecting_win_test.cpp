// How the calling end of a pipe comes to its server, or gives up, and what Shutdown waits for.
#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "ipc/ObjectSecurity_win.h"
#include "ipc/PipeOwner_win.h"
#include "support/ImportPatch_win.h"
#include "support/NamedPipeFixture_win.h"
#include "support/ObjectCount_win.h"

namespace postmarker {
namespace {

using std::chrono::milliseconds;
using test::kBufferChars;
using test::TimeOf;
using test::WaitUntil;

class NamedPipeConnectingTest : public test::NamedPipeFixture {};

TEST_F(NamedPipeConnectingTest, TryConnectWithoutAttemptsSucceedsAndLeavesTheClientUnconnected) {
  ASSERT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  EXPECT_TRUE(m_client.TryConnect(0, 100));
  EXPECT_FALSE(m_client.Write(L"text"));
  EXPECT_TRUE(m_client.Open());
}

TEST_F(NamedPipeConnectingTest, TryConnectPausesBetweenItsAttemptsOnly) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  const milliseconds time = TimeOf([this] { EXPECT_FALSE(m_client.TryConnect(2, 300)); });
  EXPECT_GE(time, milliseconds(290));
  EXPECT_LT(time, milliseconds(580));
}

TEST_F(NamedPipeConnectingTest, TryConnectFindsAServerThatComesLate) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  std::thread late([this] {
    ::Sleep(50);
    EXPECT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  });
  EXPECT_TRUE(m_client.TryConnect(200, 10));
  late.join();
}

TEST_F(NamedPipeConnectingTest, TryConnectEndsItsPauseWhenStopIsRequested) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  std::thread stopper([this] {
    ::Sleep(30);
    m_client.RequestStop();
  });
  EXPECT_LT(TimeOf([this] { EXPECT_FALSE(m_client.TryConnect(2, 4'000)); }), milliseconds(2'000));
  stopper.join();
}

TEST_F(NamedPipeConnectingTest, TryConnectAsksItsQueryAtLeastEvery100MillisecondsOfAPause) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  int asked = 0;
  const milliseconds time =
      TimeOf([&] { EXPECT_FALSE(m_client.TryConnect(2, 4'000, [&] { return ++asked == 4; })); });
  EXPECT_EQ(asked, 4);
  EXPECT_LT(time, milliseconds(2'000));
  asked = 0;
  EXPECT_FALSE(m_client.TryConnect(2, 300, [&] { return ++asked == 1'000; }));
  EXPECT_GE(asked, 4) << "before the first attempt and in each third of the pause";
}

TEST_F(NamedPipeConnectingTest, StoppedTryConnectOpensNothing) {
  ASSERT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  EXPECT_FALSE(m_client.TryConnect(3, 10, [] { return true; }));
  m_client.RequestStop();
  EXPECT_FALSE(m_client.TryConnect(3, 10));
  EXPECT_FALSE(m_server.Accept()) << "nobody came";
}

TEST_F(NamedPipeConnectingTest, ShutdownWaitsForATryConnectOfAnotherThread) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  std::atomic<bool> isBack = false;
  std::thread connecting([&] {
    EXPECT_FALSE(m_client.TryConnect(1'000, 4'000, [] {
      ::Sleep(60);
      return false;
    }));
    isBack = true;
  });
  ::Sleep(20);
  m_client.Shutdown();
  EXPECT_TRUE(isBack);
  connecting.join();
}

TEST_F(NamedPipeConnectingTest, StoppedClientStaysSoUntilItIsInitialisedAgain) {
  Connect();
  m_client.RequestStop();
  m_client.Close();
  EXPECT_TRUE(m_client.StopRequested());
  EXPECT_FALSE(m_client.ConnectBlocking());
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  EXPECT_FALSE(m_client.StopRequested());
  EXPECT_TRUE(WaitUntil([this] { return m_server.Accept() || m_client.Open(); }));
}

TEST_F(NamedPipeConnectingTest, OpenOnAConnectedClientFailsAndDisconnects) {
  Connect();
  EXPECT_FALSE(m_client.Open());
  EXPECT_FALSE(m_client.Write(L"text"));
  EXPECT_TRUE(WaitUntil([this] { return !m_server.IsConnected(); }));
}

TEST_F(NamedPipeConnectingTest, NameOfNineCharactersFailsAndShutdownAfterItIsHarmless) {
  EXPECT_FALSE(m_client.Init(L"\\\\.\\pipe\\", kBufferChars, 0));
  m_client.Shutdown();
  m_client.Shutdown();
  EXPECT_FALSE(m_server.Init(L"\\\\.\\pipe\\", kBufferChars));
  m_server.Shutdown();
  EXPECT_TRUE(m_client.Init(L"\\\\.\\pipe\\t", kBufferChars, 0));
}

TEST_F(NamedPipeConnectingTest, InitRefusesWhatItCannotServe) {
  EXPECT_FALSE(m_client.Init(nullptr, kBufferChars, 0));
  EXPECT_FALSE(m_client.Init(m_name.c_str(), 0, 0));
  EXPECT_FALSE(m_client.Init(m_name.c_str(), -1, 0));
  EXPECT_FALSE(m_client.Init(m_name.c_str(), kBufferChars, 1));
  EXPECT_FALSE(m_server.Init(nullptr, kBufferChars));
  EXPECT_FALSE(m_server.Init(m_name.c_str(), 0));
  EXPECT_FALSE(m_server.Init(L"no pipe at all", kBufferChars));
}

TEST_F(NamedPipeConnectingTest, FailedInitLeavesNothingOfAnEarlierOne) {
  Connect();
  EXPECT_FALSE(m_client.Init(m_name.c_str(), kBufferChars, 1));
  EXPECT_TRUE(WaitUntil([this] { return !m_server.IsConnected(); }));
  EXPECT_FALSE(m_client.Open());
  EXPECT_FALSE(m_client.Write(L"text"));
}

TEST_F(NamedPipeConnectingTest, ConnectBlockingWaitsForAServer) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  std::thread connecting([this] { EXPECT_TRUE(m_client.ConnectBlocking()); });
  ::Sleep(20);
  EXPECT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  connecting.join();
  EXPECT_FALSE(m_client.ConnectBlocking());
  EXPECT_FALSE(m_client.Write(L"text"));
}

TEST_F(NamedPipeConnectingTest, ConnectBlockingWaitsForAFreeInstance) {
  ASSERT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  NamedPipeClient other;
  ASSERT_TRUE(other.Init(m_name.c_str(), kBufferChars, 0));
  ASSERT_TRUE(other.Open());
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  EXPECT_FALSE(m_client.Open());
  std::thread connecting([this] { EXPECT_TRUE(m_client.ConnectBlocking()); });
  ::Sleep(20);
  other.Close();
  EXPECT_TRUE(WaitUntil([this] { return m_server.Accept() && m_server.IsConnected(); }));
  connecting.join();
}

TEST_F(NamedPipeConnectingTest, ShutdownEndsAConnectBlockingOfAnotherThreadAndWaitsForIt) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  std::atomic<bool> isBack = false;
  std::thread connecting([&] {
    EXPECT_FALSE(m_client.ConnectBlocking());
    isBack = true;
  });
  ::Sleep(20);
  m_client.Shutdown();
  EXPECT_TRUE(isBack);
  connecting.join();
}

TEST_F(NamedPipeConnectingTest, ShutdownGivesEverythingBack) {
  const auto cycle = [this] {
    NamedPipeServer server;
    NamedPipeClient client;
    EXPECT_TRUE(server.Init(m_name.c_str(), kBufferChars));
    EXPECT_TRUE(client.Init(m_name.c_str(), kBufferChars, 0));
    EXPECT_TRUE(client.Open());
  };
  cycle();
  const int64_t before = test::CountKernelHandles();
  for (int i = 0; i < 5; ++i) {
    cycle();
  }
  EXPECT_EQ(test::CountKernelHandles(), before);
}

// A client that takes the pipe's server for another user's.
class ForeignPipeTest : public NamedPipeConnectingTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
    ASSERT_TRUE(m_wary.Init(m_name.c_str(), kBufferChars, 0));
  }

  std::atomic<int> m_asked = 0;
  PipeOwner m_answer = PipeOwner::kAnotherUser;
  NamedPipeClient m_wary{[this](HANDLE pipe) {
    EXPECT_NE(pipe, nullptr);
    ++m_asked;
    return m_answer;
  }};
};

TEST_F(ForeignPipeTest, PipeOfAnotherUserIsAsNone) {
  EXPECT_FALSE(m_wary.Open());
  EXPECT_EQ(m_asked, 1);
  EXPECT_FALSE(m_wary.Write(L"secret"));
  EXPECT_TRUE(WaitUntil([this] { return m_server.Accept() || !m_server.IsConnected(); }));
  EXPECT_FALSE(m_wary.TryConnect(3, 1));
  EXPECT_FALSE(m_wary.Write(L"secret"));
}

TEST_F(ForeignPipeTest, PipeWhoseOwnerIsNotToldIsOpened) {
  m_answer = PipeOwner::kUnknown;
  EXPECT_TRUE(m_wary.Open());
  EXPECT_EQ(m_asked, 1);
}

TEST_F(ForeignPipeTest, ConnectBlockingRestsWhileAnotherUserServesThePipe) {
  std::thread connecting([this] { EXPECT_FALSE(m_wary.ConnectBlocking()); });
  EXPECT_TRUE(WaitUntil([this] { return m_asked > 0; }));
  // The server is free for the next client again and again.
  for (int i = 0; i < 50; ++i) {
    m_server.Accept();
    ::Sleep(2);
  }
  m_wary.RequestStop();
  connecting.join();
  EXPECT_EQ(m_asked, 1) << "the next look is a second later";
}

TEST_F(NamedPipeConnectingTest, OwnProcessIsFoundToServeThePipe) {
  ASSERT_TRUE(m_server.Init(m_name.c_str(), kBufferChars));
  const FileHandle pipe(::CreateFileW(m_name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(pipe);
  EXPECT_EQ(OwnerOfPipe(pipe.Get()), PipeOwner::kThisUser);
}

TEST(PipeOwner, NoPipeHasNoOwnerThatIsKnown) {
  EXPECT_EQ(OwnerOfPipe(nullptr), PipeOwner::kUnknown);
  EXPECT_EQ(OwnerOfPipe(::GetCurrentProcess()), PipeOwner::kUnknown);
}

TEST(PipeOwner, ProcessThatIsGoneHasNoOwnerThatIsKnown) {
  EXPECT_EQ(OwnerOfProcess(0xFFFF'FFF0), PipeOwner::kUnknown);
}

TEST(PipeOwner, ProcessThatRefusesToBeLookedAtIsAnotherUsers) {
  // It never runs: the test program, made with a descriptor that denies everything.
  LocalMemory nobody;
  ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(
      L"D:(D;;GA;;;WD)", SDDL_REVISION_1, nobody.Put(), nullptr));
  SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nobody.Get(), FALSE};
  wchar_t program[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, program, MAX_PATH);
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION info = {};
  ASSERT_TRUE(::CreateProcessW(program, nullptr, &attributes, nullptr, FALSE, CREATE_SUSPENDED,
                               nullptr, nullptr, &startup, &info));
  const KernelHandle process(info.hProcess);
  const KernelHandle thread(info.hThread);
  EXPECT_EQ(OwnerOfProcess(info.dwProcessId), PipeOwner::kAnotherUser);
  EXPECT_TRUE(::TerminateProcess(process.Get(), 0));
}

DWORD g_flagsOfOpening = 0;
HANDLE WINAPI TellFlagsOfOpening(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD,
                                 DWORD flags, HANDLE) {
  g_flagsOfOpening = flags;
  ::SetLastError(ERROR_FILE_NOT_FOUND);
  return INVALID_HANDLE_VALUE;
}

TEST_F(NamedPipeConnectingTest, ClientAsksTheSystemToLetTheServerOnlyKnowIt) {
  ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
  const test::ImportPatch patch(::GetModuleHandleW(nullptr), "CreateFileW", &TellFlagsOfOpening);
  EXPECT_FALSE(m_client.Open());
  EXPECT_EQ(g_flagsOfOpening, DWORD{SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION});
}

// How far a server may act in the name of the client that `callAndWrite` lets call and write.
SECURITY_IMPERSONATION_LEVEL LevelGranted(const std::wstring& name,
                                          const std::function<void()>& callAndWrite) {
  const FileHandle server(::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX,
                                             PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 4096,
                                             4096, 0, nullptr));
  callAndWrite();
  char bytes[64];
  DWORD size = 0;
  EXPECT_TRUE(::ReadFile(server.Get(), bytes, sizeof(bytes), &size, nullptr));
  if (!::ImpersonateNamedPipeClient(server.Get())) {
    return SecurityAnonymous;
  }
  const ScopeExit revert([] { ::RevertToSelf(); });
  KernelHandle token;
  SECURITY_IMPERSONATION_LEVEL level = SecurityAnonymous;
  EXPECT_TRUE(::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, token.Put()));
  EXPECT_TRUE(
      ::GetTokenInformation(token.Get(), TokenImpersonationLevel, &level, sizeof(level), &size));
  return level;
}

TEST_F(NamedPipeConnectingTest, ServerMayKnowTheClientAndNotActInItsName) {
  FileHandle anonymous;
  const SECURITY_IMPERSONATION_LEVEL least = LevelGranted(m_name + L"-anonymous", [&] {
    anonymous.Reset(::CreateFileW((m_name + L"-anonymous").c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                  nullptr, OPEN_EXISTING,
                                  SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(::WriteFile(anonymous.Get(), L"x", 2, &written, nullptr));
  });
  if (least > SecurityAnonymous) {
    GTEST_SKIP() << "this system lets a server act for any client, whatever it asks for";
  }
  EXPECT_EQ(LevelGranted(m_name,
                         [this] {
                           ASSERT_TRUE(m_client.Init(m_name.c_str(), kBufferChars, 0));
                           ASSERT_TRUE(m_client.Open());
                           ASSERT_TRUE(m_client.Write(L"x"));
                         }),
            SecurityIdentification);
}

}  // namespace
}  // namespace postmarker
