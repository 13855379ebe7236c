// A thread with as little stack as programs give their own.
#pragma once

#include <windows.h>

#include <functional>
#include <system_error>

#include "support/Handles_win.h"

namespace postmarker::test {

inline constexpr size_t kSmallStack = size_t{1} << 20;

// Runs `work` in a thread with a stack of 1 MiB and waits for it. `work` must not throw.
inline void RunWithSmallStack(std::function<void()> work) {
  struct Entry {
    static DWORD WINAPI Run(void* argument) {
      (*static_cast<std::function<void()>*>(argument))();
      return 0;
    }
  };
  const KernelHandle thread(::CreateThread(nullptr, kSmallStack, Entry::Run, &work,
                                           STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
  if (!thread) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category());
  }
  ::WaitForSingleObject(thread.Get(), INFINITE);
}

}  // namespace postmarker::test
