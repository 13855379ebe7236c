// Asks the suite's resident process where links are to lead, while the window goes on.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "ipc/AccountTools_win.h"
#include "support/CriticalSection_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// A thread that resolves addresses, one after the other, and tells a window. Each can take as long
// as the limits of the route, 10 seconds if there is no resident process: so long no window may
// wait. Destroying the object ends the thread, and waits for that.
class LinkWorker {
 public:
  // `message` is posted to `window` with an address's number as its first parameter when the target
  // is known. `route` must outlive the object. Without a thread nothing is posted, and the
  // addresses stay as they are.
  LinkWorker(const AccountToolsRoute& route, std::vector<std::wstring> addresses, HWND window,
             UINT message);
  LinkWorker(const LinkWorker&) = delete;
  LinkWorker& operator=(const LinkWorker&) = delete;
  ~LinkWorker();

  // What an address leads to, as far as is known: at first to itself. Any thread.
  [[nodiscard]] std::wstring Target(size_t number);

 private:
  static DWORD WINAPI Run(void* argument) noexcept;
  void Resolve();

  const AccountToolsRoute& m_route;
  const HWND m_window;
  const UINT m_message;
  CriticalSection m_lock;
  std::vector<std::wstring> m_targets;  // under the lock
  KernelHandle m_cancel;
  KernelHandle m_thread;
};

}  // namespace postmarker
