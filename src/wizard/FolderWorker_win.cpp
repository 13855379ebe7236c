#include "wizard/FolderWorker_win.h"

#include <memory>
#include <utility>

#include "clients/AdapterCall_win.h"
#include "support/ComPtr_win.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker {
namespace {

void ReadFolders(const FolderWorkerStart& start) {
  const ComApartment apartment;
  if (FAILED(apartment.Result())) {
    return;
  }
  MailFolderList folders;
  std::unique_ptr<MailFolderRef> defaultFolder;
  {
    // Nobody waits for the folders once the sheet is gone.
    const ClientSession session = start.client.OpenSession(
        [&start] { return !WorkerMap.WithSheet(start.sheet, start.number, [] {}); });
    const MailClientAdapter& adapter = *start.client.adapter;
    defaultFolder = std::make_unique<MailFolderRef>();
    (void)CallAdapter([&] { adapter.ListFolders(session, &folders); });
    (void)CallAdapter([&] { *defaultFolder = adapter.FindDefaultFolder(session, folders); });
  }
  WorkerMap.WithSheet(start.sheet, start.number, [&] {
    start.receiver->ReceiveFolders(std::move(folders), std::move(defaultFolder));
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
