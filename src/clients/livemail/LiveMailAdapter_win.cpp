#include "clients/livemail/LiveMailAdapter_win.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "clients/Cancel.h"
#include "clients/livemail/LiveMailPaths.h"
#include "clients/livemail/LiveStore.h"
#include "clients/livemail/LiveStoreId.h"
#include "ipc/HookConnection_win.h"

namespace postmarker {
namespace livemail {
namespace {

constexpr wchar_t kHookModule[] = L"WindowsLiveShim.dll";

}  // namespace

ResultCode ListFolders(bool useHook, const StopQuery& stop, MailFolderList* folders) {
  const auto ask = [folders](HookConnection& hook) {
    std::wstring text;
    return OutcomeOf(hook.ListFolders(&text, folders));
  };
  const auto read = [&] {
    ListStoreFolders(LiveDatabasePath(), stop, folders);
    return kOk;
  };
  return HookFirst(useHook, kHookModule, ask, read, {}, stop);
}

ResultCode CanCreateFolder() {
  return 0;
}

ResultCode CreateFolder(bool useHook, const MailFolderRef& parent, const std::wstring& name,
                        MailFolderRef* created) {
  const auto ask = [&](HookConnection& hook) {
    MailFolderRef folder;
    if (Failed(hook.MakeFolder(name, parent, &folder)) || folder.firstId.empty()) {
      return HookOutcome::kFailed;
    }
    *created = std::move(folder);
    return HookOutcome::kDone;
  };
  return HookFirst(useHook, kHookModule, ask, [] { return kFail; });
}

ResultCode CollectSentAddresses(bool useHook, const ClientSession& session,
                                const ProgressCallbacks* callbacks, AddressSet* addresses) {
  if (CanReport(callbacks) && callbacks->setProgress != nullptr) {
    callbacks->setProgress(callbacks->handle, L"", 1);
  }
  const StopQuery query = StopOrCancel(session, callbacks);
  PacedStop stop(query);
  if (stop.Look()) {
    return kOk;
  }
  const auto ask = [addresses](HookConnection& hook) {
    return OutcomeOf(hook.ListSentAddresses(addresses));
  };
  const auto read = [&] {
    CollectStoreAddresses(LiveDatabasePath(), &stop, addresses);
    return kOk;
  };
  HookFirst(useHook, kHookModule, ask, read, {}, query);
  if (!stop.IsStopped() && CanReport(callbacks) && callbacks->increaseProgress != nullptr) {
    callbacks->increaseProgress(callbacks->handle, 1);
  }
  return kOk;
}

ResultCode CollectContacts(bool useHook, const ClientSession& session,
                           const ProgressCallbacks* callbacks, AddressSet* addresses) {
  const auto ask = [addresses](HookConnection& hook) {
    return OutcomeOf(hook.ListContacts(addresses));
  };
  return HookFirst(
      useHook, kHookModule, ask, [] { return kOk; }, {}, StopOrCancel(session, callbacks));
}

ResultCode CollectAddresses(const ClientSession& session, const ProgressCallbacks* callbacks,
                            AddressSet* addresses) {
  CollectSentAddresses(true, session, callbacks, addresses);
  return CollectContacts(true, session, callbacks, addresses);
}

}  // namespace livemail

// A store larger than memory ends the reading and nothing else.
void LiveMailAdapter::ListFolders(const ClientSession& session, MailFolderList* folders) const {
  try {
    livemail::ListFolders(true, session.stop, folders);
  } catch (const std::exception&) {
    return;
  }
}

MailFolderRef LiveMailAdapter::FindDefaultFolder(const ClientSession& /*session*/,
                                                 const MailFolderList& folders) const {
  // Deliberate: the number of the purpose is looked for among the ids, since a list tells no
  // purposes.
  const std::string id = std::to_string(livemail::SpecialDeleted);
  const auto found = std::find_if(folders.rbegin(), folders.rend(),
                                  [&id](const auto& folder) { return folder.firstId == id; });
  return found == folders.rend() ? MailFolderRef() : *found;
}

bool LiveMailAdapter::CanCreateFolder() const {
  return livemail::CanCreateFolder() != 0;
}

ResultCode LiveMailAdapter::CreateFolder(const ClientSession& /*session*/, const std::wstring& name,
                                         const MailFolderRef& parent,
                                         MailFolderRef* created) const {
  try {
    return livemail::CreateFolder(true, parent, name, created);
  } catch (const std::exception&) {
    return kFail;
  }
}

ResultCode LiveMailAdapter::CollectSentAddresses(const ClientSession& session,
                                                 const ProgressCallbacks* callbacks,
                                                 AddressSet* addresses) const {
  try {
    return livemail::CollectAddresses(session, callbacks, addresses);
  } catch (const std::exception&) {
    return kFail;
  }
}

bool LiveMailAdapter::ReadStoreId(std::string* storeId) const {
  try {
    std::optional<std::string> id = livemail::ReadLiveMessageStoreId(
        livemail::LiveDatabasePath(), livemail::BackupDatabasePath());
    if (!id) {
      return false;
    }
    *storeId = *std::move(id);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace postmarker
