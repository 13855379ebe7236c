#include "clients/HookModule_win.h"

#include <array>

namespace postmarker {
namespace {

constexpr DWORD kPathRoom = 260;

// The path without its last element and the backslash before that; empty if there is no backslash.
std::wstring WithoutLastElement(const std::wstring& path) {
  const size_t cut = path.rfind(L'\\');
  return cut == std::wstring::npos ? std::wstring() : path.substr(0, cut);
}

}  // namespace

std::wstring GetSuiteRootFolder() {
  HMODULE module = ::GetModuleHandleW(L"KsSieve.dll");
  if (module == nullptr) {
    module = ::GetModuleHandleW(L"TinyShim.dll");
  }
  std::wstring path(kPathRoom, L'\0');
  path.resize(::GetModuleFileNameW(module, path.data(), kPathRoom));
  return WithoutLastElement(WithoutLastElement(path));
}

void HookModule::Load(const std::wstring& path) {
  if (m_hook) {
    return;
  }
  const std::wstring above = WithoutLastElement(WithoutLastElement(path));
  m_sqlite.Reset(::LoadLibraryW((above + L"\\SQLite.dll").c_str()));
  m_hook.Reset(::LoadLibraryW(path.c_str()));
  if (m_hook && !TakeEntryPoints()) {
    Unload();
  }
}

bool HookModule::TakeEntryPoints() {
  // All seven must be there, though the others are called by the suite inside the client only.
  constexpr std::array<const char*, 6> kOthers = {"InitSpam",          "UninitSpam",
                                                  "CanSubclassWindow", "InitHookWindow",
                                                  "UninitHookWindow",  "MainWndProc"};
  for (const char* name : kOthers) {
    if (::GetProcAddress(m_hook.Get(), name) == nullptr) {
      return false;
    }
  }
  m_addIncomingRule = reinterpret_cast<AddRule>(
      reinterpret_cast<void*>(::GetProcAddress(m_hook.Get(), "AddIncomingRule")));
  return m_addIncomingRule != nullptr;
}

void HookModule::Unload() {
  m_addIncomingRule = nullptr;
  m_hook.Reset();
  m_sqlite.Reset();
}

void HookModule::AddIncomingRule(const std::wstring& spamFolderName) const {
  (void)m_addIncomingRule(spamFolderName.c_str());
}

void AddSpamRule(std::wstring_view hookModule, const std::wstring& spamFolderName) {
  if (hookModule.empty()) {
    return;
  }
  HookModule module;
  module.Load(GetSuiteRootFolder() + L"\\Spamfilter\\" + std::wstring(hookModule));
  if (module.IsLoaded()) {
    module.AddIncomingRule(spamFolderName);
  }
}

}  // namespace postmarker
