#include "wizard/FolderWorker_win.h"

#include <memory>
#include <utility>

#include "clients/ClientTable.h"
#include "support/ComPtr_win.h"
#include "wizard/CWizardSheet_win.h"
#include "wizard/OutlookSession_win.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker {
namespace {

void ReadFolders(const FolderWorkerStart& start) {
  const ComApartment apartment;
  if (FAILED(apartment.Result())) {
    return;
  }
  ComPtr<IDispatch> outlook;
  if (start.needsOutlook) {
    (void)FetchOutlookApplication(start.outlookCookie, &outlook);
  }
  const ClientSession session = {outlook.Get()};
  const MailClientAdapter& adapter = *FindClient(start.clientName)->adapter;
  MailFolderList folders;
  adapter.ListFolders(&folders, session);
  auto defaultFolder = std::make_unique<MailFolderRef>(adapter.FindDefaultFolder(folders, session));
  outlook.Reset();
  WorkerMap.WithSheet(start.sheet, start.number, [&] {
    start.sheet->TakeFolders(std::move(folders), std::move(defaultFolder));
  });
}

DWORD WINAPI FolderWorker(void* argument) noexcept {
  HMODULE module = nullptr;
  {
    const std::unique_ptr<FolderWorkerStart> start(static_cast<FolderWorkerStart*>(argument));
    module = start->module.Release();
    if (start->number != 0) {
      try {
        ReadFolders(*start);
      } catch (...) {
        // Out of memory, at worst: the list stays empty, and the sheet takes the ended thread for
        // ready.
        ::SetLastError(ERROR_OUTOFMEMORY);
      }
    }
  }
  if (module != nullptr) {
    ::FreeLibraryAndExitThread(module, 0);
  }
  return 0;
}

}  // namespace

KernelHandle CreateFolderWorker(FolderWorkerStart* start) {
  return KernelHandle(::CreateThread(nullptr, 0, &FolderWorker, start, CREATE_SUSPENDED, nullptr));
}

}  // namespace postmarker
