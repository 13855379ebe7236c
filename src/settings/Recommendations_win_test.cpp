#include "settings/Recommendations_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

constexpr wchar_t kSuiteMutex[] = L"Local\\Kestrelon.RcmdNsMutex";

class Recommendations : public testing::Test {
 protected:
  static RegistryKey MainKey() {
    return RegistryKey::Create(HKEY_CURRENT_USER, kMainKey, KEY_READ | KEY_WRITE);
  }
  static std::optional<uint32_t> Stored() { return MainKey().ReadDword(L"Recommendations"); }

  // A mutex of this test alone, so that runs at the same time don't wait for each other.
  std::wstring m_mutexName =
      L"Local\\PostmarkerTests.Rcmd." + std::to_wstring(::GetCurrentProcessId());
  test::RegistrySandbox m_sandbox;
};

TEST_F(Recommendations, ClearingWithNoValuePresentCreatesItWithZero) {
  EXPECT_EQ(SetRecommendationBit(12, false), 1);
  EXPECT_THAT(
      test::DumpRegistry(m_sandbox.User()),
      testing::Contains("Software\\Kestrelon Ltd.\\Kestrelon\\Main | Recommendations | REG_DWORD | "
                        "00000000"));
}

TEST_F(Recommendations, BitsAreCountedFromOne) {
  MainKey().WriteDword(L"Recommendations", 0xFFFFFFFF);
  EXPECT_EQ(SetRecommendationBit(12, false), 1);
  EXPECT_EQ(Stored(), 0xFFFFF7FFU);
  EXPECT_EQ(SetRecommendationBit(1, false), 1);
  EXPECT_EQ(Stored(), 0xFFFFF7FEU);
  EXPECT_EQ(SetRecommendationBit(12, true), 1);
  EXPECT_EQ(Stored(), 0xFFFFFFFEU);
}

TEST_F(Recommendations, NumbersAreTakenModulo32) {
  EXPECT_EQ(SetRecommendationBit(33, true), 1);
  EXPECT_EQ(Stored(), 1U);
  EXPECT_EQ(SetRecommendationBit(0, true), 1);
  EXPECT_EQ(Stored(), 0x80000001U);
}

TEST_F(Recommendations, ValueOfAnotherTypeOrSizeCountsAsZero) {
  MainKey().WriteBytes(L"Recommendations", REG_BINARY, "\xFF\xFF\xFF\xFF", 4);
  EXPECT_EQ(SetRecommendationBit(1, true), 1);
  EXPECT_EQ(Stored(), 1U);
  MainKey().WriteBytes(L"Recommendations", REG_DWORD, "\xFF\xFF", 2);
  EXPECT_EQ(SetRecommendationBit(2, true), 1);
  EXPECT_EQ(Stored(), 2U);
  MainKey().WriteBytes(L"Recommendations", REG_DWORD, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8);
  EXPECT_EQ(SetRecommendationBit(3, true), 1);
  EXPECT_EQ(Stored(), 4U);
}

TEST_F(Recommendations, KeyThatDeniesWritesGivesZeroAndReleasesTheMutex) {
  MainKey().WriteDword(L"Recommendations", 0xFFFFFFFF);
  test::DenyWrites(HKEY_CURRENT_USER, kMainKey);
  EXPECT_EQ(SetRecommendationBit(m_mutexName.c_str(), 12, false), 0);
  const RegistryKey reader = RegistryKey::Open(HKEY_CURRENT_USER, kMainKey, KEY_READ);
  EXPECT_EQ(reader.ReadDword(L"Recommendations"), 0xFFFFFFFFU);
  const KernelHandle mutex(::CreateMutexW(nullptr, FALSE, m_mutexName.c_str()));
  EXPECT_EQ(::WaitForSingleObject(mutex.Get(), 0), WAIT_OBJECT_0);
  ::ReleaseMutex(mutex.Get());
}

TEST_F(Recommendations, MutexHeldForLongerThanASecondGivesZero) {
  const KernelHandle mutex(::CreateMutexW(nullptr, TRUE, m_mutexName.c_str()));
  int result = -1;
  ULONGLONG waited = 0;
  std::thread([this, &result, &waited] {
    const ULONGLONG start = ::GetTickCount64();
    result = SetRecommendationBit(m_mutexName.c_str(), 12, false);
    waited = ::GetTickCount64() - start;
  }).join();
  ::ReleaseMutex(mutex.Get());
  EXPECT_EQ(result, 0);
  EXPECT_GE(waited, 900U);
  EXPECT_LT(waited, 5000U);
  EXPECT_FALSE(Stored());
}

TEST_F(Recommendations, SuitesMutexIsWaitedForAndReleased) {
  const KernelHandle mutex(::CreateMutexW(nullptr, FALSE, kSuiteMutex));
  // Another run of this test may hold it; ours is short so that the suite's second of patience is
  // enough for all.
  ASSERT_EQ(::WaitForSingleObject(mutex.Get(), 10'000), WAIT_OBJECT_0);
  std::atomic<bool> done = false;
  int result = -1;
  std::thread other([&done, &result] {
    result = SetRecommendationBit(12, true);
    done = true;
  });
  ::Sleep(30);
  EXPECT_FALSE(done);
  ::ReleaseMutex(mutex.Get());
  other.join();
  EXPECT_EQ(result, 1);
  EXPECT_EQ(::WaitForSingleObject(mutex.Get(), 1000), WAIT_OBJECT_0);
  ::ReleaseMutex(mutex.Get());
}

TEST_F(Recommendations, MutexOfAProcessThatEndedIsTakenOver) {
  const KernelHandle mutex(::CreateMutexW(nullptr, FALSE, m_mutexName.c_str()));
  std::thread([&mutex] { ::WaitForSingleObject(mutex.Get(), INFINITE); }).join();
  EXPECT_EQ(SetRecommendationBit(m_mutexName.c_str(), 12, true), 1);
  EXPECT_EQ(Stored(), 0x800U);
}

TEST_F(Recommendations, NameTakenByAnotherKindOfObjectGivesZero) {
  const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, m_mutexName.c_str()));
  ASSERT_TRUE(event);
  EXPECT_EQ(SetRecommendationBit(m_mutexName.c_str(), 12, true), 0);
  EXPECT_FALSE(Stored());
}

TEST_F(Recommendations, ChangesFromManyThreadsAreAllKept) {
  std::vector<std::thread> threads;
  for (uint32_t number = 1; number <= 8; ++number) {
    threads.emplace_back(
        [number, this] { SetRecommendationBit(m_mutexName.c_str(), number, true); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(Stored(), 0xFFU);
}

}  // namespace
}  // namespace postmarker
