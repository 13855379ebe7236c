// The suite's window hook module, WndShim.dll, and the messages by which its skin is told how to
// draw.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>

#include "support/Handles_win.h"

namespace postmarker {

// The loaded module and its entry points; each may be null, also when the module is there. The
// entry points use the standard calling convention of Windows functions.
struct WindowHookModule {
  using ThreadFunction = void(__stdcall*)(DWORD threadId);
  using WindowFunction = void(__stdcall*)(HWND window);
  using PlainFunction = void(__stdcall*)();

  LibraryHandle module;
  ThreadFunction AddHookableThread = nullptr;
  ThreadFunction ReleaseHookableThread = nullptr;
  WindowFunction InitHook = nullptr;
  PlainFunction UninitHook = nullptr;
  WindowFunction AddHookableWindow = nullptr;

  // Loads the module at `path`, if it is there, and looks the entry points up.
  void Load(const std::wstring& path);
  void Clear();
};

// The one of this process, filled at the module's load.
WindowHookModule& WindowHook();

// Nonzero while some window of this module is hooked: InitHook runs for one window at a time.
extern std::atomic<uint32_t> HookActive;

// Calls InitHook and AddHookableWindow for a window, if both are there and no other window is
// hooked. True if the caller now owns the hook and must call EndWindowHook.
bool BeginWindowHook(HWND window);
void EndWindowHook();

// Makes this thread known to the hook module while it lives, if some window is hooked when it
// begins: then the windows of the thread are to have the skin as well.
class HookableThread {
 public:
  HookableThread();
  HookableThread(const HookableThread&) = delete;
  HookableThread& operator=(const HookableThread&) = delete;
  ~HookableThread();

 private:
  bool m_isKnown;
};

// Messages to skinned windows; without the hook module they have no effect.
inline constexpr UINT WM_KS_SKIN_TITLE = 0x825A;
inline constexpr UINT WM_KS_SKIN_STYLE = 0x8259;
inline constexpr UINT WM_KS_SKIN_BUTTON = 0x81FC;

// What a skinned control is.
inline constexpr WPARAM kSkinHeading = 3;
inline constexpr WPARAM kSkinBody = 4;

// The red of headings; also the skin's number for it.
inline constexpr COLORREF kHeadingColor = RGB(204, 0, 0);

// The window's skinned caption and frame. `secondBit` asks for the second bit of the frame style as
// well.
void SetSkinnedCaption(HWND window, const std::wstring& caption, bool secondBit);

// Makes a control a heading, with its color, or body text. A null control is passed over.
void SetSkinnedHeading(HWND control);
void SetSkinnedBody(HWND control);

// Makes a control a plain one, or a button a skinned button. A null control is passed over.
void SetSkinnedPlain(HWND control);
void SetSkinnedButton(HWND button);

}  // namespace postmarker
