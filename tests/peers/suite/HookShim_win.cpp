// Stand-in for the suite's module inside a mail client. It notes the rule that it is given, and how
// often, in the registry, where the test that plays the host finds it.
#include <windows.h>

namespace {

constexpr wchar_t kKey[] = L"Software\\PostmarkerPeers";

}  // namespace

extern "C" {

int __stdcall AddIncomingRule(const wchar_t* spamFolderName) {
  HKEY key = nullptr;
  if (::RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
    return -1;
  }
  DWORD count = 0;
  DWORD size = sizeof(count);
  ::RegQueryValueExW(key, L"Rules", nullptr, nullptr, reinterpret_cast<BYTE*>(&count), &size);
  ++count;
  ::RegSetValueExW(key, L"Rules", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&count),
                   sizeof(count));
  const auto bytes = static_cast<DWORD>((::lstrlenW(spamFolderName) + 1) * sizeof(wchar_t));
  ::RegSetValueExW(key, L"Rule", 0, REG_SZ, reinterpret_cast<const BYTE*>(spamFolderName), bytes);
  ::RegCloseKey(key);  // owner: a peer without the product's types
  return 0;
}

// Looked up by hosts and called inside the client only.
int __stdcall InitSpam() {
  return 0;
}
int __stdcall UninitSpam() {
  return 0;
}
int __stdcall CanSubclassWindow() {
  return 0;
}
int __stdcall InitHookWindow() {
  return 0;
}
int __stdcall UninitHookWindow() {
  return 0;
}
int __stdcall MainWndProc() {
  return 0;
}

}  // extern "C"
