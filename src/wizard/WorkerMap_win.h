// Which sheets still exist, for the workers that outlive them.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <map>

#include "support/CriticalSection_win.h"

namespace postmarker {

class CWizardSheet;

// Sheets by address, each with its worker's handle and number. A sheet enters itself when it is
// built and goes first thing when it is destroyed. A handle's value can come back with a later
// thread, as can the address with a later sheet on the stack; the number can't. Any thread.
class WorkerRegistry {
 public:
  // Enters a sheet without a worker.
  void Enter(CWizardSheet* sheet);

  // Notes the sheet's worker and returns the number that the worker proves itself with. 0 if the
  // sheet is gone.
  uint64_t SetWorker(CWizardSheet* sheet, int64_t handle);

  // Runs `action` if the sheet is still there with the worker of this number; it can't go
  // meanwhile. False if it was gone.
  bool WithSheet(CWizardSheet* sheet, uint64_t number, const std::function<void()>& action);

  void Erase(CWizardSheet* sheet);

 private:
  struct Entry {
    int64_t handle = 0;
    uint64_t number = 0;
  };

  CriticalSection m_lock;
  std::map<CWizardSheet*, Entry> m_entries;
  uint64_t m_lastNumber = 0;
};

// The one of the process.
extern WorkerRegistry WorkerMap;

// Guards WizardRequest::folders. Held for a copy or a count only, never across a call of an
// adapter; taken within WorkerMap's lock, never around it.
extern CriticalSection FolderLock;

}  // namespace postmarker
