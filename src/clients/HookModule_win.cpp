#include "clients/HookModule_win.h"

#include <algorithm>
#include <type_traits>

namespace postmarker {
namespace {

constexpr DWORD kPathRoom = 260;

// The path without its last element and the backslash before that; empty if there is no backslash.
std::wstring WithoutLastElement(const std::wstring& path) {
  const size_t cut = path.rfind(L'\\');
  return cut == std::wstring::npos ? std::wstring() : path.substr(0, cut);
}

// How many names that are not empty stand between the path's backslashes.
size_t CountNames(std::wstring_view path) {
  size_t count = 0;
  for (size_t begin = 0; begin < path.size();) {
    const size_t end = std::min(path.find(L'\\', begin), path.size());
    count += end > begin ? 1 : 0;
    begin = end + 1;
  }
  return count;
}

}  // namespace

bool CanHoldSuite(std::wstring_view folder) {
  constexpr size_t kDriveAndFolder = 2;
  constexpr size_t kServerShareAndFolder = 3;
  if (folder.starts_with(L"\\\\")) {
    return CountNames(folder) >= kServerShareAndFolder;
  }
  return folder.size() > 2 && folder[1] == L':' && folder[2] == L'\\' &&
         CountNames(folder) >= kDriveAndFolder;
}

std::wstring GetSuiteRootFolder() {
  HMODULE module = ::GetModuleHandleW(L"KsSieve.dll");
  if (module == nullptr) {
    module = ::GetModuleHandleW(L"TinyShim.dll");
  }
  std::wstring path(kPathRoom, L'\0');
  const DWORD length = ::GetModuleFileNameW(module, path.data(), kPathRoom);
  if (length == kPathRoom) {
    return {};  // cut short: what it ends in is not the module's name
  }
  path.resize(length);
  return WithoutLastElement(WithoutLastElement(path));
}

void HookModule::Load(const std::wstring& path) {
  if (hookHandle) {
    return;
  }
  const std::wstring above = WithoutLastElement(WithoutLastElement(path));
  sqliteHandle.Reset(::LoadLibraryW((above + L"\\SQLite.dll").c_str()));
  hookHandle.Reset(::LoadLibraryW(path.c_str()));
  if (hookHandle && !TakeEntryPoints()) {
    Unload();
  }
}

bool HookModule::TakeEntryPoints() {
  const auto take = [this](auto* slot, const char* name) {
    *slot = reinterpret_cast<std::remove_pointer_t<decltype(slot)>>(
        reinterpret_cast<void*>(::GetProcAddress(hookHandle.Get(), name)));
    return *slot != nullptr;
  };
  return take(&InitSpam, "InitSpam") && take(&UninitSpam, "UninitSpam") &&
         take(&AddIncomingRule, "AddIncomingRule") &&
         take(&CanSubclassWindow, "CanSubclassWindow") && take(&InitHookWindow, "InitHookWindow") &&
         take(&UninitHookWindow, "UninitHookWindow") && take(&MainWndProc, "MainWndProc");
}

void HookModule::Unload() {
  hookHandle.Reset();
  sqliteHandle.Reset();
  InitSpam = UninitSpam = nullptr;
  AddIncomingRule = nullptr;
  CanSubclassWindow = InitHookWindow = UninitHookWindow = MainWndProc = nullptr;
}

void AddSpamRule(std::wstring_view hookModule, const std::wstring& spamFolderName) {
  const std::wstring root = GetSuiteRootFolder();
  if (hookModule.empty() || !CanHoldSuite(root)) {
    return;
  }
  HookModule module;
  module.Load(root + L"\\Spamfilter\\" + std::wstring(hookModule));
  if (module.IsLoaded()) {
    (void)module.AddIncomingRule(spamFolderName.c_str());
  }
}

}  // namespace postmarker
