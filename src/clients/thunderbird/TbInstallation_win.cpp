#include "clients/thunderbird/TbInstallation_win.h"

#include <windows.h>

#include <shlobj.h>

#include <array>

#include "clients/thunderbird/TbIniFile.h"
#include "support/MappedFile.h"
#include "support/Registry_win.h"

namespace postmarker::thunderbird {
namespace {

constexpr wchar_t kProgramKey[] = L"Software\\Mozilla\\Mozilla Thunderbird";

constexpr REGSAM kReadAndWrite = 0x2001F;
constexpr DWORD kTextRoom = 260;
constexpr DWORD kExpandedRoom = 1024;
constexpr size_t kMaxExtensionPathChars = 259;

std::optional<std::wstring> ReadProgramText(const MachineView& machine, const std::wstring& key,
                                            const wchar_t* name) {
  return machine.ReadText(RegistryRoot::kMachine, key, name, RegistryView::k32Bit);
}

// What the registry has for the extension, with its environment variables put in.
std::optional<std::wstring> RegisteredExtension() {
  const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, kExtensionsKey, kReadAndWrite);
  std::array<wchar_t, kTextRoom + 1> value = {};  // one for a terminator that may be missing
  DWORD type = 0;
  DWORD size = kTextRoom * sizeof(wchar_t);
  if (!key ||
      ::RegQueryValueExW(key.Get(), kExtensionId, nullptr, &type,
                         reinterpret_cast<BYTE*>(value.data()), &size) != ERROR_SUCCESS ||
      (type != REG_SZ && type != REG_EXPAND_SZ)) {
    return std::nullopt;
  }
  std::array<wchar_t, kExpandedRoom> expanded = {};
  const DWORD needed = ::ExpandEnvironmentStringsW(value.data(), expanded.data(), kExpandedRoom);
  if (needed == 0 || needed > kExpandedRoom) {
    return std::nullopt;
  }
  return std::wstring(expanded.data()).substr(0, kMaxExtensionPathChars);
}

}  // namespace

std::optional<std::wstring> ApplicationDataFolder() {
  std::array<wchar_t, MAX_PATH> folder = {};
  const HRESULT result =
      ::SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder.data());
  return SUCCEEDED(result) ? std::optional(folder.data()) : std::nullopt;
}

std::wstring GetThunderbirdExePath(const MachineView& machine) {
  const auto version = ReadProgramText(machine, kProgramKey, L"CurrentVersion");
  if (!version) {
    return {};
  }
  const std::wstring main = std::wstring(kProgramKey) + L"\\" + *version + L"\\Main";
  return ReadProgramText(machine, main, L"PathToExe").value_or(std::wstring());
}

ResultCode GetThunderbirdProfilePath(std::wstring* path) {
  path->clear();
  const auto applicationData = ApplicationDataFolder();
  if (!applicationData) {
    return kFail;
  }
  const MappedFile profiles(*applicationData + L"\\Thunderbird\\profiles.ini", 1);
  auto profile = FindDefaultProfile(profiles.Bytes(), *applicationData);
  if (!profile) {
    return kFail;
  }
  *path = std::move(*profile);
  return kOk;
}

bool IsThunderbirdExtensionInstalled() {
  std::wstring profile;
  if (Failed(GetThunderbirdProfilePath(&profile))) {
    return false;
  }
  const auto extension = RegisteredExtension();
  if (!extension) {
    return false;
  }
  const MappedFile extensions(profile + L"\\extensions.ini", 1);
  return HasLineWith(extensions.Bytes(), *extension);
}

}  // namespace postmarker::thunderbird
