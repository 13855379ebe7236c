// What the class library keeps for a thread while an export of the module runs on it.
#pragma once

#include <windows.h>

#include <exception>

#include "support/Handles_win.h"

namespace postmarker {

class CWnd;

// Lives on the stack of an export and is found through a TLS slot, so nothing is left behind on a
// host's thread. States nest: an export called from within another one has its own.
class ThreadState {
 public:
  ThreadState();
  ThreadState(const ThreadState&) = delete;
  ThreadState& operator=(const ThreadState&) = delete;
  ~ThreadState();

  // The innermost state of this thread, or null outside all exports.
  static ThreadState* Current();

  // Keeps an exception that must not pass a frame of the system; the first one stays.
  void KeepException(std::exception_ptr exception) noexcept;

  // Throws the kept exception, if there is one. Called by the modal loops.
  void RethrowException();

  [[nodiscard]] bool HasException() const { return m_exception != nullptr; }

  // The object that the next window created on this thread belongs to, and the hook that sees it.
  CWnd* m_creating = nullptr;
  WindowsHook m_hook;

 private:
  ThreadState* m_previous;
  std::exception_ptr m_exception;
};

}  // namespace postmarker
