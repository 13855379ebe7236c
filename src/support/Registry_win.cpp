#include "support/Registry_win.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace postmarker {

DWORD PlatformMajorVersion() {
  OSVERSIONINFOW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  return ::GetVersionExW(&info) ? info.dwMajorVersion : 6;
}

REGSAM SuiteKeyView() {
  return PlatformMajorVersion() == 5 ? 0 : KEY_WOW64_64KEY;
}

RegistryKey RegistryKey::Open(HKEY root, const std::wstring& path, REGSAM access) {
  HKEY key = nullptr;
  const LSTATUS status = ::RegOpenKeyExW(root, path.c_str(), 0, access, &key);
  return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

RegistryKey RegistryKey::Create(HKEY root, const std::wstring& path, REGSAM access) {
  HKEY key = nullptr;
  const LSTATUS status =
      ::RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr);
  return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

std::optional<uint32_t> RegistryKey::ReadDword(const wchar_t* name) const {
  DWORD type = 0;
  uint32_t value = 0;
  DWORD size = sizeof(value);
  const LSTATUS status =
      ::RegQueryValueExW(Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
  if (!m_key || status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof(value)) {
    return std::nullopt;
  }
  return value;
}

std::optional<uint32_t> RegistryKey::ReadAnyDword(const wchar_t* name) const {
  const auto bytes = ReadBytes(name, sizeof(uint32_t));
  if (!bytes) {
    return std::nullopt;
  }
  uint32_t value = 0;
  if (!bytes->empty()) {
    std::memcpy(&value, bytes->data(), bytes->size());
  }
  return value;
}

std::optional<std::vector<uint8_t>> RegistryKey::ReadBytes(const wchar_t* name, DWORD room) const {
  if (!m_key) {
    return std::nullopt;
  }
  // A null buffer would turn the read into a question for the size.
  std::vector<uint8_t> bytes(std::max<DWORD>(room, 1));
  DWORD size = room;
  if (::RegQueryValueExW(Get(), name, nullptr, nullptr, bytes.data(), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

std::optional<std::wstring> RegistryKey::ReadString(const wchar_t* name, DWORD room) const {
  if (!m_key) {
    return std::nullopt;
  }
  std::wstring text(room / sizeof(wchar_t) + 1, L'\0');
  DWORD type = 0;
  DWORD size = room;
  const LSTATUS status =
      ::RegQueryValueExW(Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
  if (status != ERROR_SUCCESS || type != REG_SZ || size == 0) {
    return std::nullopt;
  }
  text.resize(size / sizeof(wchar_t));
  text.resize(std::wcslen(text.c_str()));
  return text;
}

bool RegistryKey::WriteDword(const wchar_t* name, uint32_t value) const {
  return WriteBytes(name, REG_DWORD, &value, sizeof(value));
}

bool RegistryKey::WriteString(const wchar_t* name, const std::wstring& value) const {
  const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  return WriteBytes(name, REG_SZ, value.c_str(), size);
}

bool RegistryKey::WriteBytes(const wchar_t* name, DWORD type, const void* data, DWORD size) const {
  return m_key && ::RegSetValueExW(Get(), name, 0, type, static_cast<const BYTE*>(data), size) ==
                      ERROR_SUCCESS;
}

bool RegistryKey::DeleteValue(const wchar_t* name) const {
  return m_key && ::RegDeleteValueW(Get(), name) == ERROR_SUCCESS;
}

}  // namespace postmarker
