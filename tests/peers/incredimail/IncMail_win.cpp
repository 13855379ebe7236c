// A stand-in for the running client: its main window and the windows inside it down to the tree of
// folders, as far as they are asked for.
// Usage: incmail EVENT CLASS DEPTH. Shows a window of the class with DEPTH (0 to 3) of the nested
// windows, sets the event of that name, and waits to be ended.
#include <windows.h>

#include <shellapi.h>

#include <cstdlib>
#include <iterator>

namespace {

HWND MakeWindow(const wchar_t* className, HWND parent) {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = ::DefWindowProcW;
  windowClass.hInstance = ::GetModuleHandleW(nullptr);
  windowClass.lpszClassName = className;
  ::RegisterClassExW(&windowClass);
  const DWORD style = parent == nullptr ? WS_OVERLAPPEDWINDOW : WS_CHILD;
  return ::CreateWindowExW(0, className, L"", style, 0, 0, 100, 100, parent, nullptr,
                           windowClass.hInstance, nullptr);
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  constexpr const wchar_t* kInside[] = {L"AfxMDIFrame80u", L"AfxFrameOrView80u",
                                        L"SftTreeControl60"};
  int count = 0;
  wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (arguments == nullptr || count != 4) {
    return 2;
  }
  HWND window = MakeWindow(arguments[2], nullptr);
  const int depth = static_cast<int>(std::wcstol(arguments[3], nullptr, 10));
  for (int level = 0; level < depth && level < static_cast<int>(std::size(kInside)); ++level) {
    window = MakeWindow(kInside[level], window);
  }
  const HANDLE ready = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, arguments[1]);
  if (window == nullptr || ready == nullptr) {
    return 1;
  }
  ::SetEvent(ready);
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    ::DispatchMessageW(&message);
  }
  return 0;
}
