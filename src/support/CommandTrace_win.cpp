#include "support/CommandTrace_win.h"

#include <lmcons.h>
#include <shlobj.h>

#include <mutex>
#include <optional>
#include <string>

#include "support/CriticalSection_win.h"
#include "support/Handles_win.h"
#include "support/TraceLine.h"

namespace postmarker {
namespace {

// The file name, without its folder, of the module that this code is linked into.
std::optional<std::wstring> ModuleFileName() {
  HMODULE module = nullptr;
  const auto anyAddress = reinterpret_cast<const wchar_t*>(&TraceCommand);
  if (!::GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          anyAddress, &module)) {
    return std::nullopt;
  }
  wchar_t path[MAX_PATH] = {};
  const DWORD length = ::GetModuleFileNameW(module, path, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    return std::nullopt;
  }
  const std::wstring text(path, length);
  return text.substr(text.rfind(L'\\') + 1);
}

std::optional<std::wstring> TraceFilePath() {
  wchar_t folder[MAX_PATH] = {};
  wchar_t user[UNLEN + 1] = {};
  DWORD room = UNLEN + 1;
  if (::SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder) !=
          S_OK ||
      !::GetUserNameW(user, &room)) {
    return std::nullopt;
  }
  return std::wstring(folder).append(L"\\Kestrelon\\AccountTools-").append(user).append(L".log");
}

// The threads of this process take turns: not every system appends in one step, and a second writer
// must not miss the byte order mark.
void Append(const std::wstring& path, const std::wstring& line) {
  constexpr unsigned char kByteOrderMark[] = {0xFF, 0xFE};
  static CriticalSection turn;
  const std::lock_guard lock(turn);
  ::SetLastError(ERROR_SUCCESS);
  const FileHandle file(::CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    return;
  }
  DWORD written = 0;
  if (::GetLastError() != ERROR_ALREADY_EXISTS) {
    ::WriteFile(file.Get(), kByteOrderMark, sizeof(kByteOrderMark), &written, nullptr);
  }
  ::SetFilePointer(file.Get(), 0, nullptr, FILE_END);
  ::WriteFile(file.Get(), line.data(), static_cast<DWORD>(line.size() * sizeof(wchar_t)), &written,
              nullptr);
}

void WriteLine(int32_t command, const FILETIME& start) {
  FILETIME now = {};
  ::GetSystemTimeAsFileTime(&now);
  SYSTEMTIME local = {};
  ::GetLocalTime(&local);
  const std::optional<std::wstring> module = ModuleFileName();
  const std::optional<std::wstring> path = module ? TraceFilePath() : std::nullopt;
  if (path) {
    const TraceTime time = {local.wYear,   local.wMonth,  local.wDay,         local.wHour,
                            local.wMinute, local.wSecond, local.wMilliseconds};
    Append(*path, FormatTraceLine(time, *module, command,
                                  TraceMilliseconds(start.dwLowDateTime, now.dwLowDateTime)));
  }
}

}  // namespace

void TraceCommand(int32_t command, const FILETIME& start) noexcept {
  try {
    WriteLine(command, start);
  } catch (...) {
    // Without memory there is no trace.
  }
}

}  // namespace postmarker
