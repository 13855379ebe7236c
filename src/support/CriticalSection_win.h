// The lock of one process, and its holder.
#pragma once

#include <windows.h>

namespace postmarker {

// Meets the requirements of std::lock_guard.
class CriticalSection {
 public:
  CriticalSection() { ::InitializeCriticalSection(&m_section); }
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;
  ~CriticalSection() { ::DeleteCriticalSection(&m_section); }
  void lock() { ::EnterCriticalSection(&m_section); }
  void unlock() { ::LeaveCriticalSection(&m_section); }

 private:
  CRITICAL_SECTION m_section;
};

}  // namespace postmarker
