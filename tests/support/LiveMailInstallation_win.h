// An installation of Windows Live Mail for one test: its registry keys in a sandbox, its files in a
// temporary folder, and the suite's module inside it, played by a process.
#pragma once

#include <windows.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "support/LiveMailStore.h"
#include "support/PeerProcess_win.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::test {

class LiveMailInstallation {
 public:
  static constexpr wchar_t kClientKey[] = L"Software\\Microsoft\\Windows Live Mail";
  static constexpr wchar_t kModule[] = L"WindowsLiveShim.dll";
  static constexpr wchar_t kModuleEvent[] = L"Local\\Kestrelon.WindowsLiveShim.dll.Event";

  // Installed, without a store and without the module.
  LiveMailInstallation() {
    WriteRoot(HKEY_LOCAL_MACHINE, L"InstallRoot", m_folder.PathOf("Programs"));
    WriteRoot(HKEY_CURRENT_USER, L"Store Root", m_folder.PathOf("Store"));
    std::filesystem::create_directories(BackupFolder());
  }

  [[nodiscard]] std::wstring DatabasePath() const {
    return m_folder.PathOf("Store") + L"\\Mail.MSMessageStore";
  }
  [[nodiscard]] std::wstring BackupPath() const {
    return BackupFolder().wstring() + L"\\Mail.MSMessageStore";
  }

  void WriteStore(const LiveMailContent& content) const {
    WriteFile(DatabasePath(), MakeLiveMailStore(content));
  }
  void RemoveStore() const { std::filesystem::remove(DatabasePath()); }

  static void RemoveRoots() {
    ::RegDeleteKeyExW(HKEY_CURRENT_USER, kClientKey, KEY_WOW64_32KEY, 0);
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kClientKey, KEY_WOW64_32KEY, 0);
  }

  // Starts the module, which answers with these members of its state.
  void StartModule(nlohmann::json state) {
    StopModule();
    state["module"] = NarrowUtf8(kModule);
    WriteFile(m_folder.PathOf("module.json"), state.dump());
    m_module.emplace(
        StartPeer(PeerPath(L"hookmodule\\hookmodule.exe"), {m_folder.PathOf("module.json")}));
  }
  void StopModule() { m_module.reset(); }

  // The module's event alone: the module is there, and can't be reached.
  void OwnEventOfModule() { m_event.Reset(::CreateEventW(nullptr, TRUE, FALSE, kModuleEvent)); }

 private:
  static void WriteRoot(HKEY root, const wchar_t* name, const std::wstring& value) {
    RegistryKey::Create(root, kClientKey, KEY_ALL_ACCESS | KEY_WOW64_32KEY)
        .WriteString(name, value);
  }

  [[nodiscard]] std::filesystem::path BackupFolder() const {
    return m_folder.Path() / "Store" / "Backup" / "New";
  }

  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TempFolder m_folder;
  std::optional<PeerProcess> m_module;
  KernelHandle m_event;
};

}  // namespace postmarker::test
