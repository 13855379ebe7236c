// A folder of a test's own for the application data of all users, where the trace of commands goes.
#pragma once

#include <windows.h>

#include <lmcons.h>

#include <filesystem>
#include <string>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"

namespace postmarker::test {

// Redirects the folder for this process while it lives. No other RegistrySandbox may live then.
class TraceFolder {
 public:
  TraceFolder() {
    constexpr wchar_t kExplorer[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
    for (const wchar_t* const name : {L"User Shell Folders", L"Shell Folders"}) {
      const RegistryKey key =
          RegistryKey::Create(HKEY_LOCAL_MACHINE, std::wstring(kExplorer) + name, KEY_ALL_ACCESS);
      key.WriteString(L"Common AppData", m_folder.Path().wstring());
    }
  }

  // The folder that the suite makes, without which there is no trace.
  void MakeSuiteFolder() const { std::filesystem::create_directory(m_folder.Path() / "Kestrelon"); }

  [[nodiscard]] std::wstring TraceFile() const {
    wchar_t user[UNLEN + 1] = {};
    DWORD room = UNLEN + 1;
    ::GetUserNameW(user, &room);
    return m_folder.PathOf("Kestrelon") + L"\\AccountTools-" + user + L".log";
  }

  // The trace as bytes; empty if there is none.
  [[nodiscard]] std::string TraceBytes() const { return ReadFile(TraceFile()); }

  // The lines of the trace without the byte order mark, cut after their line ends.
  [[nodiscard]] std::vector<std::wstring> TraceLines() const {
    const std::string bytes = TraceBytes();
    std::vector<std::wstring> lines;
    std::wstring line;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
      line.push_back(static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8));
      if (line.back() == L'\n') {
        lines.push_back(std::move(line));
        line.clear();
      }
    }
    return lines;
  }

 private:
  RegistrySandbox m_sandbox{Redirect::kUserAndMachine};
  TempFolder m_folder;
};

}  // namespace postmarker::test
