#include "clients/incredimail/ImClientWindows_win.h"

#include <psapi.h>

#include "support/Handles_win.h"
#include "support/Text.h"

namespace postmarker::incredimail {
namespace {

constexpr int kClassNameRoom = 2047;
constexpr wchar_t kClassPrefix[] = L"afx:";
constexpr wchar_t kProgram[] = L"incmail.exe";
// The windows on the way from the client's main window to its tree of folders.
constexpr const wchar_t* kWindowsToTheTree[] = {L"AfxMDIFrame80u", L"AfxFrameOrView80u",
                                                L"SftTreeControl60"};

bool HasClientClass(HWND window) {
  std::wstring name(kClassNameRoom, L'\0');
  const int length = ::GetClassNameW(window, name.data(), kClassNameRoom);
  name.resize(static_cast<size_t>(length));
  return ToLower(name).starts_with(kClassPrefix);
}

// The path of the program that the window belongs to; empty if it can't be read.
std::wstring ProgramPath(HWND window) {
  DWORD processId = 0;
  ::GetWindowThreadProcessId(window, &processId);
  KernelHandle process(
      ::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
  if (!process) {
    return {};
  }
  HMODULE modules[1] = {};
  DWORD needed = 0;
  if (!::EnumProcessModules(process.Get(), modules, sizeof(modules), &needed)) {
    // Deliberate: the handle stays open. A process without modules is about to start or to end,
    // and while its handle is open no other process gets its id in the middle of the walk.
    static_cast<void>(process.Release());
    return {};
  }
  wchar_t path[MAX_PATH] = {};
  const DWORD length = ::GetModuleFileNameExW(process.Get(), modules[0], path, MAX_PATH);
  return {path, length};
}

bool HasFolderTree(HWND window) {
  for (const wchar_t* const className : kWindowsToTheTree) {
    window = ::FindWindowExW(window, nullptr, className, nullptr);
    if (window == nullptr) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool IsClientWindow(HWND window, std::wstring* directory) {
  if (!HasClientClass(window)) {
    return false;
  }
  const std::wstring path = ProgramPath(window);
  const size_t backslash = path.rfind(L'\\');
  if (backslash == std::wstring::npos || !EqualNoCase(path.substr(backslash + 1), kProgram) ||
      !HasFolderTree(window)) {
    return false;
  }
  *directory = ToLower(path.substr(0, backslash + 1));
  return true;
}

void LocateClientFolderTree() {
  std::wstring directory;
  for (HWND window = ::FindWindowExW(nullptr, nullptr, nullptr, nullptr); window != nullptr;
       window = ::FindWindowExW(nullptr, window, nullptr, nullptr)) {
    IsClientWindow(window, &directory);
  }
}

}  // namespace postmarker::incredimail
