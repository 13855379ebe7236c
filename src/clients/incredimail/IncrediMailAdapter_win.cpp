#include "clients/incredimail/IncrediMailAdapter_win.h"

#include <objbase.h>

#include <exception>
#include <vector>

#include "clients/Cancel.h"
#include "clients/incredimail/ImAddressFile.h"
#include "clients/incredimail/ImClientWindows_win.h"
#include "clients/incredimail/ImFolderNames_win.h"
#include "clients/incredimail/ImFolderTree.h"
#include "clients/incredimail/ImIdentity_win.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSentMail.h"
#include "clients/incredimail/ImStore.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker {
namespace incredimail {
namespace {

constexpr wchar_t kNamelessIdentity[] = L"IncrediMail";
constexpr int kGuidRoom = 39;  // braces and terminator included

std::wstring RootLabel(const std::wstring& identityName) {
  const std::wstring name = ReadIdentityDisplayName(identityName);
  return L"\\\\" + (name.empty() ? kNamelessIdentity : name);
}

std::wstring NewGuid() {
  GUID guid = {};
  wchar_t text[kGuidRoom] = {};
  if (FAILED(::CoCreateGuid(&guid)) || ::StringFromGUID2(guid, text, kGuidRoom) == 0) {
    return {};
  }
  return text;
}

// Deliberate: the name is looked for in the current directory of the process and not among the
// store's files, which have names of the client's own making.
std::wstring FreeFileName(const std::wstring& label) {
  std::wstring name = label.substr(0, label.find(L'\0'));  // a path ends there as well
  while (CanOpenForReading(name + L".imm")) {
    name += L'1';
  }
  return name;
}

}  // namespace

ResultCode ReadContainers(const std::wstring& identityName, const std::wstring& identityDirectory,
                          uint32_t language, const StopQuery& stop, ImContainerMap* containers) {
  const std::wstring rootLabel = RootLabel(identityName);
  *containers = ReadStoredContainers(identityDirectory, rootLabel, stop);
  ResultCode result = kOk;
  if (language != kEnglish) {
    std::vector<std::wstring> names;
    result = ReadLocalisedFolderNames(language, &names);
    if (Succeeded(result)) {
      LocalizeLabels(containers, names);
    }
  }
  FillPaths(containers, rootLabel);
  return result;
}

ResultCode ListFolders(const std::wstring& identityFilter, const StopQuery& stop,
                       MailFolderList* folders) {
  for (ImIdentityWalker walker; Succeeded(walker.Status()) && !ShouldStop(stop); walker.Next()) {
    if (!PassesFilter(walker.Name(), identityFilter)) {
      continue;
    }
    ImContainerMap containers;
    ReadContainers(walker.Name(), walker.Path(), walker.Language(), stop, &containers);
    if (!ShouldStop(stop)) {
      AppendFolders(containers, walker.Name(), folders);
    }
  }
  return kOk;
}

// Deliberate: the answer is the same with and without a database. The walk is what a client that
// takes new folders would be told apart by.
ResultCode CanCreateFolder() {
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    if (CanOpenForReading(ContainersDatabasePath(walker.Path()))) {
      return 0;
    }
  }
  return 0;
}

ResultCode CreateFolder(const std::wstring& label, const MailFolderRef& parent,
                        MailFolderRef* created) {
  ImNewFolder folder;
  folder.label = label;
  folder.fileName = FreeFileName(label);
  folder.id = NewGuid();
  folder.parentId = Widen(parent.firstId);
  if (folder.id.empty() || !CanBeAdded(folder)) {
    return kFail;
  }
  const std::wstring identity = Widen(parent.secondId);
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    const std::wstring database = ContainersDatabasePath(walker.Path());
    if (!EqualNoCase(walker.Name(), identity) || !CanOpenForReading(database)) {
      continue;
    }
    folder.index = CountChildren(ReadContainerRows(database), folder.parentId);
    if (!AddFolder(database, folder)) {
      continue;
    }
    created->name = parent.name + L"\\" + label;
    created->firstId = Narrow(folder.id);
    created->secondId = parent.secondId;
    created->flag = parent.flag;
    LocateClientFolderTree();
    return kOk;
  }
  return kFail;
}

ResultCode FindWellKnownContainer(uint32_t index, const std::wstring& identityFilter,
                                  std::wstring* id) {
  id->clear();
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    if (!PassesFilter(walker.Name(), identityFilter)) {
      continue;
    }
    ImContainerMap containers;
    ReadContainers(walker.Name(), walker.Path(), walker.Language(), {}, &containers);
    *id = FindRootChild(containers, index);
    if (!id->empty()) {
      break;
    }
  }
  return kOk;
}

ResultCode CollectSentAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                                AddressSet* addresses) {
  if (CanReport(callbacks) && callbacks->setProgress != nullptr) {
    callbacks->setProgress(callbacks->handle, L"", 1);
  }
  PacedStop stop(StopOrCancel(session, callbacks));
  if (stop.Look()) {
    return kOk;
  }
  ImAddressCollector collector;
  for (ImIdentityWalker walker; Succeeded(walker.Status()) && !stop.IsStopped(); walker.Next()) {
    CollectSentOf(walker.Path(), &stop, &collector);
    (void)stop.LookAfterStep();
  }
  collector.AddTo(addresses);
  if (!stop.IsStopped() && CanReport(callbacks) && callbacks->increaseProgress != nullptr) {
    callbacks->increaseProgress(callbacks->handle, 1);
  }
  return kOk;
}

ResultCode CollectContacts(const ClientSession& session, const ProgressCallbacks* callbacks,
                           AddressSet* addresses) {
  PacedStop stop(StopOrCancel(session, callbacks));
  for (ImIdentityWalker walker; Succeeded(walker.Status()) && !stop.IsStopped(); walker.Next()) {
    CollectContactsOf(walker.Path(), &stop, addresses);
    (void)stop.LookAfterStep();
  }
  return kOk;
}

ResultCode CollectAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                            AddressSet* addresses) {
  CollectSentAddresses(session, callbacks, addresses);
  return CollectContacts(session, callbacks, addresses);
}

}  // namespace incredimail

// A store larger than memory ends the reading and nothing else.
void IncrediMailAdapter::ListFolders(const ClientSession& session, MailFolderList* folders) const {
  try {
    incredimail::ListFolders(incredimail::GetDefaultIdentityName(), session.stop, folders);
  } catch (const std::exception&) {
    return;
  }
}

bool IncrediMailAdapter::CanCreateFolder() const {
  return incredimail::CanCreateFolder() != 0;
}

ResultCode IncrediMailAdapter::CreateFolder(const ClientSession& /*session*/,
                                            const std::wstring& name, const MailFolderRef& parent,
                                            MailFolderRef* created) const {
  try {
    return incredimail::CreateFolder(name, parent, created);
  } catch (const std::exception&) {
    return kFail;
  }
}

ResultCode IncrediMailAdapter::CollectSentAddresses(const ClientSession& session,
                                                    const ProgressCallbacks* callbacks,
                                                    AddressSet* addresses) const {
  try {
    return incredimail::CollectAddresses(session, callbacks, addresses);
  } catch (const std::exception&) {
    return kFail;
  }
}

}  // namespace postmarker
