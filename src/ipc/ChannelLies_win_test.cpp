// Servers whose rendezvous or region is not what it should be.
#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "RawChannel_win.h"
#include "ipc/ChannelNames.h"
#include "ipc/Mutexes_win.h"
#include "support/ChannelPair_win.h"
#include "support/RendezvousFixture_win.h"

namespace postmarker {
namespace {

using test::ChannelEnd;
using test::FailsAtOnce;
using test::kPatience;
using test::PatientConnecting;
using test::WaitForMutex;

class LyingServerTest : public test::RendezvousFixture {
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

TEST_F(LyingServerTest, NameThatDoesNotBeginAsTheRendezvousIsRefused) {
  // Everything is there, under a name that somebody else can have chosen.
  std::wstring name = m_name + L"." + std::wstring(32, L'X');
  name[6] = L'#';
  const KernelHandle section(
      ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, name.c_str()));
  const KernelHandle serverEvent(
      ::CreateEventW(nullptr, TRUE, TRUE, ServerEventName(name).c_str()));
  const KernelHandle clientEvent(
      ::CreateEventW(nullptr, TRUE, FALSE, ClientEventName(name).c_str()));
  peer::RawServerOptions lie;
  lie.saidName = name;
  EXPECT_TRUE(IsRefused(lie));
  EXPECT_FALSE(IsSignalled(clientEvent.Get())) << "nobody was called";
}

}  // namespace
}  // namespace postmarker
