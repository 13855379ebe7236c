#include "ipc/ChannelNames.h"

#include <gtest/gtest.h>

#include <array>

namespace postmarker {
namespace {

TEST(ChannelNames, RendezvousNameHasAtMost210Units) {
  EXPECT_TRUE(IsRendezvousName(std::wstring(1, L'n').c_str()));
  EXPECT_TRUE(IsRendezvousName(std::wstring(210, L'n').c_str()));
  EXPECT_FALSE(IsRendezvousName(std::wstring(211, L'n').c_str()));
  EXPECT_FALSE(IsRendezvousName(std::wstring(100'000, L'n').c_str()));
  EXPECT_FALSE(IsRendezvousName(L""));
  EXPECT_FALSE(IsRendezvousName(nullptr));
}

TEST(ChannelNames, FiveBitsOfEachByteChooseACharacter) {
  std::array<uint8_t, kRandomNameLength> bytes = {};
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<uint8_t>(i);
  }
  EXPECT_EQ(RandomCharacters(bytes), L"0123456789ABCDEFGHIJKLMNOPQRSTUV");
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>(byte | 0xE0);
  }
  EXPECT_EQ(RandomCharacters(bytes), L"0123456789ABCDEFGHIJKLMNOPQRSTUV");
}

TEST(ChannelNames, ObjectsOfAChannel) {
  EXPECT_EQ(DispatchMutexName(L"Local\\N"), L"Local\\N.DispatchMtx");
  EXPECT_EQ(PrivateName(L"Local\\N", L"RANDOM"), L"Local\\N.RANDOM");
  EXPECT_EQ(ServerEventName(L"Local\\N.RANDOM"), L"Local\\N.RANDOM.ServerEvt");
  EXPECT_EQ(ClientEventName(L"Local\\N.RANDOM"), L"Local\\N.RANDOM.ClientEvt");
}

TEST(ChannelNames, PrivateNameIs33UnitsLonger) {
  const std::wstring name(210, L'n');
  EXPECT_EQ(PrivateName(name, RandomCharacters(std::array<uint8_t, 32>())).size(), 243U);
}

TEST(ChannelNames, ObjectsOfAModuleStandInTheNameSpaceOfTheirKind) {
  EXPECT_EQ(ModuleEventName(L"A.dll", ChannelKind::kLocal), L"Local\\Kestrelon.A.dll.Event");
  EXPECT_EQ(ModuleTunnelName(L"A.dll", ChannelKind::kLocal), L"Local\\Kestrelon.A.dll.Tunnel");
  EXPECT_EQ(ModuleEventName(L"A.dll", ChannelKind::kGlobal), L"Global\\Kestrelon.A.dll.Event");
  EXPECT_EQ(ModuleTunnelName(L"A.dll", ChannelKind::kGlobalLowIntegrity),
            L"Global\\Kestrelon.A.dll.Tunnel");
  EXPECT_EQ(ModuleTunnelName(L"A.dll", ChannelKind{0}), L"Local\\Kestrelon.A.dll.Tunnel");
  EXPECT_EQ(ModuleTunnelName(L"A.dll", ChannelKind{4}), L"Local\\Kestrelon.A.dll.Tunnel");
}

}  // namespace
}  // namespace postmarker
