#include "wizard/WorkerMap_win.h"

#include <mutex>

namespace postmarker {

WorkerRegistry WorkerMap;
CriticalSection FolderLock;

void WorkerRegistry::Enter(CWizardSheet* sheet) {
  const std::lock_guard lock(m_lock);
  m_entries[sheet] = {};
}

uint64_t WorkerRegistry::SetWorker(CWizardSheet* sheet, int64_t handle) {
  const std::lock_guard lock(m_lock);
  const auto found = m_entries.find(sheet);
  if (found == m_entries.end()) {
    return 0;
  }
  found->second = {handle, ++m_lastNumber};
  return m_lastNumber;
}

bool WorkerRegistry::WithSheet(CWizardSheet* sheet, uint64_t number,
                               const std::function<void()>& action) {
  const std::lock_guard lock(m_lock);
  const auto found = m_entries.find(sheet);
  if (found == m_entries.end() || found->second.handle == 0 || found->second.number != number) {
    return false;
  }
  action();
  return true;
}

void WorkerRegistry::Erase(CWizardSheet* sheet) {
  const std::lock_guard lock(m_lock);
  m_entries.erase(sheet);
}

}  // namespace postmarker
