#include "controls/LinkShell_win.h"

#include <windows.h>

#include <shellapi.h>

#include "support/Handles_win.h"

namespace postmarker {

std::optional<std::wstring> SystemLinkShell::ReadClass(const std::wstring& key) {
  // Longer values are no commands: the platform takes no command line beyond this length.
  std::wstring value(32767, L'\0');
  auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  if (::RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, value.data(),
                     &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  return value.c_str();
}

bool SystemLinkShell::StartProcess(const std::wstring& commandLine) {
  std::wstring line = commandLine;  // the system writes to it
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (!::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process)) {
    return false;
  }
  const KernelHandle thread(process.hThread);
  const KernelHandle started(process.hProcess);
  return true;
}

bool SystemLinkShell::RunVerb(const std::wstring& verb, const std::wstring& target) {
  // By the interface of old, up to 32 are errors.
  constexpr INT_PTR kLastError = 32;
  const HINSTANCE result =
      ::ShellExecuteW(nullptr, verb.c_str(), target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(result) > kLastError;
}

}  // namespace postmarker
