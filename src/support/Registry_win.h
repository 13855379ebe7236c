// Access to registry values. A failed read leaves its out value alone.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/Handles_win.h"

namespace postmarker {

// The major version number of the platform.
DWORD PlatformMajorVersion();

// KEY_WOW64_64KEY, by which 32-bit and 64-bit parts of the suite see one key; 0 on a platform of
// major version 5, which does not know it everywhere.
REGSAM SuiteKeyView();

// One open key, or none: then every read fails and every write returns false.
class RegistryKey {
 public:
  RegistryKey() = default;

  // Opens an existing key with exactly the rights given.
  static RegistryKey Open(HKEY root, const std::wstring& path, REGSAM access);

  // Opens a key, or creates it and the ones above it.
  static RegistryKey Create(HKEY root, const std::wstring& path, REGSAM access);

  explicit operator bool() const { return static_cast<bool>(m_key); }
  [[nodiscard]] HKEY Get() const { return m_key.Get(); }

  // A REG_DWORD of 4 bytes, or nothing.
  [[nodiscard]] std::optional<uint32_t> ReadDword(const wchar_t* name) const;

  // A 4-byte value, whatever its type: what a plain query into a 4-byte buffer takes.
  [[nodiscard]] std::optional<uint32_t> ReadAnyDword(const wchar_t* name) const;

  // The value's bytes, whatever its type; nothing if it is missing or longer than `room` bytes.
  [[nodiscard]] std::optional<std::vector<uint8_t>> ReadBytes(const wchar_t* name,
                                                              DWORD room) const;

  // A REG_SZ of at most `room` bytes, its terminator included, up to the first NUL. Nothing if it
  // is missing, of another type, longer, or of no size.
  [[nodiscard]] std::optional<std::wstring> ReadString(const wchar_t* name, DWORD room) const;

  // Writes; false if the registry refuses. A string is stored with its terminator.
  bool WriteDword(const wchar_t* name, uint32_t value) const;
  bool WriteString(const wchar_t* name, const std::wstring& value) const;
  bool WriteBytes(const wchar_t* name, DWORD type, const void* data, DWORD size) const;
  bool DeleteValue(const wchar_t* name) const;

 private:
  explicit RegistryKey(HKEY key) : m_key(key) {}

  RegistryKeyHandle m_key;
};

}  // namespace postmarker
