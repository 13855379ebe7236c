// The thread that reads a client's folders while the sheet shows a page.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "clients/ClientLink.h"
#include "support/Handles_win.h"

namespace postmarker {

class CWizardSheet;

// Gets what a worker has read. Called on the worker's thread, while the sheet can't go.
class FolderReceiver {
 public:
  virtual void ReceiveFolders(MailFolderList folders,
                              std::unique_ptr<MailFolderRef> defaultFolder) = 0;

 protected:
  ~FolderReceiver() = default;
};

// What a worker takes along. It reads nothing of the sheet or the request, which may both go while
// it works.
struct FolderWorkerStart {
  CWizardSheet* sheet = nullptr;       // a key of WorkerMap and nothing else
  uint64_t number = 0;                 // of WorkerMap; 0 makes the thread leave at once
  FolderReceiver* receiver = nullptr;  // only while WorkerMap says that the sheet is there
  ClientLink client;
  LibraryHandle module;  // keeps the code in memory if the host unloads the module meanwhile
};

// Creates the worker suspended; the thread owns *start from then on. Null if it can't be created.
KernelHandle CreateFolderWorker(FolderWorkerStart* start);

}  // namespace postmarker
