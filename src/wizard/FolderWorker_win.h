// The thread that reads a client's folders while the sheet shows a page.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "support/Handles_win.h"

namespace postmarker {

class CWizardSheet;

// What a worker takes along. It reads nothing of the sheet or the request, which may both go while
// it works.
struct FolderWorkerStart {
  CWizardSheet* sheet =
      nullptr;          // only as a key of WorkerMap until that says that it is still there
  uint64_t number = 0;  // of WorkerMap; 0 makes the thread leave at once
  std::wstring clientName;
  bool needsOutlook = false;
  DWORD outlookCookie = 0;
  LibraryHandle module;  // keeps the code in memory if the host unloads the module meanwhile
};

// Creates the worker suspended; the thread owns *start from then on. Null if it can't be created.
KernelHandle CreateFolderWorker(FolderWorkerStart* start);

}  // namespace postmarker
