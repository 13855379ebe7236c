#include "settings/Recommendations_win.h"

#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

constexpr wchar_t kMutexName[] = L"Local\\Kestrelon.RcmdNsMutex";
constexpr wchar_t kValueName[] = L"Recommendations";
constexpr DWORD kWaitMilliseconds = 1000;

bool Acquire(const KernelHandle& mutex) {
  const DWORD result = ::WaitForSingleObject(mutex.Get(), kWaitMilliseconds);
  // A process that ended while it held the mutex has left the value whole: it is written in one
  // call.
  return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

bool ChangeBit(uint32_t number, bool on) {
  const RegistryKey key =
      RegistryKey::Create(HKEY_CURRENT_USER, kMainKey, KEY_QUERY_VALUE | KEY_SET_VALUE);
  if (!key) {
    return false;
  }
  const uint32_t old = key.ReadDword(kValueName).value_or(0);
  const uint32_t bit = uint32_t{1} << ((number - 1) % 32);
  return key.WriteDword(kValueName, on ? old | bit : old & ~bit);
}

}  // namespace

int SetRecommendationBit(uint32_t number, bool on) {
  return SetRecommendationBit(kMutexName, number, on);
}

int SetRecommendationBit(const wchar_t* mutexName, uint32_t number, bool on) {
  const KernelHandle mutex(::CreateMutexW(nullptr, FALSE, mutexName));
  if (!mutex || !Acquire(mutex)) {
    return 0;
  }
  const ScopeExit release([&mutex] { ::ReleaseMutex(mutex.Get()); });
  return ChangeBit(number, on) ? 1 : 0;
}

}  // namespace postmarker
