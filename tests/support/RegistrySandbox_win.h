// A registry of a test's own. While a RegistrySandbox lives, the user's and (if asked for) the
// machine's root key lead to fresh keys of this process, so that tests disturb neither each other
// nor the person's settings.
#pragma once

#include <windows.h>

#include <sddl.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/Handles_win.h"
#include "support/Text.h"

namespace postmarker::test {

namespace registry_detail {

inline constexpr wchar_t kSandboxes[] = L"Software\\PostmarkerTests";

inline void Require(LSTATUS status, const char* what) {
  if (status != ERROR_SUCCESS) {
    throw std::runtime_error(std::string(what) + " failed: " + std::to_string(status));
  }
}

inline RegistryKeyHandle CreateKey(HKEY parent, const std::wstring& path, DWORD options) {
  RegistryKeyHandle key;
  Require(::RegCreateKeyExW(parent, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS, nullptr,
                            key.Put(), nullptr),
          "creating a key");
  return key;
}

inline std::vector<std::wstring> SubkeyNames(HKEY key) {
  std::vector<std::wstring> names;
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = std::size(name);
    if (::RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      break;
    }
    names.emplace_back(name, length);
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline bool IsRunning(DWORD processId) {
  const KernelHandle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
  DWORD code = 0;
  return process && ::GetExitCodeProcess(process.Get(), &code) && code == STILL_ACTIVE;
}

// Deletes what runs that crashed have left. Keys of processes that still run are theirs.
inline void ClearLeftovers(HKEY sandboxes) {
  for (const std::wstring& name : SubkeyNames(sandboxes)) {
    if (!IsRunning(std::wcstoul(name.c_str(), nullptr, 10))) {
      ::RegDeleteTreeW(sandboxes, name.c_str());
    }
  }
}

}  // namespace registry_detail

// Which roots a RegistrySandbox redirects.
enum class Redirect { kUser, kUserAndMachine };

// Whether the sandbox's roots take new keys.
enum class NewKeys {
  kAllowed,
  kRefused,  // a root that is gone when the machine shuts down takes no key that stays: creating
             // one fails
};

// Redirects the root keys of this process from construction to destruction. One at a time in a
// process, but one after another as many as wanted. Roots that the test or the code under test
// opened before, and keys under them, still lead to the real registry. Keys opened with
// KEY_WOW64_64KEY are redirected as well.
class RegistrySandbox {
 public:
  explicit RegistrySandbox(Redirect redirect = Redirect::kUser,
                           NewKeys newKeys = NewKeys::kAllowed) {
    using namespace registry_detail;
    m_sandboxes = CreateKey(HKEY_CURRENT_USER, kSandboxes, REG_OPTION_NON_VOLATILE);
    ClearLeftovers(m_sandboxes.Get());
    m_name = FreshName();
    const DWORD options =
        newKeys == NewKeys::kRefused ? REG_OPTION_VOLATILE : REG_OPTION_NON_VOLATILE;
    m_user = CreateKey(m_sandboxes.Get(), m_name + L"\\User", options);
    m_machine = CreateKey(m_sandboxes.Get(), m_name + L"\\Machine", options);
    m_redirectsMachine = redirect == Redirect::kUserAndMachine;
    Require(::RegOverridePredefKey(HKEY_CURRENT_USER, m_user.Get()), "redirecting the user's root");
    if (m_redirectsMachine) {
      Require(::RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_machine.Get()),
              "redirecting the machine's root");
    }
  }
  RegistrySandbox(const RegistrySandbox&) = delete;
  RegistrySandbox& operator=(const RegistrySandbox&) = delete;
  ~RegistrySandbox() {
    ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    if (m_redirectsMachine) {
      ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    }
    m_user.Reset();
    m_machine.Reset();
    ::RegDeleteTreeW(m_sandboxes.Get(), m_name.c_str());
  }

  // The keys that stand for the two roots. They live as long as this object.
  [[nodiscard]] HKEY User() const { return m_user.Get(); }
  [[nodiscard]] HKEY Machine() const { return m_machine.Get(); }

 private:
  static std::wstring FreshName() {
    static std::atomic<unsigned> count{0};
    return std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
  }

  RegistryKeyHandle m_sandboxes;
  std::wstring m_name;
  RegistryKeyHandle m_user;
  RegistryKeyHandle m_machine;
  bool m_redirectsMachine = false;
};

// Creates the key if it is missing, and gives it an access list under which nobody may set its
// values or create keys in it. It can still be read, and be deleted with the sandbox. Opening it
// for writing fails from now on.
inline void DenyWrites(HKEY root, const std::wstring& path) {
  using namespace registry_detail;
  const RegistryKeyHandle key = CreateKey(root, path, REG_OPTION_NON_VOLATILE);
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  // Values and keys: KEY_SET_VALUE and KEY_CREATE_SUB_KEY denied to everyone, all else granted.
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(
          L"D:(D;;0x6;;;WD)(A;;KA;;;WD)", SDDL_REVISION_1, &descriptor, nullptr)) {
    throw std::runtime_error("making an access list failed");
  }
  const ScopeExit freeDescriptor([descriptor] { ::LocalFree(descriptor); });
  Require(::RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor),
          "denying writes to a key");
}

// The last part of this file: a key tree as text, for comparison value by value and byte by byte.

// "REG_SZ", "REG_DWORD", "REG_BINARY", or the number of another type.
inline std::string RegistryTypeName(DWORD type) {
  switch (type) {
    case REG_SZ:
      return "REG_SZ";
    case REG_DWORD:
      return "REG_DWORD";
    case REG_BINARY:
      return "REG_BINARY";
    default:
      return "type " + std::to_string(type);
  }
}

// Two lower-case digits a byte, without blanks between them.
inline std::string HexBytes(const void* data, size_t size) {
  std::string hex;
  for (size_t i = 0; i < size; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof(digits), "%02x", static_cast<const uint8_t*>(data)[i]);
    hex += digits;
  }
  return hex;
}

// The bytes of a text as REG_SZ stores it, terminator included, in the form of HexBytes.
inline std::string HexText(const std::wstring& text) {
  return HexBytes(text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

namespace registry_detail {

inline std::vector<std::string> ValueLines(HKEY key, const std::string& path) {
  DWORD count = 0;
  DWORD longestName = 0;
  DWORD longestData = 0;
  Require(::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                             &longestName, &longestData, nullptr, nullptr),
          "asking a key for its size");
  std::vector<std::string> lines;
  std::wstring name(longestName + 1, L'\0');
  std::vector<uint8_t> data(longestData + 1);
  for (DWORD i = 0; i < count; ++i) {
    DWORD nameLength = longestName + 1;
    DWORD size = longestData + 1;
    DWORD type = 0;
    Require(::RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &type, data.data(), &size),
            "reading a value");
    lines.push_back(path + " | " + NarrowUtf8(std::wstring_view(name).substr(0, nameLength)) +
                    " | " + RegistryTypeName(type) + " | " + HexBytes(data.data(), size));
  }
  return lines;
}

}  // namespace registry_detail

// Every key below `root` and every value in them, sorted; empty if `root` is. A key is a line with
// its path in brackets, a value is "path | name | type | bytes", the path relative to `root` and
// the bytes as HexBytes has them. Two trees are the same when their lines are.
inline std::vector<std::string> DumpRegistry(HKEY root) {
  using namespace registry_detail;
  std::vector<std::string> lines = ValueLines(root, "");
  std::vector<std::wstring> open;
  for (const std::wstring& name : SubkeyNames(root)) {
    open.push_back(name);
  }
  while (!open.empty()) {
    const std::wstring path = std::move(open.back());
    open.pop_back();
    RegistryKeyHandle key;
    Require(::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.Put()), "opening a key");
    lines.push_back(std::string("[").append(NarrowUtf8(path)).append("]"));
    for (std::string& line : ValueLines(key.Get(), NarrowUtf8(path))) {
      lines.push_back(std::move(line));
    }
    for (const std::wstring& name : SubkeyNames(key.Get())) {
      open.push_back(std::wstring(path).append(L"\\").append(name));
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace postmarker::test
