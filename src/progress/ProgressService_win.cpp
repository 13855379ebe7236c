#include "progress/ProgressService_win.h"

#include <memory>

#include "progress/CDlgTrain_win.h"
#include "support/ComPtr_win.h"
#include "support/ModuleReference_win.h"
#include "support/Text.h"
#include "ui/CWinApp.h"
#include "wizard/WindowHook_win.h"

namespace postmarker {
namespace {

void RunDialog(ProgressHandle* handle) {
  const ModuleStateGuard guard;
  const HookableThread hookable;
  try {
    // What opens links may be a COM object.
    const ComApartment apartment;
    const auto dialog = std::make_unique<CDlgTrain>(handle);
    dialog->DoModal();
    handle->Close();
    ::SetEvent(handle->ready.Get());
  } catch (...) {
    // No memory for the dialog or in it: the handle is one whose window has gone.
    ::SetLastError(ERROR_OUTOFMEMORY);
  }
  handle->Close();
  ::SetEvent(handle->ready.Get());
}

DWORD WINAPI ProgressThread(void* argument) noexcept {
  auto* const handle = static_cast<ProgressHandle*>(argument);
  RunDialog(handle);
  // The handle is freed only after this thread.
  if (const HMODULE module = handle->module.Release()) {
    ::FreeLibraryAndExitThread(module, 0);
  }
  return 0;
}

// Waits without limit. Messages that are sent to windows of this thread are answered meanwhile: the
// window's thread sends some when it comes to the front and goes, and would wait for ever.
void WaitAndAnswer(HANDLE object) {
  DWORD state = WAIT_OBJECT_0 + 1;
  while (state == WAIT_OBJECT_0 + 1) {
    state = ::MsgWaitForMultipleObjects(1, &object, FALSE, INFINITE, QS_SENDMESSAGE);
    if (state == WAIT_OBJECT_0 + 1) {
      MSG ignored = {};
      ::PeekMessageW(&ignored, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
  }
  if (state != WAIT_OBJECT_0) {
    ::WaitForSingleObject(object, INFINITE);
  }
}

Bstr TextFromHost(const char* text) {
  return MakeBstr(Widen(text != nullptr ? text : ""));
}

}  // namespace

ProgressHandle* CreateProgress(const char* title, uint32_t useHook) {
  auto handle = std::make_unique<ProgressHandle>();
  handle->title = Widen(title != nullptr ? title : "");
  handle->useHook = useHook;
  handle->ready.Reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  if (!handle->ready) {
    return nullptr;
  }
  handle->module = ReferToThisModule();
  handle->thread.Reset(::CreateThread(nullptr, 0, &ProgressThread, handle.get(), 0, nullptr));
  if (!handle->thread) {
    return nullptr;
  }
  WaitAndAnswer(handle->ready.Get());
  return handle.release();
}

void SetProgress(ProgressHandle* handle, const char* text, int32_t total) {
  if (handle != nullptr) {
    handle->PostText(TextFromHost(text), total);
  }
}

void IncreaseProgress(ProgressHandle* handle, int32_t steps) {
  if (handle != nullptr) {
    handle->PostSteps(steps);
  }
}

void CompleteProgress(const ProgressHandle* handle) {
  const HWND window = handle != nullptr ? handle->window.load() : nullptr;
  if (window != nullptr) {
    ::SendMessageW(window, kProgressEnd, 0, 0);
  }
}

bool IsProgressCancelled(const ProgressHandle* handle) {
  return handle != nullptr && (handle->window == nullptr || handle->cancelled != 0);
}

bool IsProgressFinished(const ProgressHandle* handle) {
  return handle != nullptr && handle->window == nullptr;
}

void DestroyProgress(ProgressHandle* handle, bool closeNow) {
  const std::unique_ptr<ProgressHandle> owner(handle);
  if (handle != nullptr) {
    handle->PostEnd(closeNow);
    WaitAndAnswer(handle->thread.Get());
  }
}

}  // namespace postmarker
