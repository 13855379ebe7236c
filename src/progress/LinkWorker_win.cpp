#include "progress/LinkWorker_win.h"

#include <mutex>
#include <new>
#include <utility>

namespace postmarker {

LinkWorker::LinkWorker(const AccountToolsRoute& route, std::vector<std::wstring> addresses,
                       HWND window, UINT message)
    : m_route(route),
      m_window(window),
      m_message(message),
      m_targets(std::move(addresses)),
      m_cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  // Without the event nothing could end the thread.
  if (m_cancel) {
    m_thread.Reset(::CreateThread(nullptr, 0, &LinkWorker::Run, this, 0, nullptr));
  }
}

LinkWorker::~LinkWorker() {
  if (m_thread) {
    ::SetEvent(m_cancel.Get());
    ::WaitForSingleObject(m_thread.Get(), INFINITE);
  }
}

std::wstring LinkWorker::Target(size_t number) {
  const std::lock_guard lock(m_lock);
  return m_targets.at(number);
}

DWORD WINAPI LinkWorker::Run(void* argument) noexcept {
  try {
    static_cast<LinkWorker*>(argument)->Resolve();
  } catch (const std::bad_alloc&) {
    // The links that are not known yet lead where they would without the resident process.
    ::SetLastError(ERROR_OUTOFMEMORY);
  }
  return 0;
}

void LinkWorker::Resolve() {
  for (size_t number = 0; number < m_targets.size(); ++number) {
    std::wstring target = ResolveWebLink(m_route, Target(number), m_cancel.Get());
    if (::WaitForSingleObject(m_cancel.Get(), 0) == WAIT_OBJECT_0) {
      return;
    }
    const std::lock_guard lock(m_lock);
    m_targets[number] = std::move(target);
    ::PostMessageW(m_window, m_message, number, 0);
  }
}

}  // namespace postmarker
