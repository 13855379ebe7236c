// IncrediMail: the operations on its store, and the adapter that the wizard calls.
// Each operation reads the registry and the store and keeps nothing; all of them may be
// called from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "clients/MailClientAdapter.h"
#include "clients/incredimail/ImContainerMap.h"

namespace postmarker {

namespace incredimail {

// Reads the whole folder tree of one identity, from its database or its older store, with paths and
// with the special folders' names in the identity's language. Every path begins with two
// backslashes and the identity's display name, or the client's if it has none. A store that can't
// be read gives an empty tree. A failure means that the names could not be read; the tree then
// stands with the names of the store. `stop` may be empty, and is asked while a database is read;
// a yes leaves the tree with what was read.
ResultCode ReadContainers(const std::wstring& identityName, const std::wstring& identityDirectory,
                          uint32_t language, const StopQuery& stop, ImContainerMap* containers);

// Appends the folders of the identity with this name, whatever its case, or of all identities for
// an empty name. `stop` may be empty, and is asked before each identity and while its folders are
// read; of an identity whose reading it ends none is appended. Always 0.
ResultCode ListFolders(const std::wstring& identityFilter, const StopQuery& stop,
                       MailFolderList* folders);

// Always 0: the client does not notice a new folder while it runs, so none is offered.
ResultCode CanCreateFolder();

// Adds a folder called `label` under `parent`, a folder of ListFolders. On failure nothing is
// changed, neither in the store nor in *created.
ResultCode CreateFolder(const std::wstring& label, const MailFolderRef& parent,
                        MailFolderRef* created);

// The id of the root's child with this IndexInParent, of the first identity of the filter that has
// one; empty if none has. 0 is the inbox and 3 the deleted items.
ResultCode FindWellKnownContainer(uint32_t index, const std::wstring& identityFilter,
                                  std::wstring* id);

// Adds the recipients of the sent mail of all identities, in lower case, one by one. Reports one
// step. Asks session.stop and callbacks->isCancelled at the start, where a yes adds nothing, after
// every hundred rows and between two messages; a yes there ends the reading, and what was read by
// then is added. `callbacks` may be null. Always 0.
ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                AddressSet* addresses);

// Adds the entries of the address books of all identities. Asks the same after every hundred
// entries. Always 0.
ResultCode CollectContacts(const ClientSession& session, const ProgressCallbacks* callbacks,
                           AddressSet* addresses);

// Both, one after the other. The contacts are read also if the user has stopped the other, until
// they look for themselves: most address books are small.
ResultCode CollectAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                            AddressSet* addresses);

}  // namespace incredimail

// The client as the wizard sees it.
class IncrediMailAdapter : public MailClientAdapter {
 public:
  // The folders of the identity that the client starts with; of all if there is none such.
  void ListFolders(const ClientSession& session, MailFolderList* folders) const override;

  // Always false.
  [[nodiscard]] bool CanCreateFolder() const override;

  ResultCode CreateFolder(const ClientSession& session, const std::wstring& name,
                          const MailFolderRef& parent, MailFolderRef* created) const override;

  ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                  AddressSet* addresses) const override;
};

}  // namespace postmarker
