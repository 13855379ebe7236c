// Windows Live Mail: the operations on the client, and the adapter that the wizard calls.
#pragma once

#include "clients/MailClientAdapter.h"

namespace postmarker {

namespace livemail {

// Each operation asks the suite's module inside the client and, only if that is not there or
// `useHook` is false, reads the client's store. A module that is there and can't be reached has no
// folders and no addresses. Nothing is kept between operations. Any thread.

// Appends the client's folders in display order to *folders. Always 0.
ResultCode ListFolders(bool useHook, const StopQuery& stop, MailFolderList* folders);

// Always 0: the wizard offers no new folder for this client.
ResultCode CanCreateFolder();

// Lets the module create a folder; the store is never written. On failure *created is as it was.
ResultCode CreateFolder(bool useHook, const MailFolderRef& parent, const std::wstring& name,
                        MailFolderRef* created);

// Adds the addresses that the person has written to. Reports one step. Asks session.stop and
// callbacks->isCancelled at the start, where a yes adds nothing, and from then on at least every
// hundred messages; what was read by then is added. `callbacks` may be null. Always 0.
ResultCode CollectSentAddresses(bool useHook, const ClientSession& session,
                                const ProgressCallbacks* callbacks, AddressSet* addresses);

// Adds the person's contacts, which only the module knows. Asks the same. Always 0.
ResultCode CollectContacts(bool useHook, const ClientSession& session,
                           const ProgressCallbacks* callbacks, AddressSet* addresses);

// Both, one after the other, with the module.
ResultCode CollectAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                            AddressSet* addresses);

}  // namespace livemail

// The client as the wizard sees it.
class LiveMailAdapter : public MailClientAdapter {
 public:
  void ListFolders(const ClientSession& session, MailFolderList* folders) const override;

  // The last folder of the list whose id is the number of the deleted items.
  [[nodiscard]] MailFolderRef FindDefaultFolder(const ClientSession& session,
                                                const MailFolderList& folders) const override;

  // Always false.
  [[nodiscard]] bool CanCreateFolder() const override;

  ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override;

  ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const override;

  bool ReadStoreId(std::string* storeId) const override;
};

}  // namespace postmarker
