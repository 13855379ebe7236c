// An Outlook for one test: its MAPI library below a folder for common files of the test's own, a
// profile, and on request its class, all served by the stand-in.
#pragma once

#include <windows.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

#include "peers/outlook/PeerControl.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"
#include "support/OutlookMailbox.h"
#include "support/PeerProcess_win.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::test {

// How Outlook's class is registered, if at all.
enum class OutlookClassServer { kNone, kInProcess, kProgram };

// Outlook's class in the prefix' registry, which COM reads past any sandbox, and the name of the
// add-in's objects. One test program at a time has them; others wait.
class OutlookRegistration {
 public:
  OutlookRegistration() {
    m_turn.Reset(::CreateMutexW(nullptr, FALSE, L"Local\\PostmarkerTest-OutlookClass"));
    const DWORD wait = ::WaitForSingleObject(m_turn.Get(), 300'000);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
      throw std::runtime_error("another test program holds Outlook's class");
    }
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
  }
  OutlookRegistration(const OutlookRegistration&) = delete;
  OutlookRegistration& operator=(const OutlookRegistration&) = delete;
  ~OutlookRegistration() {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kKey);
    ::ReleaseMutex(m_turn.Get());
  }

  // Before the registry is redirected.
  static void SetServer(const wchar_t* kind, const std::wstring& command) {
    const RegistryKey key =
        RegistryKey::Create(HKEY_LOCAL_MACHINE, std::wstring(kKey) + L"\\" + kind, KEY_ALL_ACCESS);
    key.WriteString(nullptr, command);
    key.WriteString(L"ThreadingModel", L"Both");
  }

 private:
  static constexpr wchar_t kKey[] =
      L"Software\\Classes\\CLSID\\{0006F03A-0000-0000-C000-000000000046}";

  KernelHandle m_turn;
};

class OutlookInstallation {
 public:
  static constexpr wchar_t kLibraryFolder[] = L"System\\MSMAPI\\1033";
  static constexpr wchar_t kProfiles[] =
      L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

  explicit OutlookInstallation(OutlookClassServer server = OutlookClassServer::kNone)
      : m_mailboxFile(m_folder.PathOf("mailbox.json")) {
    SetMailboxFile(OutlookMailbox());
    const std::wstring library = Copy(L"Decorated", kLibraryFolder);
    if (server == OutlookClassServer::kInProcess) {
      OutlookRegistration::SetServer(L"InprocServer32", library);
    } else if (server == OutlookClassServer::kProgram) {
      OutlookRegistration::SetServer(L"LocalServer32", ProgramCommand());
    }
    m_registry.emplace(Redirect::kUserAndMachine);
    SetCommonFiles(m_folder.PathOf(""));
    AddProfile();
    m_library.Reset(::LoadLibraryW(library.c_str()));
    const auto control = reinterpret_cast<peer::OutlookPeerControlFunction>(
        reinterpret_cast<void*>(::GetProcAddress(m_library.Get(), "OutlookPeerControl")));
    if (control == nullptr) {
      throw std::runtime_error("the stand-in for Outlook can't be loaded");
    }
    m_control = control();
    Load();
  }
  OutlookInstallation(const OutlookInstallation&) = delete;
  OutlookInstallation& operator=(const OutlookInstallation&) = delete;
  ~OutlookInstallation() {
    EndHangs();
    EndProgram();
    m_control->ResetCalls();
    // COM unloads a server only when it is asked to or the apartment ends.
    ::CoFreeUnusedLibraries();
  }

  // Waits until the program has got all of its objects back.
  [[nodiscard]] bool WaitUntilReleased() const {
    return ::WaitForSingleObject(m_released.Get(), 20'000) == WAIT_OBJECT_0;
  }

  // Lets the calls that hang go on, and all later ones; until there is another mailbox.
  void EndHangs() const {
    m_control->EndHangs();
    if (m_goesOn) {
      ::SetEvent(m_goesOn.Get());
    }
  }

  // Waits until a call of the program hangs.
  [[nodiscard]] bool WaitUntilProgramHangs() const {
    return ::WaitForSingleObject(m_hangs.Get(), 20'000) == WAIT_OBJECT_0;
  }

  // Another mailbox, with no fault and no calls counted.
  void SetMailbox(const nlohmann::json& mailbox) {
    SetMailboxFile(mailbox);
    Load();
  }

  // Takes Outlook's MAPI library away, or puts it back.
  void RemoveLibrary() { SetCommonFiles(m_folder.PathOf("none")); }
  void RestoreLibrary() { SetCommonFiles(m_folder.PathOf("")); }

  [[nodiscard]] peer::PeerControl& Peer() const { return *m_control; }
  [[nodiscard]] ComPtr<IDispatch> MakeApplication() const {
    return ComPtr<IDispatch>(m_control->MakeApplication());
  }
  [[nodiscard]] const TempFolder& Folder() const { return m_folder; }

  // Outlook's MAPI library, also where it has been taken away.
  [[nodiscard]] std::wstring LibraryPath() const {
    return m_folder.PathOf("") + kLibraryFolder + L"\\msmapi32.dll";
  }

  // Copies the library with the names "Decorated", "Plain" or "Incomplete" into a folder below the
  // test's; its path.
  std::wstring Copy(const std::wstring& names, const std::wstring& folder,
                    const std::wstring& file = L"msmapi32.dll") const {
    const std::filesystem::path target = m_folder.Path() / folder;
    std::filesystem::create_directories(target);
    std::filesystem::copy_file(PeerPath(L"outlook\\" + names + L"\\msmapi32.dll"), target / file,
                               std::filesystem::copy_options::overwrite_existing);
    return (target / file).wstring();
  }

 private:
  std::wstring ProgramCommand() {
    m_program = FreshObjectName();
    m_released.Reset(::CreateEventW(nullptr, TRUE, FALSE, (m_program + L"-released").c_str()));
    m_hangs.Reset(::CreateEventW(nullptr, TRUE, FALSE, (m_program + L"-hangs").c_str()));
    m_goesOn.Reset(::CreateEventW(nullptr, TRUE, FALSE, (m_program + L"-goes-on").c_str()));
    m_end.Reset(::CreateEventW(nullptr, TRUE, FALSE, (m_program + L"-end").c_str()));
    std::wstring command = L"\"" + PeerPath(L"outlook\\outlook.exe") + L"\"";
    for (const std::wstring& argument :
         {m_mailboxFile, m_program, std::to_wstring(::GetCurrentProcessId())}) {
      command.append(L" \"").append(argument).append(L"\"");
    }
    return command;
  }
  // Returns when the program is gone, as the next test has its class.
  void EndProgram() const {
    ::SetEvent(m_end.Get());
    const std::wstring runs = m_program + L"-runs";
    while (m_end && KernelHandle(::OpenEventW(SYNCHRONIZE, FALSE, runs.c_str()))) {
      ::Sleep(5);
    }
  }
  void SetMailboxFile(const nlohmann::json& mailbox) const {
    WriteFile(m_mailboxFile, mailbox.dump());
  }
  void Load() {
    m_control->ResetCalls();
    if (!m_control->Load(m_mailboxFile.c_str())) {
      throw std::runtime_error("the stand-in for Outlook can't read its mailbox");
    }
  }
  static void SetCommonFiles(const std::wstring& folder) {
    RegistryKey::Create(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion",
                        KEY_ALL_ACCESS)
        .WriteString(L"CommonFilesDir", folder);
  }
  static void AddProfile() {
    RegistryKey::Create(HKEY_CURRENT_USER, kProfiles, KEY_ALL_ACCESS)
        .WriteString(L"DefaultProfile", L"Anna");
    RegistryKey::Create(HKEY_CURRENT_USER, std::wstring(kProfiles) + L"\\Anna\\store",
                        KEY_ALL_ACCESS)
        .WriteString(L"001f6700", L"mail.pst");
  }

  TempFolder m_folder;
  std::wstring m_mailboxFile;
  std::wstring m_program;
  KernelHandle m_released;
  KernelHandle m_hangs;
  KernelHandle m_goesOn;
  KernelHandle m_end;
  OutlookRegistration m_registration;
  std::optional<RegistrySandbox> m_registry;
  LibraryHandle m_library;
  peer::PeerControl* m_control = nullptr;
};

}  // namespace postmarker::test
