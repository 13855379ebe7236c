// The suite's modules inside the mail clients, as far as the wizard uses them: adding the incoming
// mail rule.
#pragma once

#include <string>
#include <string_view>

#include "support/Handles_win.h"

namespace postmarker {

// The folder in which the suite is installed: two levels above the file of the suite's filter
// module, if that is loaded in this process, otherwise above the host's own file. Without a
// trailing backslash.
std::wstring GetSuiteRootFolder();

// A loaded hook module. Its entry points use the standard calling convention of Windows functions.
// For one thread.
class HookModule {
 public:
  using AddRule = int32_t(__stdcall*)(const wchar_t* spamFolderName);

  // Loads the module at `path` and, ahead of it, SQLite.dll from the folder above the module's,
  // whose absence does not matter. A module that lacks one of the seven entry points is unloaded
  // again. Does nothing if a module is loaded already.
  void Load(const std::wstring& path);
  void Unload();
  [[nodiscard]] bool IsLoaded() const { return static_cast<bool>(m_hook); }

  // Adds the rule by which the client moves mails to the folder of this name. REQUIRES: IsLoaded().
  void AddIncomingRule(const std::wstring& spamFolderName) const;

 private:
  bool TakeEntryPoints();

  // Destroyed in reverse order: the module goes before the library it uses.
  LibraryHandle m_sqlite;
  LibraryHandle m_hook;
  AddRule m_addIncomingRule = nullptr;
};

// Loads the client's hook module from the suite's folder, calls its AddIncomingRule and unloads it.
// `hookModule` is the file's name; an empty one, and a module that can't be loaded, do nothing.
void AddSpamRule(std::wstring_view hookModule, const std::wstring& spamFolderName);

}  // namespace postmarker
