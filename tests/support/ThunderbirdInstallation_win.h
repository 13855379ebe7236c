// An installation of Thunderbird for one test: a copy of the stand-in in a temporary folder, with
// its mailbox, and its registry keys in a sandbox.
#pragma once

#include <windows.h>

#include <tlhelp32.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/PeerProcess_win.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

// The pipe has one name on the machine, so there is one installation at a time; a second one waits
// for the first. What runs of it at the end is ended.
class ThunderbirdInstallation {
 public:
  static constexpr wchar_t kClientKey[] = L"Software\\Mozilla\\Mozilla Thunderbird";

  ThunderbirdInstallation() : m_turn(::CreateMutexW(nullptr, FALSE, L"PostmarkerThunderbirdPeer")) {
    ::WaitForSingleObject(m_turn.Get(), 120'000);
    std::filesystem::copy_file(PeerPath(L"thunderbird\\peer_thunderbird.exe"), Program());
  }
  ThunderbirdInstallation(const ThunderbirdInstallation&) = delete;
  ThunderbirdInstallation& operator=(const ThunderbirdInstallation&) = delete;
  ~ThunderbirdInstallation() {
    Kill();
    ::ReleaseMutex(m_turn.Get());
  }

  [[nodiscard]] std::wstring Program() const { return m_folder.PathOf("thunderbird.exe"); }
  [[nodiscard]] const TempFolder& Folder() const { return m_folder; }

  // Where Thunderbird tells what is its program.
  void Register() const { RegisterAs(Program()); }
  static void RegisterAs(const std::wstring& program) {
    const std::wstring client = kClientKey;
    RegistryKey::Create(HKEY_LOCAL_MACHINE, client, KEY_ALL_ACCESS)
        .WriteString(L"CurrentVersion", L"3.1 (en-US)");
    RegistryKey::Create(HKEY_LOCAL_MACHINE, client + L"\\3.1 (en-US)\\Main", KEY_ALL_ACCESS)
        .WriteString(L"PathToExe", program);
  }

  // The mailbox, as JSON; see tests/peers/thunderbird/Mailbox.h. Counts from the next command on.
  void SetMailbox(std::string_view json) const {
    const std::wstring draft = MailboxPath() + L".draft";
    WriteFile(draft, json);
    ::MoveFileExW(draft.c_str(), MailboxPath().c_str(), MOVEFILE_REPLACE_EXISTING);
  }
  [[nodiscard]] std::string MailboxText() const { return ReadFile(MailboxPath()); }

  // Starts it as a person does, and waits until it serves.
  void Start() {
    Launch();
    Require(L"serving", "the stand-in does not serve");
  }
  void Launch() {
    std::wstring command = L"\"" + Program() + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &info)) {
      throw std::runtime_error("the stand-in can't be started: " +
                               std::to_string(::GetLastError()));
    }
    const KernelHandle process(info.hProcess);
    const KernelHandle thread(info.hThread);
  }

  // The lines of its journal; see tests/peers/thunderbird/Thunderbird_win.cpp.
  [[nodiscard]] std::vector<std::wstring> Journal() const {
    std::vector<std::wstring> lines;
    const std::wstring text = WidenUtf8(ReadFile(m_folder.PathOf("journal.txt")));
    for (size_t start = 0, end; (end = text.find(L'\n', start)) != std::wstring::npos;
         start = end + 1) {
      lines.push_back(text.substr(start, end - start));
    }
    return lines;
  }
  // Lines from now on alone. The processes in it are forgotten as well, unless they still run.
  void ClearJournal() const {
    std::string kept;
    for (const std::wstring& line : Journal()) {
      if (line.starts_with(L"started ") && registry_detail::IsRunning(ProcessOf(line))) {
        kept += NarrowUtf8(line) + "\n";
      }
    }
    WriteFile(m_folder.PathOf("journal.txt"), kept);
  }

  // How often a line, or a message on any connection, stands in the journal.
  [[nodiscard]] int Count(std::wstring_view line) const {
    int count = 0;
    for (const std::wstring& known : Journal()) {
      count += known == line || WithoutNumber(known) == line ? 1 : 0;
    }
    return count;
  }

  // Waits until a line, or a message on any connection, stands in the journal.
  void Require(std::wstring_view line, const char* otherwise) const {
    WizardSession::Require([&] { return Count(line) > 0; }, otherwise);
  }

  // The processes that were started, in their order.
  [[nodiscard]] std::vector<DWORD> Processes() const {
    std::vector<DWORD> processes;
    for (const std::wstring& line : Journal()) {
      if (line.starts_with(L"started ")) {
        processes.push_back(ProcessOf(line));
      }
    }
    return processes;
  }
  [[nodiscard]] bool IsRunning() const {
    const std::vector<DWORD> processes = Processes();
    return std::any_of(processes.begin(), processes.end(), registry_detail::IsRunning);
  }

  // Whether any process of that name was started, as the system tells at once; its journal comes
  // later.
  static bool HasProcess() {
    const KernelHandle processes(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    bool isFound = false;
    for (BOOL more = ::Process32FirstW(processes.Get(), &entry); more && !isFound;
         more = ::Process32NextW(processes.Get(), &entry)) {
      isFound = ::_wcsicmp(entry.szExeFile, L"thunderbird.exe") == 0;
    }
    return isFound;
  }

  // Ends all of it from outside.
  void Kill() const {
    for (const DWORD id : Processes()) {
      const KernelHandle process(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
      if (process && registry_detail::IsRunning(id)) {
        ::TerminateProcess(process.Get(), 1);
        ::WaitForSingleObject(process.Get(), 10'000);
      }
    }
  }

 private:
  [[nodiscard]] std::wstring MailboxPath() const { return m_folder.PathOf("mailbox.json"); }

  static DWORD ProcessOf(const std::wstring& startedLine) {
    return std::wcstoul(startedLine.c_str() + 8, nullptr, 10);
  }

  // A message without the number of its connection.
  static std::wstring_view WithoutNumber(std::wstring_view line) {
    const size_t cut = line.find(L"> ");
    return cut == std::wstring_view::npos ? line : line.substr(cut + 2);
  }

  KernelHandle m_turn;
  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TempFolder m_folder;
};

}  // namespace postmarker::test
