// The cursor that says that the program is busy.
#pragma once

#include <windows.h>

namespace postmarker {

// The system's wait cursor. Never to be destroyed.
inline HCURSOR WaitCursor() {
  return ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32514));  // IDC_WAIT, whatever UNICODE says
}

// Shows the wait cursor for the life of the object. For the thread that owns the windows.
class CWaitCursor {
 public:
  CWaitCursor() : m_previous(::SetCursor(WaitCursor())) {}
  CWaitCursor(const CWaitCursor&) = delete;
  CWaitCursor& operator=(const CWaitCursor&) = delete;
  ~CWaitCursor() { ::SetCursor(m_previous); }

 private:
  HCURSOR m_previous;
};

// Lets the window of this thread that is under the pointer choose the cursor again: the system
// itself asks only when the pointer moves.
void UpdateCursor();

}  // namespace postmarker
