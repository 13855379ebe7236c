// The one record that host and wizard share.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "postmarker/MailFolderRef.h"

struct HWND__;  // NOLINT(bugprone-reserved-identifier): the platform's own name for a window
struct IUnknown;

namespace postmarker {

// Unique wide strings in ordinal order.
using AddressSet = std::set<std::wstring>;

using TrainFolderMap = std::map<std::wstring, TrainFolderEntry>;

// The host creates, fills and destroys the record; it must outlive ShowWizard. Fields that are not
// marked "host" are zero or empty on entry; what the wizard wrote stays in them when ShowWizard
// returns, also after a cancel. The strings and containers are those of the C++ library, so host
// and module must be built with the same compiler and library (see docs/hosting.md).
struct WizardRequest {
  // Host, or the client page. Display name of the mail client to set up. Empty lets the person
  // choose.
  std::wstring clientName;

  // Host. Nonzero: the sheet's window is handed to the suite's window hook module, WndShim.dll.
  uint8_t useWindowHook = 0;

  // Host. Nonzero: the two training pages are shown, on which the person chooses folders. The host
  // does the training itself, after ShowWizard has returned.
  uint8_t offerTraining = 0;

  // Settings page. 1 or 0: move mails recognized as spam; add senders of blocked mails to the
  // blocked list; add senders of unblocked mails to the allowed list.
  uint8_t moveEmails = 0;
  uint8_t addBlocked = 0;
  uint8_t addUnblocked = 0;

  // Host. The owner of the sheet, or null. A handle that is no window makes ShowWizard return 2.
  HWND__* parentWindow = nullptr;

  // Sheet. The wizard's window while ShowWizard runs, otherwise null.
  HWND__* sheetWindow = nullptr;

  // Sheet. Every folder of the chosen client, once read. Don't touch while ShowWizard runs: a
  // worker of the module fills it under a lock of its own.
  MailFolderList folders;

  // Spam folder page. The folder that spam is moved to. Set from the saved settings as soon as the
  // page is reached.
  MailFolderRef spamFolder;

  // Free for the host; the module never touches it.
  uint32_t hostData = 0;

  // Host, optional. A running Outlook.Application (IUnknown or IDispatch). Not released by the
  // module.
  IUnknown* outlookApplication = nullptr;

  // Sheet. The global interface table's cookie of the Outlook application object. It is revoked at
  // the end, and the number that stays here is of no use.
  uint32_t outlookCookie = 0;

  // Prefill page. The addresses that the person kept. At Finish they are added to the whitelist.
  AddressSet prefillAddresses;

  // Training pages, each time one is left forward or back: every folder of its tree with its check
  // state, so that folders without a check mark are there as well. The key is the folder's firstId,
  // widened; of two folders with the same one, the last in the tree stays. The first page asks for
  // folders that contain spam, the second for folders with messages that the person wants. A page
  // that was not reached leaves its map alone. After a cancel, don't act on them.
  TrainFolderMap trainFoldersFirst;
  TrainFolderMap trainFoldersSecond;
};

}  // namespace postmarker
