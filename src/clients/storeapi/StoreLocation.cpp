#include "clients/storeapi/StoreLocation.h"

#include "clients/StoreIdSearch.h"

namespace postmarker::storeapi {
namespace {

constexpr wchar_t kIdentities[] = L"Identities";
constexpr wchar_t kWabKey[] = L"Software\\Microsoft\\WAB\\WAB4\\Wab File Name";
constexpr size_t kRootRoom = 1024;

std::wstring ReadUserText(const MachineView& machine, const std::wstring& key,
                          const std::wstring& name) {
  return machine.ReadText(RegistryRoot::kUser, key, name, RegistryView::kDefault)
      .value_or(std::wstring());
}

std::wstring ReadRoot(const MachineView& machine, const std::wstring& key) {
  const auto root = machine.Expand(ReadUserText(machine, key, L"Store Root"));
  return root && root->size() < kRootRoom ? *root : std::wstring();
}

}  // namespace

std::wstring ReadCurrentIdentity(const MachineView& machine) {
  return ReadUserText(machine, kIdentities, L"Last User ID");
}

std::wstring IdentityKey(const std::wstring& identity) {
  return std::wstring(kIdentities)
      .append(L"\\")
      .append(identity)
      .append(L"\\software\\microsoft\\outlook express\\5.0");
}

std::wstring GetStoreRoot(const std::wstring& identity, const MachineView& machine) {
  const std::wstring current = identity.empty() ? ReadCurrentIdentity(machine) : identity;
  std::wstring root;
  if (!current.empty()) {
    root = ReadRoot(machine, IdentityKey(current));
  }
  return root.empty() ? ReadRoot(machine, kWindowsMailKey) : root;
}

std::optional<std::string> ReadMessageStoreId(StoreClient client, const MachineView& machine) {
  std::wstring root = GetStoreRoot({}, machine);
  if (root.empty()) {
    return std::nullopt;  // or the files would be looked for at the top of the current drive
  }
  if (!root.ends_with(L'\\')) {
    root.push_back(L'\\');
  }
  if (client == StoreClient::kOutlookExpress) {
    return ReadDbxStoreId(root + L"Folders.dbx");
  }
  return FindStoreIdInFile(root + L"WindowsMail.MsMessageStore",
                           root + L"Backup\\New\\WindowsMail.MsMessageStore");
}

std::wstring ReadWabPath(const MachineView& machine) {
  return ReadUserText(machine, kWabKey, {});
}

}  // namespace postmarker::storeapi
