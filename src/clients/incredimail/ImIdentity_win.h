// The client's installation and its identities, as the registry tells them.
// Every function reads the registry each time. All of them may be called from any thread.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/Registry_win.h"
#include "support/Results.h"

namespace postmarker::incredimail {

// The primary language number of English, in which the client's own names of folders are.
inline constexpr uint32_t kEnglish = 9;

// The view of the registry in which the client, a 32-bit program, has its keys: KEY_WOW64_32KEY,
// but nothing on a platform of version 5.0, which does not know that flag.
REGSAM KeyViewOf(DWORD major, DWORD minor);

// Opens a key of the client in that view, with the rights given.
RegistryKey OpenClientKey(HKEY root, const std::wstring& path, REGSAM access);

// Reads a string of at most `roomInBytes` bytes with its terminator, null name for the default
// value. Only REG_SZ and REG_EXPAND_SZ, which is not expanded, of an even size and with a NUL at
// their end are accepted. False, and *value as it was, if there is none such.
bool ReadClientString(const RegistryKey& key, const wchar_t* name, DWORD roomInBytes,
                      std::wstring* value);

// The full path of the client's program, and the folder of its data without a backslash at the
// end. A path of 260 characters or more counts as none. On failure *path is as it was.
ResultCode FindExecutablePath(std::wstring* path);
ResultCode FindApplicationPath(std::wstring* path);

// Is the client's program known to the system.
bool IsIncrediMailInstalled();

// The name that an identity's person gave it; empty if there is none.
std::wstring ReadIdentityDisplayName(const std::wstring& identity);

// One identity.
struct ImIdentity {
  std::wstring Name;               // of its key, and of its folder on disk
  uint8_t IsDefault = 0;           // 1 for the identity that the client starts with
  uint32_t UILanguage = kEnglish;  // primary language number
};

// Lists the identities when it is made, in the registry's order, and then stands on one after the
// other. From one thread at a time.
class ImIdentityWalker {
 public:
  ImIdentityWalker();

  // 0 while the walker stands on an identity, otherwise a failure.
  [[nodiscard]] ResultCode Status() const { return m_status; }

  void Next();

  // The identity that the walker stands on; without one 0, an empty name, English and an empty
  // path.
  [[nodiscard]] uint8_t IsDefault() const { return Current().IsDefault; }
  [[nodiscard]] const std::wstring& Name() const { return Current().Name; }
  [[nodiscard]] uint32_t Language() const { return Current().UILanguage; }

  // The identity's directory, without a backslash at its end.
  [[nodiscard]] std::wstring Path() const;

  // The directory of all identities, with a backslash at its end.
  [[nodiscard]] const std::wstring& IdentitiesDir() const { return m_identitiesDir; }

 private:
  void ListIdentities();
  [[nodiscard]] const ImIdentity& Current() const;

  ResultCode m_status = kFail;
  std::wstring m_identitiesDir;
  std::vector<ImIdentity> m_identities;
  size_t m_position = 0;
};

// Does an identity's name pass a filter: an empty one lets all pass, others the one of that name,
// whatever its case.
bool PassesFilter(const std::wstring& name, const std::wstring& filter);

// The name of the identity that the client starts with; empty if there is none.
std::wstring GetDefaultIdentityName();

}  // namespace postmarker::incredimail
