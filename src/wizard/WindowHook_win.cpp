#include "wizard/WindowHook_win.h"

namespace postmarker {
namespace {

WindowHookModule g_windowHook;

constexpr WPARAM kSkinFrame = 2;
constexpr LPARAM kFrameFirstBit = 0x1000001;
constexpr LPARAM kFrameSecondBit = 0x2000001;
constexpr WPARAM kSkinPlain = 2;
constexpr WPARAM kSkinTextColor = 9;
constexpr WPARAM kSkinButton = 64;

template <class Function>
Function EntryPoint(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

}  // namespace

std::atomic<uint32_t> HookActive = 0;

WindowHookModule& WindowHook() {
  return g_windowHook;
}

void WindowHookModule::Load(const std::wstring& path) {
  Clear();
  module.Reset(::LoadLibraryW(path.c_str()));
  if (!module) {
    return;
  }
  AddHookableThread = EntryPoint<ThreadFunction>(module.Get(), "AddHookableThread");
  ReleaseHookableThread = EntryPoint<ThreadFunction>(module.Get(), "ReleaseHookableThread");
  InitHook = EntryPoint<WindowFunction>(module.Get(), "InitHook");
  UninitHook = EntryPoint<PlainFunction>(module.Get(), "UninitHook");
  AddHookableWindow = EntryPoint<WindowFunction>(module.Get(), "AddHookableWindow");
}

void WindowHookModule::Clear() {
  *this = WindowHookModule();
}

bool BeginWindowHook(HWND window) {
  const WindowHookModule& hook = WindowHook();
  if (hook.InitHook == nullptr || hook.AddHookableWindow == nullptr) {
    return false;
  }
  uint32_t idle = 0;
  if (!HookActive.compare_exchange_strong(idle, 1)) {
    return false;
  }
  hook.InitHook(window);
  hook.AddHookableWindow(window);
  return true;
}

void EndWindowHook() {
  // Without a way to end it the hook stays, and with it the mark.
  if (WindowHook().UninitHook != nullptr) {
    // The mark last: whoever finds it cleared begins a hook, which must not be ended here.
    WindowHook().UninitHook();
    HookActive = 0;
  }
}

HookableThread::HookableThread()
    : m_isKnown(HookActive != 0 && WindowHook().AddHookableThread != nullptr) {
  if (m_isKnown) {
    WindowHook().AddHookableThread(::GetCurrentThreadId());
  }
}

HookableThread::~HookableThread() {
  if (m_isKnown && WindowHook().ReleaseHookableThread != nullptr) {
    WindowHook().ReleaseHookableThread(::GetCurrentThreadId());
  }
}

void SetSkinnedCaption(HWND window, const std::wstring& caption, bool secondBit) {
  ::SendMessageW(window, WM_KS_SKIN_TITLE, reinterpret_cast<WPARAM>(caption.c_str()), 0);
  ::SendMessageW(window, WM_KS_SKIN_STYLE, kSkinFrame, kFrameFirstBit);
  if (secondBit) {
    ::SendMessageW(window, WM_KS_SKIN_STYLE, kSkinFrame, kFrameSecondBit);
  }
  ::SetWindowPos(window, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED |
                     SWP_NOOWNERZORDER);
}

void SetSkinnedHeading(HWND control) {
  if (control != nullptr) {
    ::SendMessageW(control, WM_KS_SKIN_STYLE, kSkinHeading, 0);
    ::SendMessageW(control, WM_KS_SKIN_STYLE, kSkinTextColor, static_cast<LPARAM>(kHeadingColor));
  }
}

void SetSkinnedBody(HWND control) {
  if (control != nullptr) {
    ::SendMessageW(control, WM_KS_SKIN_STYLE, kSkinBody, 0);
  }
}

void SetSkinnedPlain(HWND control) {
  if (control != nullptr) {
    ::SendMessageW(control, WM_KS_SKIN_STYLE, kSkinPlain, 0);
  }
}

void SetSkinnedButton(HWND button) {
  if (button != nullptr) {
    ::SendMessageW(button, WM_KS_SKIN_BUTTON, kSkinButton, 0);
  }
}

}  // namespace postmarker
