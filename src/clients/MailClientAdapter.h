// What the wizard asks of a mail client.
#pragma once

#include <memory>
#include <string>

#include "postmarker/MailFolderRef.h"
#include "postmarker/ProgressCallbacks.h"
#include "postmarker/WizardRequest.h"
#include "support/Results.h"
#include "support/StopQuery.h"

namespace postmarker {

// What an adapter needs from above for one operation. Made for one thread; it is used and destroyed
// on that thread, while the thread is in the apartment in which the session was made.
struct ClientSession {
  // Outlook's application object as the thread may call it; null if there is none.
  std::shared_ptr<IUnknown> outlookApplication;

  // Asks whether the operation is to end early. For listing and harvesting, and beside
  // `isCancelled` of the callbacks where an operation has both.
  StopQuery stop;
};

// What a client needs for the life of a wizard: a program that is kept running, a logon. The sheet
// holds it; a worker that calls the adapter shares it, and may outlive the sheet. Nothing in it
// throws.
class ClientHold {
 public:
  ClientHold() = default;
  ClientHold(const ClientHold&) = delete;
  ClientHold& operator=(const ClientHold&) = delete;
  virtual ~ClientHold() = default;

  // Gets hold of the client before its folders are read, and starts it if need be; blocks until
  // that is done or the time is over. May be called again. Sheet.
  virtual void Connect() = 0;

  // Makes sure that what a single operation of the sheet can't do without is there; 0 if it is. The
  // base class needs nothing. Sheet.
  virtual ResultCode EnsureSession();

  // A session for the calling thread, with everything in it that the thread can have; after
  // Disconnect it is empty, as it is with the base class. Any thread, which must be in an
  // apartment.
  [[nodiscard]] virtual ClientSession OpenSession();

  // Lets the client go; one that was started for this is told to exit. A second call does nothing.
  // Sheet, in whose apartment it must still be; the destructor may run on any thread afterwards.
  virtual void Disconnect() = 0;
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
  virtual void ListFolders(const ClientSession& session, MailFolderList* folders) const;

  // The client's deleted items folder, an empty record if it has none that the wizard knows.
  // `folders` is the client's whole list. Worker, or sheet.
  [[nodiscard]] virtual MailFolderRef FindDefaultFolder(const ClientSession& session,
                                                        const MailFolderList& folders) const;

  // May the wizard offer to create a folder. Sheet.
  [[nodiscard]] virtual bool CanCreateFolder() const;

  // Creates the folder `name` under `parent` and fills *created. On failure *created is as it was.
  // Sheet.
  virtual ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                                  const MailFolderRef& parent, MailFolderRef* created) const;

  // Adds the addresses the person has written to, and the person's contacts, to *addresses. Polls
  // callbacks->isCancelled and then returns 0 early. `callbacks` may be null. Worker.
  virtual ResultCode CollectSentAddresses(const ClientSession& session,
                                          const ProgressCallbacks* callbacks,
                                          AddressSet* addresses) const;

  // The same for the silent harvest of all clients: nobody is waiting, so nothing is counted ahead
  // and no progress is reported. What the base class does is CollectSentAddresses without
  // callbacks. Harvest thread, which is in no apartment: an adapter that needs one joins it.
  virtual ResultCode HarvestAddresses(const ClientSession& session, AddressSet* addresses) const;

  // Reads the id of the client's store as it is now, for the clients whose folder ids are local
  // numbers. False if it can't be read. Sheet.
  virtual bool ReadStoreId(std::string* storeId) const;

  // Tells the client to move spam itself, or not. Sheet; blocks until the client has answered or
  // the time is over.
  virtual void SetMoveMails(bool move) const;

  // Makes what the client needs for the life of a wizard, not connected yet. Null for clients that
  // need nothing, as with the base class. `request` is not null and outlives the hold's Disconnect.
  // Sheet.
  [[nodiscard]] virtual std::shared_ptr<ClientHold> MakeHold(WizardRequest* request) const;
};

}  // namespace postmarker
