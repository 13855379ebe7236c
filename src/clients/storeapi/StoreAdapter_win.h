// Outlook Express and Windows Mail: the operations on the store that both share, and the adapter
// that the wizard calls. The suite's module inside the client is asked first where `useHook` says
// so; only if it is not there, the store is opened. Each operation opens the store for itself, in
// an apartment of its own, and keeps nothing.
#pragma once

#include <string>

#include "clients/MailClientAdapter.h"
#include "clients/storeapi/StoreFolderTree.h"
#include "clients/storeapi/StoreLocation.h"

namespace postmarker {

namespace storeapi {

// Appends the folders of the store, the root first, and replaces *text by what the module says
// ahead of them. `stop` is asked at each folder, and may be empty.
void ListStoreFolders(const StopQuery& stop, bool useHook, MailFolderList* folders,
                      std::wstring* text);

// The first folder of a kind. kFail if the store has none; the code of the store if it can't be
// opened; 0 and an empty record if the module knows none. On failure *folder is as it was.
ResultCode GetStoreSpecialFolder(StoreFolderKind kind, const StopQuery& stop, bool useHook,
                                 MailFolderRef* folder);

// Makes a folder called `name`, bytes of the code page, below `parent`. `store` is the opened store
// as an IStoreNamespace behind any of its interfaces, or null to open it. An empty record from the
// module is a failure. On failure *created is as it was.
ResultCode CreateStoreFolder(const MailFolderRef& parent, IUnknown* store, const std::string& name,
                             bool useHook, MailFolderRef* created);

// Adds the recipients of the messages in the sent folder. Reports the number of messages and each
// of them, and asks `isCancelled` and session.stop before each. Stopped, the result is 0; otherwise
// it is the code with which the store could not be opened. `callbacks` may be null.
ResultCode CollectStoreSentAddresses(const ClientSession& session,
                                     const ProgressCallbacks* callbacks, bool useHook,
                                     AddressSet* addresses);

// Adds the addresses in Windows Contacts and in the address book file, both as far as they are
// there.
void CollectStoreContacts(const StopQuery& stop, bool useHook, AddressSet* addresses);

}  // namespace storeapi

// One of the two clients as the wizard sees it. They differ in where their store has its id.
class StoreAdapter : public MailClientAdapter {
 public:
  explicit StoreAdapter(storeapi::StoreClient client) : m_client(client) {}

  void ListFolders(const ClientSession& session, MailFolderList* folders) const override;

  // The store's deleted items folder.
  [[nodiscard]] MailFolderRef FindDefaultFolder(const ClientSession& session,
                                                const MailFolderList& folders) const override;

  // Characters of the name that the code page lacks become "?", as the store's names are bytes.
  ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override;

  // Sent mail first, then the contacts, which need no store.
  ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const override;

  bool ReadStoreId(std::string* storeId) const override;

 private:
  storeapi::StoreClient m_client;
};

}  // namespace postmarker
