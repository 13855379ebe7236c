#include "wizard/ClientConnection_win.h"

#include <mutex>
#include <utility>

#include "clients/ClientTable.h"
#include "support/ModuleReference_win.h"
#include "ui/CWaitCursor.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker {

ClientConnection::~ClientConnection() {
  // The worker is not waited for: it holds the module itself and may be busy for long.
  m_workerThread.Reset();
  if (m_hold) {
    // There is no window any more, but a client that hangs in its logoff keeps the host waiting.
    const CWaitCursor wait;
    // A worker that is still busy keeps the object, but not the client.
    m_hold->Disconnect();
  }
}

const ClientRow& ClientConnection::Client() const {
  return *FindClient(m_request->clientName);
}

ClientLink ClientConnection::Link() const {
  return {Client().adapter, m_hold};
}

ClientHold* ClientConnection::MakeHoldOnce() {
  if (!m_hold) {
    m_hold = Client().adapter->MakeHold(m_request);
  }
  return m_hold.get();
}

void ClientConnection::Prepare() {
  const CWaitCursor wait;
  if (ClientHold* const hold = MakeHoldOnce()) {
    hold->Connect();
  }
}

ResultCode ClientConnection::EnsureSession() {
  ClientHold* const hold = MakeHoldOnce();
  return hold != nullptr ? hold->EnsureSession() : kOk;
}

void ClientConnection::StartFolderWorker() {
  if (m_workerThread) {
    return;
  }
  Prepare();
  auto start = std::make_unique<FolderWorkerStart>();
  start->sheet = m_sheet;
  start->receiver = this;
  start->client = Link();
  // Taken here and not by the thread, which might first run when the host has unloaded the module.
  start->module = ReferToThisModule();
  m_workerThread = CreateFolderWorker(start.get());
  if (!m_workerThread) {
    return;
  }
  FolderWorkerStart* const owned = start.release();
  owned->number = WorkerMap.SetWorker(m_sheet, reinterpret_cast<intptr_t>(m_workerThread.Get()));
  ::ResumeThread(m_workerThread.Get());
}

void ClientConnection::ReceiveFolders(MailFolderList folders,
                                      std::unique_ptr<MailFolderRef> defaultFolder) {
  m_defaultFolder = std::move(defaultFolder);
  const std::lock_guard lock(FolderLock);
  m_request->folders = std::move(folders);
}

bool ClientConnection::AreFoldersReady() const {
  if (m_workerThread && ::WaitForSingleObject(m_workerThread.Get(), 0) == WAIT_OBJECT_0) {
    return true;
  }
  const std::lock_guard lock(FolderLock);
  return !m_request->folders.empty();
}

void ClientConnection::GetFolders(MailFolderList* list) {
  if (!AreFoldersReady()) {
    Prepare();
    MailFolderList folders;
    Client().adapter->ListFolders(Link().OpenSession({}), &folders);
    const std::lock_guard lock(FolderLock);
    m_request->folders = std::move(folders);
  }
  const std::lock_guard lock(FolderLock);
  *list = m_request->folders;
}

void ClientConnection::GetDefaultFolder(MailFolderRef* rec) {
  if (m_defaultFolder) {
    *rec = *m_defaultFolder;
    return;
  }
  MailFolderList folders;
  GetFolders(&folders);
  (void)EnsureSession();
  m_defaultFolder = std::make_unique<MailFolderRef>(
      Client().adapter->FindDefaultFolder(Link().OpenSession({}), folders));
}

ResultCode ClientConnection::CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                          MailFolderRef* rec) {
  MailFolderRef created;
  if (Succeeded(EnsureSession())) {
    const ResultCode result =
        Client().adapter->CreateFolder(Link().OpenSession({}), name, parent, &created);
    if (Failed(result)) {
      return result;
    }
    if (created.firstId.empty()) {
      // A client that went away in the middle reports what arrived: nothing.
      return kFail;
    }
  }
  *rec = created;
  m_request->spamFolder = *rec;
  const std::lock_guard lock(FolderLock);
  m_request->folders.push_back(*rec);
  return kOk;
}

}  // namespace postmarker
