// The wizard's connection to the chosen client, and what was read through it.
#pragma once

#include <memory>
#include <string>

#include "clients/ClientLink.h"
#include "postmarker/WizardRequest.h"
#include "support/Handles_win.h"
#include "support/Results.h"
#include "wizard/FolderWorker_win.h"

namespace postmarker {

class CWizardSheet;
struct ClientRow;

// Holds the client, reads its folders on a worker or on the sheet's thread, and keeps them in the
// request. All operations are for the sheet's thread; WizardServices tells what they do.
class ClientConnection final : private FolderReceiver {
 public:
  // `sheet` is the key under which WorkerMap knows the sheet; it erases itself there before this
  // object goes. `request` outlives the object.
  ClientConnection(CWizardSheet* sheet, WizardRequest* request)
      : m_sheet(sheet), m_request(request) {}
  ClientConnection(const ClientConnection&) = delete;
  ClientConnection& operator=(const ClientConnection&) = delete;
  ~ClientConnection();

  [[nodiscard]] const ClientRow& Client() const;
  [[nodiscard]] ClientLink Link() const;

  // Gets hold of the client, which is started if need be; blocks until that is done.
  void Prepare();

  // Makes sure that the session that the client's operations need is there: 0 if it is, and for
  // clients that need none.
  ResultCode EnsureSession();

  ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                          MailFolderRef* rec);
  void StartFolderWorker();
  [[nodiscard]] bool AreFoldersReady() const;
  void GetFolders(MailFolderList* list);
  void GetDefaultFolder(MailFolderRef* rec);

 private:
  void ReceiveFolders(MailFolderList folders,
                      std::unique_ptr<MailFolderRef> defaultFolder) override;
  ClientHold* MakeHoldOnce();

  CWizardSheet* m_sheet;
  WizardRequest* m_request;
  std::shared_ptr<ClientHold> m_hold;  // null until prepared, and if the client needs nothing
  std::unique_ptr<MailFolderRef> m_defaultFolder;  // null until it was looked for
  KernelHandle m_workerThread;
};

}  // namespace postmarker
