// What the host's thread and the window's thread of a progress window share.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "progress/PendingSteps.h"
#include "support/Bstr_win.h"
#include "support/CriticalSection_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// The messages to the window.
inline constexpr UINT kProgressText = 0x401;   // a BSTR, which the window frees; the total
inline constexpr UINT kProgressSteps = 0x402;  // 0; the steps
inline constexpr UINT kProgressEnd = 0x403;    // a mark of a stop; a mark of the window's end

// The record behind a handle. The host's functions live in ProgressService_win.h.
struct ProgressHandle {
  // Null before the window exists and after it has ended. Written by its thread.
  std::atomic<HWND> window = nullptr;

  KernelHandle thread;

  // Reset by hand. Signalled when the window exists, or when the dialog is over without one.
  KernelHandle ready;

  uint32_t useHook = 0;

  // The user wants the job to stop.
  std::atomic<uint32_t> cancelled = 0;

  std::wstring title;

  // Keeps the module in memory as long as the thread runs.
  LibraryHandle module;

  // For the window's thread: the window exists; from now on nothing reaches it any more.
  void Open(HWND created);
  void Close();

  // For the host: posts a message. All do nothing while there is no window; what can't be posted is
  // freed at once.
  void PostText(Bstr text, int32_t total);
  void PostSteps(int32_t steps);

  // For the host: the job is over. Posted, or sent if the window's queue is full: the thread that
  // the host goes on to wait for would not end without it.
  void PostEnd(bool closeNow);

  // For the window's thread: see PendingSteps.
  int64_t StepsArrived();
  PendingSteps::Gathered FetchSteps();

 private:
  // Held for each post and while `window` changes: what is posted reaches a window that frees it.
  CriticalSection m_lock;
  PendingSteps m_steps;
};

}  // namespace postmarker
