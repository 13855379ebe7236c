// The application object of the module, its resources, and the guard that every export begins with.
#pragma once

#include <windows.h>

#include <string>

#include "ui/ThreadState.h"

namespace postmarker {

// The one application object of a module. Construct it as a global; InitInstance and ExitInstance
// run at the module's load and unload, under the loader's lock.
class CWinApp {
 public:
  CWinApp();
  CWinApp(const CWinApp&) = delete;
  CWinApp& operator=(const CWinApp&) = delete;
  virtual ~CWinApp();

  // Nonzero lets the module load.
  virtual int InitInstance() { return 1; }
  virtual int ExitInstance() { return 0; }

  // The module's own handle, set by its entry point before InitInstance.
  void SetModule(HINSTANCE module) { m_module = module; }
  [[nodiscard]] HINSTANCE Module() const { return m_module; }

  // Where dialogs, texts and pictures come from: the module itself unless set. Not owned.
  void SetResourceModule(HINSTANCE module) { m_resources = module; }
  [[nodiscard]] HINSTANCE ResourceModule() const { return m_resources ? m_resources : m_module; }

 private:
  HINSTANCE m_module = nullptr;
  HINSTANCE m_resources = nullptr;
};

// The application object, or null.
CWinApp* AfxGetApp();

// The module that resources come from. Any thread.
HINSTANCE AfxGetResourceHandle();

// A text of the resource module, empty if there is none. Any thread.
std::wstring LoadText(UINT id);

// Switches to this module's class state and to the looks that its manifest asks for; what was
// before comes back on every way out. One stands at the head of each export and of each thread that
// owns windows. Cheap enough for every callback: the manifest is read once, by the first guard.
class ModuleStateGuard {
 public:
  ModuleStateGuard();
  ModuleStateGuard(const ModuleStateGuard&) = delete;
  ModuleStateGuard& operator=(const ModuleStateGuard&) = delete;
  ~ModuleStateGuard();

 private:
  ThreadState m_state;
  ULONG_PTR m_cookie = 0;  // of the activation of the module's manifest; 0 for none
};

}  // namespace postmarker
