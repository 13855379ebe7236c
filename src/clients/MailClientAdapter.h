// What the wizard asks of a mail client.
#pragma once

#include <memory>
#include <string>

#include "postmarker/MailFolderRef.h"
#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"

namespace postmarker {

// What an adapter needs from above for one operation. The objects belong to the caller and outlive
// the call.
struct ClientSession {
  // Outlook's application object, fetched for the calling thread; null if there is none.
  IUnknown* outlookApplication = nullptr;
};

// Keeps a client running while the wizard is open. Destroying it lets go of the client, which is
// told to exit if it was started for this. Sheet.
class ClientHold {
 public:
  ClientHold() = default;
  ClientHold(const ClientHold&) = delete;
  ClientHold& operator=(const ClientHold&) = delete;
  virtual ~ClientHold() = default;

  // Connects to the client and starts it if need be; blocks until that is done or its time is over.
  // Called again it connects anew, and what the last call came to stands: a client that was started
  // by an earlier one is then taken for one that ran before. Does not throw.
  virtual void Connect() = 0;
};

// One mail client. The base class answers as a client that nobody knows: no folders, no default
// folder, folders may be created but creating one fails, no addresses. Adapters hold no state and
// no lock: each operation builds what it needs and drops it before it returns, so one object serves
// all threads. Threads are named at each operation: "sheet" is the wizard's thread, "worker" one
// that pumps no messages and owns no window. No operation throws.
class MailClientAdapter {
 public:
  MailClientAdapter() = default;
  MailClientAdapter(const MailClientAdapter&) = delete;
  MailClientAdapter& operator=(const MailClientAdapter&) = delete;
  virtual ~MailClientAdapter() = default;

  // Appends every folder of the client to *folders, in display order. After a failure the list
  // holds what was read before it; nothing is reported. Worker, or sheet.
  virtual void ListFolders(MailFolderList* folders, const ClientSession& session) const;

  // The client's deleted items folder, an empty record if it has none that the wizard knows.
  // `folders` is the client's whole list. Worker, or sheet.
  [[nodiscard]] virtual MailFolderRef FindDefaultFolder(const MailFolderList& folders,
                                                        const ClientSession& session) const;

  // May the wizard offer to create a folder. Sheet.
  [[nodiscard]] virtual bool CanCreateFolder() const;

  // Creates the folder `name` under `parent` and fills *created. On failure *created is as it was.
  // Sheet.
  virtual ResultCode CreateFolder(const std::wstring& name, const MailFolderRef& parent,
                                  const ClientSession& session, MailFolderRef* created) const;

  // Adds the addresses the person has written to, and the person's contacts, to *addresses. Polls
  // callbacks->isCancelled and then returns 0 early. `callbacks` may be null. Worker.
  virtual ResultCode CollectSentAddresses(AddressSet* addresses, const ClientSession& session,
                                          const ProgressCallbacks* callbacks) const;

  // The same for the silent harvest of all clients: nobody is waiting, so nothing is counted ahead
  // and no progress is reported. What the base class does is CollectSentAddresses without
  // callbacks. Harvest thread.
  virtual ResultCode HarvestAddresses(AddressSet* addresses, const ClientSession& session) const;

  // Reads the id of the client's store as it is now, for the clients whose folder ids are local
  // numbers. False if it can't be read. Sheet.
  virtual bool ReadStoreId(std::string* storeId) const;

  // Tells the client to move spam itself, or not. Sheet; blocks until the client has answered or
  // the time is over.
  virtual void SetMoveMails(bool move) const;

  // Makes what holds the client for the life of a wizard, not connected yet. Null for clients that
  // need no holding, as with the base class. Sheet.
  [[nodiscard]] virtual std::unique_ptr<ClientHold> MakeHold() const;
};

}  // namespace postmarker
