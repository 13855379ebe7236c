#include "clients/storeapi/StoreAdapter_win.h"

#include <exception>
#include <optional>
#include <utility>

#include "clients/Cancel.h"
#include "clients/storeapi/StoreMessages_win.h"
#include "clients/storeapi/StoreSession_win.h"
#include "clients/storeapi/WabFile.h"
#include "clients/storeapi/WindowsContacts_win.h"
#include "ipc/HookConnection_win.h"
#include "support/Text.h"

namespace postmarker {
namespace storeapi {
namespace {

constexpr wchar_t kHookModule[] = L"StoreShim.dll";

// Opens the store and runs `work`, unless `stop` says otherwise beforehand.
template <class Work>
ResultCode WithStore(const StopQuery& stop, const Work& work) {
  if (ShouldStop(stop)) {
    return kOk;
  }
  const StoreSession session;
  return FAILED(session.Result()) ? session.Result() : work(session.Store());
}

ResultCode FindFolder(StoreFolderKind kind, const StopQuery& stop, MailFolderRef* folder) {
  return WithStore(stop, [&](IStoreNamespace* store) -> ResultCode {
    StoreFolderTree tree;
    const ResultCode result = WalkFolders(store, stop, &tree);
    std::optional<MailFolderRef> found = tree.FindRecord(kind);
    if (!found) {
      return Failed(result) ? result : kFail;
    }
    *folder = std::move(*found);
    return kOk;
  });
}

ResultCode CreateIn(IStoreNamespace* store, const MailFolderRef& parent, const std::string& name,
                    MailFolderRef* created) {
  FolderId id = 0;
  const HRESULT result = store->CreateFolder(ParseFolderId(parent.firstId), name.c_str(), 0, &id);
  if (SUCCEEDED(result)) {
    *created = {parent.name + L"\\" + Widen(name), FolderIdText(id), parent.secondId, parent.flag};
  }
  return result;
}

ResultCode CreateInStore(IUnknown* store, const MailFolderRef& parent, const std::string& name,
                         MailFolderRef* created) {
  if (store == nullptr) {
    return WithStore(
        {}, [&](IStoreNamespace* opened) { return CreateIn(opened, parent, name, created); });
  }
  ComPtr<IStoreNamespace> opened;
  const HRESULT result = store->QueryInterface(kStoreNamespaceId, opened.PutVoid());
  if (FAILED(result) || !opened) {
    return FAILED(result) ? result : E_NOINTERFACE;
  }
  return CreateIn(opened.Get(), parent, name, created);
}

}  // namespace

void ListStoreFolders(const StopQuery& stop, bool useHook, MailFolderList* folders,
                      std::wstring* text) {
  const auto ask = [&](HookConnection& hook) { return OutcomeOf(hook.ListFolders(text, folders)); };
  const auto readStore = [&] {
    return WithStore(stop, [&](IStoreNamespace* store) -> ResultCode {
      StoreFolderTree tree;
      const ResultCode result = WalkFolders(store, stop, &tree);
      tree.AppendRecords(folders);
      return result;
    });
  };
  (void)HookFirst(useHook, kHookModule, ask, readStore, {}, stop);
}

ResultCode GetStoreSpecialFolder(StoreFolderKind kind, const StopQuery& stop, bool useHook,
                                 MailFolderRef* folder) {
  const auto ask = [&](HookConnection& hook) {
    MailFolderRef answer;
    const HookOutcome outcome = OutcomeOf(hook.LookUpFolder(static_cast<uint32_t>(kind), &answer));
    if (outcome == HookOutcome::kDone) {
      *folder = std::move(answer);
    }
    return outcome;
  };
  return HookFirst(
      useHook, kHookModule, ask, [&] { return FindFolder(kind, stop, folder); }, {}, stop);
}

ResultCode CreateStoreFolder(const MailFolderRef& parent, IUnknown* store, const std::string& name,
                             bool useHook, MailFolderRef* created) {
  const auto ask = [&](HookConnection& hook) {
    MailFolderRef answer;
    if (Failed(hook.MakeFolder(Widen(name), parent, &answer))) {
      return HookOutcome::kAskStore;
    }
    if (answer == MailFolderRef()) {
      return HookOutcome::kFailed;
    }
    *created = std::move(answer);
    return HookOutcome::kDone;
  };
  return HookFirst(useHook, kHookModule, ask,
                   [&] { return CreateInStore(store, parent, name, created); });
}

ResultCode CollectStoreSentAddresses(const ClientSession& session,
                                     const ProgressCallbacks* callbacks, bool useHook,
                                     AddressSet* addresses) {
  const StopQuery stop = StopOrCancel(session, callbacks);
  const auto ask = [&](HookConnection& hook) {
    return OutcomeOf(hook.ListSentAddresses(addresses));
  };
  const auto readStore = [&] {
    return WithStore(stop, [&](IStoreNamespace* store) -> ResultCode {
      return ReadSentMessages(store, callbacks, stop, addresses);
    });
  };
  return HookFirst(useHook, kHookModule, ask, readStore, {}, stop);
}

void CollectStoreContacts(const StopQuery& stop, bool useHook, AddressSet* addresses) {
  const auto ask = [&](HookConnection& hook) { return OutcomeOf(hook.ListContacts(addresses)); };
  const auto readBooks = [&]() -> ResultCode {
    if (ShouldStop(stop)) {
      return kOk;
    }
    {
      const ComApartment apartment;
      (void)ReadWindowsContacts(stop, addresses);
    }
    // Outside of the apartment: a file on a drive that goes away ends the call here, and no
    // destructor runs.
    ReadWabFile(ThisMachine(), addresses);
    return kOk;
  };
  (void)HookFirst(useHook, kHookModule, ask, readBooks, {}, stop);
}

}  // namespace storeapi

void StoreAdapter::ListFolders(const ClientSession& session, MailFolderList* folders) const {
  try {
    std::wstring ignored;
    storeapi::ListStoreFolders(session.stop, true, folders, &ignored);
  } catch (const std::exception&) {
    return;
  }
}

MailFolderRef StoreAdapter::FindDefaultFolder(const ClientSession& session,
                                              const MailFolderList& /*folders*/) const {
  try {
    MailFolderRef folder;
    (void)storeapi::GetStoreSpecialFolder(storeapi::StoreFolderKind::kDeleted, session.stop, true,
                                          &folder);
    return folder;
  } catch (const std::exception&) {
    return {};
  }
}

ResultCode StoreAdapter::CreateFolder(const ClientSession& /*session*/, const std::wstring& name,
                                      const MailFolderRef& parent, MailFolderRef* created) const {
  try {
    return storeapi::CreateStoreFolder(parent, nullptr, Narrow(name), true, created);
  } catch (const std::exception&) {
    return kFail;
  }
}

ResultCode StoreAdapter::CollectSentAddresses(const ClientSession& session,
                                              const ProgressCallbacks* callbacks,
                                              AddressSet* addresses) const {
  try {
    const ResultCode result =
        storeapi::CollectStoreSentAddresses(session, callbacks, true, addresses);
    storeapi::CollectStoreContacts(StopOrCancel(session, callbacks), true, addresses);
    return result;
  } catch (const std::exception&) {
    return kFail;
  }
}

bool StoreAdapter::ReadStoreId(std::string* storeId) const {
  try {
    std::optional<std::string> id = storeapi::ReadMessageStoreId(m_client, ThisMachine());
    if (id) {
      *storeId = std::move(*id);
    }
    return id.has_value();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace postmarker
