// An installation of IncrediMail for one test: its registry keys in a sandbox, its files in a
// temporary folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"

namespace postmarker::test {

class ImInstallation {
 public:
  static constexpr wchar_t kAppPath[] =
      L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\IncrediMail.exe";
  static constexpr wchar_t kClientKey[] = L"Software\\IncrediMail";
  static constexpr wchar_t kIdentitiesKey[] = L"Software\\IncrediMail\\Identities";

  // The registry is empty at first.
  [[nodiscard]] std::wstring ProgramFolder() const { return m_folder.PathOf("Program"); }
  [[nodiscard]] std::wstring DataFolder() const { return m_folder.PathOf("Data"); }
  [[nodiscard]] const TempFolder& Folder() const { return m_folder; }

  void RegisterProgram() const {
    WriteString(HKEY_LOCAL_MACHINE, kAppPath, nullptr, ProgramFolder() + L"\\IncMail.exe");
  }

  void RegisterData() const {
    WriteString(HKEY_CURRENT_USER, kClientKey, L"ApplicationPath", DataFolder());
  }

  void SetDefaultIdentity(const std::wstring& name) const {
    WriteString(HKEY_CURRENT_USER, kIdentitiesKey, nullptr, name);
  }

  // Adds an identity's key, without values that are not given.
  void AddIdentity(const std::wstring& name, const std::wstring& displayName = {},
                   std::optional<uint32_t> language = {}) const {
    const RegistryKey key = RegistryKey::Create(
        HKEY_CURRENT_USER, std::wstring(kIdentitiesKey) + L"\\" + name, KEY_ALL_ACCESS);
    if (!displayName.empty()) {
      key.WriteString(L"Identity", displayName);
    }
    if (language) {
      key.WriteDword(L"UILanguage", *language);
    }
  }

  // The folder of an identity's files, made at the first call.
  [[nodiscard]] ImIdentityFolder IdentityFolder(const std::wstring& name) const {
    return ImIdentityFolder(std::filesystem::path(DataFolder()) / "Identities" / name);
  }

  // Makes an identity's folder database and gives its path.
  std::wstring AddStore(const std::wstring& name, const std::vector<ImRow>& rows) const {
    std::wstring path = IdentityFolder(name).StoreFile("Containers.db");
    MakeContainersDatabase(path, rows);
    return path;
  }

  static void WriteString(HKEY root, const std::wstring& path, const wchar_t* name,
                          const std::wstring& value) {
    RegistryKey::Create(root, path, KEY_ALL_ACCESS).WriteString(name, value);
  }

  static void WriteBytes(HKEY root, const std::wstring& path, const wchar_t* name, DWORD type,
                         const std::vector<uint8_t>& bytes) {
    RegistryKey::Create(root, path, KEY_ALL_ACCESS)
        .WriteBytes(name, type, bytes.data(), static_cast<DWORD>(bytes.size()));
  }

 private:
  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TempFolder m_folder;
};

// The folder that the running test program lies in, without a backslash at its end.
inline std::filesystem::path TestProgramFolder() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return std::filesystem::path(path).parent_path();
}

}  // namespace postmarker::test
