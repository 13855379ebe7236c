#include "ipc/ChannelMessage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Prefixes.h"

namespace postmarker {
namespace {

using Bytes = std::vector<std::byte>;

Bytes MakeRegion(size_t size, std::initializer_list<int> beginning = {}) {
  Bytes region(size, std::byte{0xEE});
  size_t i = 0;
  for (const int byte : beginning) {
    region[i++] = static_cast<std::byte>(byte);
  }
  return region;
}

Bytes FromText(std::string_view text) {
  const auto* const bytes = reinterpret_cast<const std::byte*>(text.data());
  return {bytes, bytes + text.size()};
}

TEST(ChannelMessage, TextIsItsLengthItsTypeAndItsUnits) {
  Bytes region = MakeRegion(16);
  EXPECT_TRUE(PutText(region, L"A\x20AC"));
  EXPECT_EQ(region, MakeRegion(16, {4, 0, 0, 0, 1, 0, 0, 0, 0x41, 0, 0xAC, 0x20}));
}

TEST(ChannelMessage, NumberIsItsLengthItsTypeAndFourBytes) {
  Bytes region = MakeRegion(16);
  EXPECT_TRUE(PutNumber(region, 0x12345678));
  EXPECT_EQ(region, MakeRegion(16, {4, 0, 0, 0, 2, 0, 0, 0, 0x78, 0x56, 0x34, 0x12}));
}

TEST(ChannelMessage, EmptyTextIsAMessageOfLengthZero) {
  Bytes region = MakeRegion(8);
  EXPECT_TRUE(PutText(region, L""));
  EXPECT_EQ(region, MakeRegion(8, {0, 0, 0, 0, 1, 0, 0, 0}));
  std::wstring text = L"before";
  EXPECT_TRUE(TakeText(region, &text));
  EXPECT_EQ(text, L"");
}

TEST(ChannelMessage, TextThatFillsTheRegionPassesAndOneUnitMoreWritesNothing) {
  Bytes region = MakeRegion(4096);
  const std::wstring longest(2044, L'x');
  EXPECT_TRUE(PutText(region, longest));
  std::wstring text;
  EXPECT_TRUE(TakeText(region, &text));
  EXPECT_EQ(text, longest);

  const Bytes before = region;
  EXPECT_FALSE(PutText(region, longest + L"x"));
  EXPECT_EQ(region, before);
}

TEST(ChannelMessage, RegionTooSmallForAMessageTakesNone) {
  for (size_t size = 0; size < 12; ++size) {
    Bytes region = MakeRegion(size);
    EXPECT_FALSE(PutNumber(region, 1)) << size;
    EXPECT_EQ(PutText(region, L""), size >= 8) << size;
    EXPECT_FALSE(PutText(region, L"xx")) << size;
  }
}

TEST(ChannelMessage, ReadersRefuseTheOtherType) {
  Bytes region = MakeRegion(4096);
  std::wstring text = L"before";
  uint32_t number = 7;
  ASSERT_TRUE(PutText(region, L"ab"));
  EXPECT_FALSE(TakeNumber(region, &number));
  ASSERT_TRUE(PutNumber(region, 1));
  EXPECT_FALSE(TakeText(region, &text));
  for (const int type : {0, 3, 0x101}) {
    const Bytes odd = MakeRegion(16, {4, 0, 0, 0, type & 0xFF, type >> 8, 0, 0});
    EXPECT_FALSE(TakeText(odd, &text));
    EXPECT_FALSE(TakeNumber(odd, &number));
  }
  EXPECT_EQ(text, L"before");
  EXPECT_EQ(number, 7U);
}

TEST(ChannelMessage, OddLengthIsNoText) {
  std::wstring text = L"before";
  EXPECT_FALSE(TakeText(MakeRegion(16, {3, 0, 0, 0, 1, 0, 0, 0}), &text));
  EXPECT_EQ(text, L"before");
}

TEST(ChannelMessage, LengthBeyondTheRegionIsRefused) {
  std::wstring text;
  // 8 fits exactly, 10 is beyond; the others wrap or have the sign bit.
  EXPECT_TRUE(TakeText(MakeRegion(16, {8, 0, 0, 0, 1, 0, 0, 0}), &text));
  EXPECT_FALSE(TakeText(MakeRegion(16, {10, 0, 0, 0, 1, 0, 0, 0}), &text));
  EXPECT_FALSE(TakeText(MakeRegion(16, {0xFE, 0xFF, 0xFF, 0xFF, 1, 0, 0, 0}), &text));
  EXPECT_FALSE(TakeText(MakeRegion(16, {0, 0, 0, 0x80, 1, 0, 0, 0}), &text));
}

TEST(ChannelMessage, NumberOfAnotherLengthIsRefused) {
  uint32_t number = 7;
  for (const int length : {0, 2, 3, 5, 8}) {
    EXPECT_FALSE(TakeNumber(MakeRegion(16, {length, 0, 0, 0, 2, 0, 0, 0}), &number)) << length;
  }
  EXPECT_EQ(number, 7U);
}

TEST(ChannelMessage, RegionCutAnywhereIsNeverReadBehind) {
  Bytes whole = MakeRegion(32);
  ASSERT_TRUE(PutText(whole, L"twelve units"));
  const std::string bytes(reinterpret_cast<const char*>(whole.data()), whole.size());
  test::ForEveryPrefix(bytes, [](std::string_view cut) {
    std::wstring text;
    EXPECT_FALSE(TakeText(FromText(cut), &text));
  });
  test::ForEveryFlippedByte(bytes, [](std::string_view harmed) {
    std::wstring text;
    uint32_t number = 0;
    TakeText(FromText(harmed), &text);
    EXPECT_LE(text.size(), 12U);
    EXPECT_FALSE(TakeNumber(FromText(harmed), &number));
  });
}

TEST(Rendezvous, NameIsItsByteLengthItsUnitsAndATerminator) {
  Bytes region = MakeRegion(12);
  EXPECT_TRUE(PutPrivateName(region, L"abc"));
  EXPECT_EQ(region, MakeRegion(12, {6, 0, 0, 0, 'a', 0, 'b', 0, 'c', 0, 0, 0}));
}

TEST(Rendezvous, NameTooLongForTheRegionOrTheFieldIsNotWritten) {
  Bytes region = MakeRegion(10);
  EXPECT_FALSE(PutPrivateName(region, L"abc"));
  EXPECT_EQ(region, MakeRegion(10));
  Bytes large = MakeRegion(8192);
  EXPECT_TRUE(PutPrivateName(large, std::wstring(2045, L'x')));
  EXPECT_FALSE(PutPrivateName(large, std::wstring(2046, L'x')));
}

const std::wstring kTenUnits(10, L'r');

// A rendezvous with a name of this length, which begins as the one of kTenUnits does.
Bytes MakeRendezvous(size_t nameLength = 43) {
  Bytes region = MakeRegion(kRendezvousSize);
  std::wstring name = kTenUnits + L"." + std::wstring(nameLength, L'p');
  name.resize(nameLength);
  PutPrivateName(region, name);
  return region;
}

TEST(Rendezvous, NameOf33UnitsMoreIsTaken) {
  EXPECT_EQ(TakePrivateName(MakeRendezvous(), kTenUnits),
            kTenUnits + L"." + std::wstring(32, L'p'));
  Bytes longest = MakeRegion(kRendezvousSize);
  const std::wstring rendezvous(210, L'r');
  PutPrivateName(longest, rendezvous + L"." + std::wstring(32, L'p'));
  EXPECT_EQ(TakePrivateName(longest, rendezvous), rendezvous + L"." + std::wstring(32, L'p'));
}

TEST(Rendezvous, NameThatDoesNotBeginAsTheRendezvousIsRefused) {
  for (const size_t changed : {0U, 9U, 10U}) {
    Bytes region = MakeRendezvous();
    region[4 + 2 * changed] = std::byte{'#'};
    EXPECT_EQ(TakePrivateName(region, kTenUnits), std::nullopt) << changed;
  }
}

TEST(Rendezvous, WrongLengthIsRefused) {
  EXPECT_EQ(TakePrivateName(MakeRendezvous(42), kTenUnits), std::nullopt);
  EXPECT_EQ(TakePrivateName(MakeRendezvous(44), kTenUnits), std::nullopt);
  EXPECT_EQ(TakePrivateName(MakeRegion(kRendezvousSize), kTenUnits), std::nullopt);
  Bytes tooLong = MakeRegion(kRendezvousSize);
  const std::wstring rendezvous(211, L'r');
  PutPrivateName(tooLong, rendezvous + L"." + std::wstring(32, L'p'));
  EXPECT_EQ(TakePrivateName(tooLong, rendezvous), std::nullopt);
}

TEST(Rendezvous, OddLengthIsRefused) {
  Bytes region = MakeRendezvous();
  region[0] = std::byte{87};
  EXPECT_EQ(TakePrivateName(region, kTenUnits), std::nullopt);
}

TEST(Rendezvous, LengthBeyondTheRegionIsRefused) {
  // 4 bytes of length, 86 of name, 2 of terminator.
  Bytes region = MakeRendezvous();
  region.resize(92);
  EXPECT_TRUE(TakePrivateName(region, kTenUnits));
  region.resize(91);
  region.shrink_to_fit();
  EXPECT_EQ(TakePrivateName(region, kTenUnits), std::nullopt);
  region.resize(5);
  region.shrink_to_fit();
  EXPECT_EQ(TakePrivateName(region, kTenUnits), std::nullopt);
}

TEST(Rendezvous, NameShorterOrLongerThanItsLengthSaysIsRefused) {
  Bytes shorter = MakeRendezvous();
  shorter[4 + 2 * 20] = std::byte{0};  // a terminator in the middle
  EXPECT_EQ(TakePrivateName(shorter, kTenUnits), std::nullopt);
  Bytes longer = MakeRendezvous(44);  // no terminator after 43 units
  longer[0] = std::byte{86};
  EXPECT_EQ(TakePrivateName(longer, kTenUnits), std::nullopt);
}

}  // namespace
}  // namespace postmarker
