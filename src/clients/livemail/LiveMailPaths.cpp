#include "clients/livemail/LiveMailPaths.h"

namespace postmarker::livemail {
namespace {

#if defined(_WIN32)
constexpr wchar_t kSeparator = L'\\';
constexpr wchar_t kSeparators[] = L"\\/";
#else
constexpr wchar_t kSeparator = L'/';
constexpr wchar_t kSeparators[] = L"/";
#endif

constexpr wchar_t kClientKey[] = L"Software\\Microsoft\\Windows Live Mail";
constexpr wchar_t kDatabase[] = L"Mail.MSMessageStore";

// The client is a 32-bit program.
std::optional<std::wstring> ReadRoot(const MachineView& machine, RegistryRoot root,
                                     const wchar_t* name) {
  const auto text = machine.ReadText(root, kClientKey, name, RegistryView::k32Bit);
  return text ? machine.Expand(*text) : std::nullopt;
}

// The store root with a separator at its end. An empty one is none: it would be the root of
// whatever drive is the current one.
std::wstring StoreFolder(const MachineView& machine) {
  std::wstring root = FindStoreRoot(machine).value_or(std::wstring());
  if (!root.empty() && root.back() != kSeparator) {
    root.push_back(kSeparator);
  }
  return root;
}

}  // namespace

std::optional<std::wstring> FindInstallRoot(const MachineView& machine) {
  return ReadRoot(machine, RegistryRoot::kMachine, L"InstallRoot");
}

std::optional<std::wstring> FindStoreRoot(const MachineView& machine) {
  return ReadRoot(machine, RegistryRoot::kUser, L"Store Root");
}

bool IsWindowsLiveMailInstalled(const MachineView& machine) {
  const std::optional<std::wstring> root = FindInstallRoot(machine);
  return root && !root->empty();
}

std::wstring LiveDatabasePath(const MachineView& machine) {
  const std::wstring folder = StoreFolder(machine);
  return folder.empty() ? folder : folder + kDatabase;
}

std::wstring BackupDatabasePath(const MachineView& machine) {
  const std::wstring folder = StoreFolder(machine);
  return folder.empty() ? folder
                        : folder + L"Backup" + kSeparator + L"New" + kSeparator + kDatabase;
}

std::wstring StoreRootOf(std::wstring_view databasePath) {
  return std::wstring(databasePath.substr(0, databasePath.find_last_of(kSeparators) + 1));
}

}  // namespace postmarker::livemail
