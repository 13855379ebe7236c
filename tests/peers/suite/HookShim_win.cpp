// Stand-in for the suite's module inside a mail client. It notes the rule that it is given, how
// often, under which file name it runs and whether the library that it uses was there before it, in
// the registry, where the test that plays the host finds it.
#include <windows.h>

namespace {

constexpr wchar_t kKey[] = L"Software\\PostmarkerPeers";

HINSTANCE g_module = nullptr;
DWORD g_sqliteWasThere = 0;

void WriteText(HKEY key, const wchar_t* name, const wchar_t* text) {
  const auto bytes = static_cast<DWORD>((::lstrlenW(text) + 1) * sizeof(wchar_t));
  ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes);
}

void WriteNumber(HKEY key, const wchar_t* name, DWORD number) {
  ::RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
}

// The name of this module's file.
const wchar_t* OwnName(wchar_t (&path)[MAX_PATH]) {
  const DWORD length = ::GetModuleFileNameW(g_module, path, MAX_PATH);
  const wchar_t* name = path + length;
  while (name > path && name[-1] != L'\\') {
    --name;
  }
  return name;
}

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    g_module = module;
    g_sqliteWasThere = ::GetModuleHandleW(L"SQLite.dll") != nullptr ? 1 : 0;
  }
  return TRUE;
}

int __stdcall AddIncomingRule(const wchar_t* spamFolderName) {
  HKEY key = nullptr;
  if (::RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
    return -1;
  }
  DWORD count = 0;
  DWORD size = sizeof(count);
  ::RegQueryValueExW(key, L"Rules", nullptr, nullptr, reinterpret_cast<BYTE*>(&count), &size);
  WriteNumber(key, L"Rules", count + 1);
  WriteNumber(key, L"SqliteWasThere", g_sqliteWasThere);
  WriteText(key, L"Rule", spamFolderName);
  wchar_t path[MAX_PATH] = {};
  WriteText(key, L"Module", OwnName(path));
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
