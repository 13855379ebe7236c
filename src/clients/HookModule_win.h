// The suite's modules inside the mail clients, as far as the wizard uses them: adding the incoming
// mail rule.
#pragma once

#include <string>
#include <string_view>

#include "support/Handles_win.h"

namespace postmarker {

// The folder in which the suite is installed: two levels above the file of the suite's filter
// module, if that is loaded in this process, otherwise above the host's own file. Without a
// trailing backslash. Empty if the file's path has 260 characters or more.
std::wstring GetSuiteRootFolder();

// Is this the full path of a folder below a drive or a share. Only from such a root are modules
// loaded: into the root of a drive any user may put a folder with the suite's name.
bool CanHoldSuite(std::wstring_view folder);

// A hook module and its entry points, which use the standard calling convention of Windows
// functions. All seven are there, or nothing is loaded. For one thread.
struct HookModule {
  using AddRule = int32_t(__stdcall*)(const wchar_t* spamFolderName);
  using EntryPoint = void(__stdcall*)();  // called by the suite inside the client only

  HookModule() = default;
  HookModule(const HookModule&) = delete;
  HookModule& operator=(const HookModule&) = delete;
  ~HookModule() { Unload(); }

  // Loads the module at `path` and, ahead of it, SQLite.dll from the folder above the module's,
  // whose absence does not matter. A module that lacks one of the seven entry points is unloaded
  // again. Does nothing if a module is loaded already.
  void Load(const std::wstring& path);

  // Frees the module, then the library that it uses, and clears the entry points.
  void Unload();

  [[nodiscard]] bool IsLoaded() const { return static_cast<bool>(hookHandle); }

  LibraryHandle hookHandle;
  LibraryHandle sqliteHandle;
  EntryPoint InitSpam = nullptr;
  EntryPoint UninitSpam = nullptr;
  AddRule AddIncomingRule = nullptr;  // by which the client moves mails to the folder of that name
  EntryPoint CanSubclassWindow = nullptr;
  EntryPoint InitHookWindow = nullptr;
  EntryPoint UninitHookWindow = nullptr;
  EntryPoint MainWndProc = nullptr;

 private:
  bool TakeEntryPoints();
};

// Loads the client's hook module from the suite's folder, calls its AddIncomingRule and unloads it.
// `hookModule` is the file's name; an empty one, a module that can't be loaded, and a root that
// can't hold the suite do nothing.
void AddSpamRule(std::wstring_view hookModule, const std::wstring& spamFolderName);

}  // namespace postmarker
