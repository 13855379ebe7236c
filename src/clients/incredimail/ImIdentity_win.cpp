#include "clients/incredimail/ImIdentity_win.h"

#include <optional>

#include "support/Text.h"

namespace postmarker::incredimail {
namespace {

constexpr wchar_t kAppPath[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\IncrediMail.exe";
constexpr wchar_t kClientKey[] = L"Software\\IncrediMail";
constexpr wchar_t kIdentitiesKey[] = L"Software\\IncrediMail\\Identities";

constexpr REGSAM kReadAndWrite = 0x2001F;  // what the client itself asks for
constexpr DWORD kPathRoom = 260 * sizeof(wchar_t);
constexpr DWORD kNameCharacters = 4095;
constexpr DWORD kNameRoom = (kNameCharacters + 1) * sizeof(wchar_t);

REGSAM ClientKeyView() {
  OSVERSIONINFOW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  return ::GetVersionExW(&info) ? KeyViewOf(info.dwMajorVersion, info.dwMinorVersion)
                                : KEY_WOW64_32KEY;
}

std::wstring IdentityKey(const std::wstring& identity) {
  return std::wstring(kIdentitiesKey) + L"\\" + identity;
}

DWORD SubkeyCount(const RegistryKey& key) {
  DWORD count = 0;
  const LSTATUS status = ::RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &count, nullptr,
                                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  return status == ERROR_SUCCESS ? count : 0;
}

// A name that is longer than the room still counts, as far as it was given.
std::optional<std::wstring> SubkeyName(const RegistryKey& key, DWORD index) {
  std::wstring name(kNameCharacters + 1, L'\0');
  auto length = static_cast<DWORD>(name.size());
  const LSTATUS status =
      ::RegEnumKeyExW(key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
  if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) {
    return std::nullopt;
  }
  name.resize(std::wcslen(name.c_str()));
  return name;
}

uint32_t ReadLanguage(const std::wstring& identity) {
  const RegistryKey key = OpenClientKey(HKEY_CURRENT_USER, IdentityKey(identity), KEY_READ);
  return key.ReadDword(L"UILanguage").value_or(kEnglish);
}

ResultCode ReadPath(HKEY root, const wchar_t* keyPath, const wchar_t* name, std::wstring* path) {
  const RegistryKey key = OpenClientKey(root, keyPath, KEY_READ);
  return ReadClientString(key, name, kPathRoom, path) ? kOk : kFail;
}

}  // namespace

REGSAM KeyViewOf(DWORD major, DWORD minor) {
  return major == 5 && minor == 0 ? 0 : KEY_WOW64_32KEY;
}

RegistryKey OpenClientKey(HKEY root, const std::wstring& path, REGSAM access) {
  return RegistryKey::Open(root, path, access | ClientKeyView());
}

bool ReadClientString(const RegistryKey& key, const wchar_t* name, DWORD roomInBytes,
                      std::wstring* value) {
  if (!key) {
    return false;
  }
  std::wstring text(roomInBytes / sizeof(wchar_t), L'\0');
  DWORD type = 0;
  DWORD size = roomInBytes;
  const LSTATUS status = ::RegQueryValueExW(key.Get(), name, nullptr, &type,
                                            reinterpret_cast<BYTE*>(text.data()), &size);
  const bool isString = type == REG_SZ || type == REG_EXPAND_SZ;
  const size_t length = size / sizeof(wchar_t);
  if (status != ERROR_SUCCESS || !isString || size % sizeof(wchar_t) != 0 || length == 0 ||
      text[length - 1] != L'\0') {
    return false;
  }
  *value = text.substr(0, text.find(L'\0'));
  return true;
}

ResultCode FindExecutablePath(std::wstring* path) {
  return ReadPath(HKEY_LOCAL_MACHINE, kAppPath, nullptr, path);
}

ResultCode FindApplicationPath(std::wstring* path) {
  return ReadPath(HKEY_CURRENT_USER, kClientKey, L"ApplicationPath", path);
}

bool IsIncrediMailInstalled() {
  std::wstring path;
  return Succeeded(FindExecutablePath(&path)) && !path.empty();
}

std::wstring ReadIdentityDisplayName(const std::wstring& identity) {
  std::wstring name;
  const RegistryKey key = OpenClientKey(HKEY_CURRENT_USER, IdentityKey(identity), kReadAndWrite);
  ReadClientString(key, L"Identity", kNameRoom, &name);
  return name;
}

ImIdentityWalker::ImIdentityWalker() {
  std::wstring applicationPath;
  m_status = FindApplicationPath(&applicationPath);
  if (Failed(m_status)) {
    return;
  }
  m_identitiesDir = applicationPath + L"\\Identities\\";
  ListIdentities();
  m_status = m_identities.empty() ? kFail : kOk;
}

void ImIdentityWalker::ListIdentities() {
  const RegistryKey key = OpenClientKey(HKEY_CURRENT_USER, kIdentitiesKey, kReadAndWrite);
  if (!key) {
    return;
  }
  std::wstring defaultName;
  ReadClientString(key, nullptr, kNameRoom, &defaultName);
  const DWORD count = SubkeyCount(key);
  for (DWORD index = 0; index < count; ++index) {
    std::optional<std::wstring> name = SubkeyName(key, index);
    if (!name) {
      continue;
    }
    ImIdentity identity;
    identity.UILanguage = ReadLanguage(*name);
    identity.IsDefault = *name == defaultName ? 1 : 0;
    identity.Name = std::move(*name);
    m_identities.push_back(std::move(identity));
  }
}

void ImIdentityWalker::Next() {
  if (m_position < m_identities.size()) {
    ++m_position;
  }
  m_status = m_position < m_identities.size() ? kOk : kFail;
}

const ImIdentity& ImIdentityWalker::Current() const {
  static const ImIdentity none;
  return m_position < m_identities.size() ? m_identities[m_position] : none;
}

std::wstring ImIdentityWalker::Path() const {
  return Succeeded(m_status) ? m_identitiesDir + Name() : std::wstring();
}

bool PassesFilter(const std::wstring& name, const std::wstring& filter) {
  return filter.empty() || EqualNoCase(name, filter);
}

std::wstring GetDefaultIdentityName() {
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    if (walker.IsDefault() != 0) {
      return walker.Name();
    }
  }
  return {};
}

}  // namespace postmarker::incredimail
