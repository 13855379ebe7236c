#include "ui/CWnd.h"

#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

#include "support/CriticalSection_win.h"
#include "ui/ThreadState.h"

namespace postmarker {
namespace {

// Which window has which object. Every message asks, so it is kept here and not in a property of
// the window, for which the system may have to ask another process.
class WindowMap {
 public:
  [[nodiscard]] CWnd* Find(HWND window) {
    const std::lock_guard lock(m_lock);
    const auto found = m_objects.find(window);
    return found != m_objects.end() ? found->second : nullptr;
  }
  // False if there is no memory for it.
  bool Add(HWND window, CWnd* object) noexcept {
    const std::lock_guard lock(m_lock);
    try {
      m_objects[window] = object;
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }
  void Remove(HWND window) {
    const std::lock_guard lock(m_lock);
    m_objects.erase(window);
  }

 private:
  CriticalSection m_lock;
  std::unordered_map<HWND, CWnd*> m_objects;
};

WindowMap& Windows() {
  static WindowMap map;
  return map;
}

bool Matches(const MessageEntry& entry, const MessageArgs& args) {
  switch (entry.kind) {
    case MessageKind::kMessage:
      return entry.id == args.message;
    case MessageKind::kCommand:
      return args.message == WM_COMMAND && entry.id == LOWORD(args.wParam) &&
             entry.code == HIWORD(args.wParam);
    case MessageKind::kNotify: {
      const auto* header = reinterpret_cast<const NMHDR*>(args.lParam);
      return args.message == WM_NOTIFY && header->idFrom == entry.id && header->code == entry.code;
    }
  }
  return false;
}

const MessageEntry* FindEntry(const MessageTable* table, const MessageArgs& args) {
  for (; table != nullptr; table = table->base) {
    for (const MessageEntry& entry : table->entries) {
      if (Matches(entry, args)) {
        return &entry;
      }
    }
  }
  return nullptr;
}

}  // namespace

const MessageTable CWnd::kMessages = {nullptr, {}};

CWnd::~CWnd() {
  if (m_hWnd != nullptr) {
    const HWND window = m_hWnd;
    Detach();
    ::DestroyWindow(window);
  }
}

CWnd* CWnd::FromHandle(HWND window) {
  return Windows().Find(window);
}

bool CWnd::Subclass(HWND window) {
  if (m_hWnd != nullptr || !::IsWindow(window) || !Windows().Add(window, this)) {
    return false;
  }
  m_hWnd = window;
  m_previousProc = reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CWnd::StaticProc)));
  return true;
}

void CWnd::Detach() {
  if (m_hWnd == nullptr) {
    return;
  }
  const auto current = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(m_hWnd, GWLP_WNDPROC));
  // Somebody who took the window over after us must stay in the chain: then our procedure passes on
  // without an object.
  if (current == &CWnd::StaticProc) {
    ::SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_previousProc));
  }
  Windows().Remove(m_hWnd);
  m_hWnd = nullptr;
}

LRESULT CWnd::WindowProc(const MessageArgs& args) {
  if (const MessageEntry* entry = FindEntry(Messages(), args)) {
    return (this->*entry->handler)(args);
  }
  return Default(args);
}

LRESULT CWnd::Default(const MessageArgs& args) {
  return ::CallWindowProcW(m_previousProc, m_hWnd, args.message, args.wParam, args.lParam);
}

LRESULT CWnd::Dispatch(const MessageArgs& args) {
  if (args.message != WM_NCDESTROY) {
    return WindowProc(args);
  }
  // The last message: the handle is forgotten before the object can be deleted by its handler.
  const LRESULT result = WindowProc(args);
  if (m_hWnd != nullptr) {
    Windows().Remove(m_hWnd);
    m_hWnd = nullptr;
  }
  return result;
}

LRESULT CALLBACK CWnd::StaticProc(HWND window, UINT message, WPARAM wParam,
                                  LPARAM lParam) noexcept {
  CWnd* const object = FromHandle(window);
  if (object == nullptr) {
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  try {
    return object->Dispatch({message, wParam, lParam});
  } catch (...) {
    // No exception may pass the system's frames: the modal loop throws it on.
    if (ThreadState* state = ThreadState::Current()) {
      state->KeepException(std::current_exception());
    }
    return 0;
  }
}

CreationHook::CreationHook(CWnd* window) {
  Arm(window);
}

CreationHook::~CreationHook() {
  Disarm();
}

void CreationHook::Arm(CWnd* window) {
  ThreadState* const state = ThreadState::Current();
  if (state == nullptr) {
    return;
  }
  state->m_creating = window;
  if (!state->m_hook) {
    state->m_hook.Reset(
        ::SetWindowsHookExW(WH_CBT, &CreationHook::HookProc, nullptr, ::GetCurrentThreadId()));
  }
}

void CreationHook::Disarm() {
  ThreadState* const state = ThreadState::Current();
  if (state == nullptr) {
    return;
  }
  state->m_creating = nullptr;
  state->m_hook.Reset();
}

LRESULT CALLBACK CreationHook::HookProc(int code, WPARAM wParam, LPARAM lParam) noexcept {
  ThreadState* const state = ThreadState::Current();
  // Taken before the other hooks are asked, which may create windows themselves.
  CWnd* const window = code == HCBT_CREATEWND && state != nullptr
                           ? std::exchange(state->m_creating, nullptr)
                           : nullptr;
  const LRESULT result = ::CallNextHookEx(nullptr, code, wParam, lParam);
  if (window != nullptr) {
    // A hook that refuses a window ends it without its last message: the object must not know it.
    if (result == 0) {
      window->Subclass(reinterpret_cast<HWND>(wParam));
    }
    Disarm();
  }
  return result;
}

std::wstring WindowText(HWND window) {
  const auto length = static_cast<size_t>(::GetWindowTextLengthW(window));
  std::wstring text(length + 1, L'\0');
  const int copied = ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<size_t>(copied));
  return text;
}

}  // namespace postmarker
