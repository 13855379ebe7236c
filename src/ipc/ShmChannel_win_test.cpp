#include "ipc/ShmChannel_win.h"

#include <gtest/gtest.h>

#include <cstring>
#include <future>

#include "RawChannel_win.h"
#include "support/ChannelPair_win.h"

namespace postmarker {
namespace {

using peer::RawConnect;
using peer::RawEnd;
using test::ConnectPair;
using test::kPatience;

// The product's end as a server, and the other end without any checks, with a view of the region.
class ShmChannelTest : public testing::Test {
 protected:
  void SetUp() override {
    const std::wstring name = test::FreshObjectName();
    auto server = test::ListenInBackground(name, test::PatientListening());
    peer::RawClientOptions options;
    options.name = name;
    auto end = RawConnect(options);
    m_channel = server.get();
    ASSERT_TRUE(end && m_channel);
    m_peer = std::move(*end);
  }

  // The region's first bytes as one text of hexadecimal digits.
  [[nodiscard]] std::string RegionBytes(size_t count) const {
    std::string bytes;
    for (size_t i = 0; i < count; ++i) {
      char digits[3];
      std::snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned>(m_peer.Region()[i]));
      bytes += digits;
    }
    return bytes;
  }

  // What the peer takes while `send` runs.
  template <class Send>
  std::optional<std::wstring> TextTakenDuring(Send send) {
    auto taken = std::async(std::launch::async, [&] { return m_peer.ReceiveText(kPatience); });
    EXPECT_TRUE(send());
    return taken.get();
  }

  bool PeerEventIsSet(const KernelHandle& event) {
    return ::WaitForSingleObject(event.Get(), 0) == WAIT_OBJECT_0;
  }

  std::unique_ptr<ShmChannel> m_channel;
  RawEnd m_peer;
};

TEST_F(ShmChannelTest, TextStandsInTheRegionAsLengthTypeAndUnits) {
  EXPECT_FALSE(m_channel->SendText(L"A\x20AC", 0)) << "nobody takes it";
  EXPECT_EQ(RegionBytes(12), "04000000010000004100ac20");
  EXPECT_TRUE(PeerEventIsSet(m_peer.receiveEvent));
}

TEST_F(ShmChannelTest, NumberStandsInTheRegionAsLengthTypeAndFourBytes) {
  EXPECT_FALSE(m_channel->SendNumber(0x12345678, 0));
  EXPECT_EQ(RegionBytes(12), "040000000200000078563412");
}

TEST_F(ShmChannelTest, SendWaitsUntilThePeerHasTakenTheMessage) {
  EXPECT_EQ(TextTakenDuring([&] { return m_channel->SendText(L"taken", kPatience); }), L"taken");
  EXPECT_FALSE(PeerEventIsSet(m_peer.receiveEvent));
}

TEST_F(ShmChannelTest, EmptyTextIsAValidMessageOfLengthZero) {
  EXPECT_EQ(TextTakenDuring([&] { return m_channel->SendText(L"", kPatience); }), L"");
  EXPECT_EQ(RegionBytes(8), "0000000001000000");
  m_peer.Announce(0, 1, nullptr, 0);
  std::wstring text = L"before";
  EXPECT_TRUE(m_channel->ReceiveText(&text, kPatience));
  EXPECT_EQ(text, L"");
}

TEST_F(ShmChannelTest,
       TextOfTheRegionsSizeLess8PassesAndOneCharacterMoreFailsBeforeAnythingIsWritten) {
  ASSERT_EQ(m_channel->RegionSize(), 4096U);
  const std::wstring longest(2044, L'x');
  EXPECT_EQ(TextTakenDuring([&] { return m_channel->SendText(longest.c_str(), kPatience); }),
            longest);

  const std::string before = RegionBytes(4096);
  EXPECT_FALSE(m_channel->SendText((L"y" + longest).c_str(), kPatience));
  EXPECT_EQ(RegionBytes(4096), before);
  EXPECT_FALSE(PeerEventIsSet(m_peer.receiveEvent));

  m_peer.Announce(4088, 1, longest.data(), 4088);
  std::wstring text;
  EXPECT_TRUE(m_channel->ReceiveText(&text, kPatience));
  EXPECT_EQ(text, longest);
}

TEST_F(ShmChannelTest, NullTextFails) {
  EXPECT_FALSE(m_channel->SendText(nullptr, 0));
  EXPECT_FALSE(PeerEventIsSet(m_peer.receiveEvent));
}

TEST_F(ShmChannelTest, SendFailsWhileTheLastMessageIsNotTaken) {
  EXPECT_FALSE(m_channel->SendText(L"first", 0));
  EXPECT_FALSE(m_channel->SendText(L"second", kPatience));
  EXPECT_FALSE(m_channel->SendNumber(2, kPatience));
  EXPECT_EQ(m_peer.ReceiveText(kPatience), L"first");
}

TEST_F(ShmChannelTest, SendFailsOnAnAnswerThatCameLate) {
  std::wstring text;
  EXPECT_FALSE(m_channel->ReceiveText(&text, 1));
  m_peer.Announce(4, 1, L"ab", 4);
  EXPECT_FALSE(m_channel->SendNumber(2, kPatience));
  EXPECT_TRUE(m_channel->ReceiveText(&text, kPatience)) << "the answer stands where it was";
  EXPECT_EQ(text, L"ab");
}

TEST_F(ShmChannelTest, SendThatIsNotTakenFailsWithinItsTime) {
  const uint64_t start = ::GetTickCount64();
  EXPECT_FALSE(m_channel->SendNumber(1, 60));
  EXPECT_GE(::GetTickCount64() - start, 60U);
  EXPECT_LT(::GetTickCount64() - start, 5'000U);
}

TEST_F(ShmChannelTest, ReceiveOfNothingFailsWithinItsTime) {
  std::wstring text = L"before";
  uint32_t number = 7;
  const uint64_t start = ::GetTickCount64();
  EXPECT_FALSE(m_channel->ReceiveText(&text, 30));
  EXPECT_FALSE(m_channel->ReceiveNumber(&number, 30));
  EXPECT_GE(::GetTickCount64() - start, 50U);
  EXPECT_LT(::GetTickCount64() - start, 5'000U);
  EXPECT_EQ(text, L"before");
  EXPECT_EQ(number, 7U);
}

TEST_F(ShmChannelTest, StopKeepsAMessageFromBeingSentOrTaken) {
  const StopQuery stop = [] { return true; };
  const std::string before = RegionBytes(16);
  EXPECT_FALSE(m_channel->SendText(L"text", kPatience, stop));
  EXPECT_FALSE(m_channel->SendNumber(1, kPatience, stop));
  EXPECT_EQ(RegionBytes(16), before);
  EXPECT_FALSE(PeerEventIsSet(m_peer.receiveEvent));
  m_peer.Announce(4, 1, L"ab", 4);
  std::wstring text = L"before";
  EXPECT_FALSE(m_channel->ReceiveText(&text, kPatience, stop));
  EXPECT_EQ(text, L"before");
  EXPECT_TRUE(m_channel->ReceiveText(&text, kPatience));
}

TEST_F(ShmChannelTest, TextAboveTheBytesWantedIsRefusedAndTheEventStaysSet) {
  m_peer.Announce(8, 1, L"abcd", 8);
  std::wstring text = L"before";
  EXPECT_FALSE(m_channel->ReceiveText(&text, 0, {}, 7));
  EXPECT_FALSE(m_channel->ReceiveText(&text, 0, {}, 0));
  EXPECT_EQ(text, L"before");
  EXPECT_TRUE(PeerEventIsSet(m_peer.sendEvent));
  EXPECT_TRUE(m_channel->ReceiveText(&text, 0, {}, 8));
  EXPECT_EQ(text, L"abcd");
}

TEST_F(ShmChannelTest, ReceiveNumberOnATextFailsAndTheEventStaysSet) {
  m_peer.Announce(4, 1, L"ab", 4);
  uint32_t number = 7;
  EXPECT_FALSE(m_channel->ReceiveNumber(&number, kPatience));
  EXPECT_EQ(number, 7U);
  EXPECT_TRUE(PeerEventIsSet(m_peer.sendEvent));
  std::wstring text;
  EXPECT_TRUE(m_channel->ReceiveText(&text, kPatience));
  EXPECT_EQ(text, L"ab");
  EXPECT_FALSE(PeerEventIsSet(m_peer.sendEvent));
}

TEST_F(ShmChannelTest, ReceiveTextOnANumberFailsAndTheEventStaysSet) {
  const uint32_t sent = 5;
  m_peer.Announce(4, 2, &sent, 4);
  std::wstring text = L"before";
  EXPECT_FALSE(m_channel->ReceiveText(&text, kPatience));
  EXPECT_EQ(text, L"before");
  EXPECT_TRUE(PeerEventIsSet(m_peer.sendEvent));
  uint32_t number = 0;
  EXPECT_TRUE(m_channel->ReceiveNumber(&number, kPatience));
  EXPECT_EQ(number, 5U);
}

TEST_F(ShmChannelTest, LengthsThatLieAreRefusedAndTheEventStaysSet) {
  struct Lie {
    uint32_t length;
    uint32_t type;
  };
  for (const Lie lie :
       {Lie{3, 1}, Lie{4090, 1}, Lie{4089, 1}, Lie{0xFFFF'FFFF, 1}, Lie{0xFFFF'FFFE, 1},
        Lie{0x8000'0000, 1}, Lie{4, 3}, Lie{4, 0}, Lie{2, 2}, Lie{8, 2}, Lie{0xFFFF'FFFC, 2}}) {
    m_peer.Announce(lie.length, lie.type, nullptr, 0);
    std::wstring text;
    uint32_t number = 0;
    EXPECT_FALSE(m_channel->ReceiveText(&text, 0)) << lie.length;
    EXPECT_FALSE(m_channel->ReceiveNumber(&number, 0)) << lie.length;
    EXPECT_TRUE(PeerEventIsSet(m_peer.sendEvent));
  }
}

TEST_F(ShmChannelTest, LengthThatChangesUnderTheReadersHandsIsReadOnce) {
  std::atomic<bool> over = false;
  auto* const length = reinterpret_cast<volatile uint32_t*>(m_peer.Region());
  m_peer.Announce(4088, 1, std::wstring(2044, L'z').data(), 4088);
  std::thread flicker([&] {
    while (!over) {
      *length = 0xFFFF'FFFE;
      *length = 4088;
      *length = 20;
    }
  });
  int taken = 0;
  for (int i = 0; i < 3'000; ++i) {
    std::wstring text = L"before";
    if (m_channel->ReceiveText(&text, 0)) {
      ++taken;
      EXPECT_TRUE(text == std::wstring(2044, L'z') || text == std::wstring(10, L'z'));
      ::SetEvent(m_peer.sendEvent.Get());
    } else {
      EXPECT_EQ(text, L"before");
    }
  }
  over = true;
  flicker.join();
  EXPECT_GT(taken, 0);
}

TEST(ShmChannelWithoutAView, NeitherSendsNorReceives) {
  const auto event = [](BOOL set) {
    return KernelHandle(::CreateEventW(nullptr, TRUE, set, nullptr));
  };
  ShmChannel channel(KernelHandle(), FileView(), 4096, event(FALSE), event(FALSE));
  EXPECT_FALSE(channel.SendText(L"", 0));
  EXPECT_FALSE(channel.SendNumber(1, 0));
  ShmChannel answered(KernelHandle(), FileView(), 4096, event(FALSE), event(TRUE));
  std::wstring text;
  uint32_t number = 0;
  EXPECT_FALSE(answered.ReceiveText(&text, 0));
  EXPECT_FALSE(answered.ReceiveNumber(&number, 0));
}

TEST(ShmChannelWithoutEvents, NeitherSendsNorReceives) {
  ShmChannel channel(KernelHandle(), FileView(), 4096, KernelHandle(), KernelHandle());
  std::wstring text;
  EXPECT_FALSE(channel.SendNumber(1, 0));
  EXPECT_FALSE(channel.ReceiveText(&text, 0));
}

TEST(ShmChannelPair, TheTwoEndsTakeTurns) {
  const auto [server, client] = ConnectPair();
  ASSERT_TRUE(server && client);
  auto echo = std::async(std::launch::async, [&end = *server] {
    uint32_t number = 0;
    std::wstring text;
    return end.ReceiveNumber(&number, kPatience) && end.ReceiveText(&text, kPatience) &&
           end.SendText(text.c_str(), kPatience) && end.SendNumber(number + 1, kPatience);
  });
  std::wstring text;
  uint32_t number = 0;
  EXPECT_TRUE(client->SendNumber(21, kPatience));
  EXPECT_TRUE(client->SendText(L"one", kPatience));
  EXPECT_TRUE(client->ReceiveText(&text, kPatience));
  EXPECT_TRUE(client->ReceiveNumber(&number, kPatience));
  EXPECT_TRUE(echo.get());
  EXPECT_EQ(text, L"one");
  EXPECT_EQ(number, 22U);
}

TEST(ShmChannelPair, EndThatIsGoneIsSeenByTimeOnly) {
  auto [server, client] = ConnectPair();
  ASSERT_TRUE(server && client);
  server.reset();
  std::wstring text;
  EXPECT_FALSE(client->ReceiveText(&text, 10));
  EXPECT_FALSE(client->SendNumber(1, 10));
}

}  // namespace
}  // namespace postmarker
