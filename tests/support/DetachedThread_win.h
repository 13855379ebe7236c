// Threads that nobody waits for.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <utility>

#include "support/Handles_win.h"

namespace postmarker::test {

inline DWORD WINAPI RunOwned(void* work) {
  const std::unique_ptr<std::function<void()>> owned(static_cast<std::function<void()>*>(work));
  (*owned)();
  return 0;
}

// Runs `work` on a thread of its own. What it uses must live for as long as it does. This stands
// for std::thread::detach: when a thread ends in the moment in which it is detached, the runtime
// library can give its record back twice, and two later threads then share it.
inline void RunDetached(std::function<void()> work) {
  auto* const owned = new std::function<void()>(std::move(work));
  if (!KernelHandle(::CreateThread(nullptr, 0, RunOwned, owned, 0, nullptr))) {
    delete owned;
  }
}

}  // namespace postmarker::test
