#include "ui/ThreadState.h"

#include <utility>

namespace postmarker {
namespace {

// One slot for the module's life.
class TlsSlot {
 public:
  TlsSlot() : m_index(::TlsAlloc()) {}
  TlsSlot(const TlsSlot&) = delete;
  TlsSlot& operator=(const TlsSlot&) = delete;
  ~TlsSlot() { ::TlsFree(m_index); }
  [[nodiscard]] DWORD Index() const { return m_index; }

 private:
  DWORD m_index;
};

TlsSlot g_slot;

}  // namespace

ThreadState::ThreadState() : m_previous(Current()) {
  ::TlsSetValue(g_slot.Index(), this);
}

ThreadState::~ThreadState() {
  ::TlsSetValue(g_slot.Index(), m_previous);
}

ThreadState* ThreadState::Current() {
  return static_cast<ThreadState*>(::TlsGetValue(g_slot.Index()));
}

void ThreadState::KeepException(std::exception_ptr exception) noexcept {
  if (!m_exception) {
    m_exception = std::move(exception);
    // Wakes the modal loop that throws it on.
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_NULL, 0, 0);
  }
}

void ThreadState::RethrowException() {
  if (m_exception) {
    std::rethrow_exception(std::exchange(m_exception, nullptr));
  }
}

}  // namespace postmarker
