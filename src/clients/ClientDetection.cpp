#include "clients/ClientDetection.h"

#include "clients/ClientTable.h"

namespace postmarker {
namespace {

constexpr wchar_t kOutlookProfiles[] =
    L"software\\microsoft\\windows nt\\currentversion\\windows messaging subsystem\\profiles";
constexpr size_t kProfileNameRoom = 100;
constexpr size_t kStoreValueRoom = 1024;

// Properties that a service of a profile has if it is a store: its path, in both text forms, and
// the name under which it is shown.
constexpr const wchar_t* kStoreValues[] = {L"001e6700", L"001f6700", L"001f662b"};

constexpr wchar_t kIdentities[] = L"Identities";
constexpr size_t kIdentityNameRoom = 1024;

constexpr wchar_t kWindowsMail[] = L"Software\\Microsoft\\Windows Mail";
constexpr wchar_t kOutlookExpressVersion[] = L"Software\\Microsoft\\Outlook Express\\Version Info";

// The last version of winmail.exe that is still a mail client: later ones are empty shells.
constexpr wchar_t kLastWindowsMail[] = L"6.0.9999.";

std::wstring Below(std::wstring_view path, std::wstring_view name) {
  return std::wstring(path).append(L"\\").append(name);
}

// After the first system with Windows Mail came those that have it no more.
bool IsLateWindows(PlatformVersion version) {
  return version.major >= 7 || (version.major == 6 && version.minor != 0);
}

bool IsStore(const MachineView& machine, const std::wstring& service) {
  for (const wchar_t* name : kStoreValues) {
    if (machine.HasValue(RegistryRoot::kUser, service, name, kStoreValueRoom)) {
      return true;
    }
  }
  return false;
}

// Setup writes "null" where it knows nothing.
std::wstring ReadVersion(const MachineView& machine, const wchar_t* path, const wchar_t* name) {
  const auto text = machine.ReadText(RegistryRoot::kMachine, path, name, RegistryView::kDefault);
  return text && *text != L"null" ? *text : std::wstring();
}

bool HasUsableWinMail(const MachineView& machine) {
  const auto root = GetMailInstallRoot(machine);
  const auto version = root ? machine.FileVersionText(*root + L"\\winmail.exe") : std::nullopt;
  // Deliberate: compared as texts, which refuses 6.1 and all later versions of one digit. A version
  // of two digits, such as 10.0, sorts before the limit and passes.
  return version && version->compare(kLastWindowsMail) <= 0;
}

}  // namespace

bool IsClientInstalled(std::wstring_view displayName, const MachineView& machine) {
  const auto& isInstalled = FindClient(displayName)->isInstalled;
  return isInstalled && isInstalled(machine);
}

bool IsClientSupported(std::wstring_view displayName, const MachineView& machine) {
  const auto& isSupported = FindClient(displayName)->isSupported;
  return !isSupported || isSupported(machine);
}

bool IsClientReady(std::wstring_view displayName, const MachineView& machine) {
  const auto& isReady = FindClient(displayName)->isReady;
  return !isReady || isReady(machine);
}

bool IsOutlookConfigured(const MachineView& machine) {
  for (const auto& profile :
       machine.SubkeyNames(RegistryRoot::kUser, kOutlookProfiles, kProfileNameRoom)) {
    const std::wstring path = Below(kOutlookProfiles, profile);
    for (const auto& service : machine.SubkeyNames(RegistryRoot::kUser, path, kProfileNameRoom)) {
      if (IsStore(machine, Below(path, service))) {
        return true;
      }
    }
  }
  return false;
}

std::optional<std::wstring> GetMailInstallRoot(const MachineView& machine) {
  const auto text =
      machine.ReadText(RegistryRoot::kMachine, kWindowsMail, L"InstallRoot", RegistryView::kSuite);
  return text ? machine.Expand(*text) : std::nullopt;
}

bool HasMailIdentity(const MachineView& machine) {
  for (const auto& identity :
       machine.SubkeyNames(RegistryRoot::kUser, kIdentities, kIdentityNameRoom)) {
    if (machine.HasKey(RegistryRoot::kUser, Below(kIdentities, identity) +
                                                L"\\software\\microsoft\\outlook express\\5.0")) {
      return true;
    }
  }
  return machine.HasValue(RegistryRoot::kUser, kWindowsMail, L"WinMail", sizeof(uint32_t));
}

MailStoreVersion GetMailStoreVersion(const MachineView& machine) {
  const std::wstring current = ReadVersion(machine, kOutlookExpressVersion, L"Current");
  if (!current.empty()) {
    return {current.front(), true};
  }
  if (!ReadVersion(machine, kWindowsMail, L"MediaVer").empty()) {
    return {L'7', true};
  }
  return {};
}

bool IsWindowsMailSupported(const MachineView& machine) {
  const bool isThere = IsLateWindows(machine.Version())
                           ? HasUsableWinMail(machine)
                           : GetMailStoreVersion(machine).digit >= L'7';
  return isThere && HasMailIdentity(machine);
}

bool IsOutlookExpressSupported(const MachineView& machine) {
  return !IsLateWindows(machine.Version()) && GetMailStoreVersion(machine).digit < L'7' &&
         HasMailIdentity(machine);
}

bool IsWindowsLiveMailSupported(const MachineView& machine) {
  return machine.CanLoadBesideModule(L"WindowsLiveShim.dll");
}

}  // namespace postmarker
