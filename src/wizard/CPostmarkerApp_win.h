// The application object of Postmarker.dll.
#pragma once

#include "support/Handles_win.h"
#include "ui/CWinApp.h"
#include "wizard/ScreenScale.h"

namespace postmarker {

class CPostmarkerApp : public CWinApp {
 public:
  // Loads the language resource module and the window hook module. Nothing that fails here is
  // reported: the module loads all the same. Called by the module's entry point, under the loader's
  // lock.
  int InitInstance() override;

  // Frees both modules.
  int ExitInstance() override;

 private:
  void LoadResourceModule();

  LibraryHandle m_resourceModule;
};

// The scale of the screen, as it was at the module's load.
const ScreenScale& CurrentScreenScale();

}  // namespace postmarker
