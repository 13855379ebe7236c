// How the target of a link is opened: by the browser, by the shell, or by a command of the program.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace postmarker {

// What opening needs of the platform; tests record it.
class LinkShell {
 public:
  virtual ~LinkShell() = default;

  // The default value of a key under the root of classes, with its environment variables replaced;
  // nothing if it is missing.
  virtual std::optional<std::wstring> ReadClass(const std::wstring& key) = 0;

  // Starts a program by its command line. False if it doesn't start.
  virtual bool StartProcess(const std::wstring& commandLine) = 0;

  // Runs a verb of the shell on a target. False if the shell refuses.
  virtual bool RunVerb(const std::wstring& verb, const std::wstring& target) = 0;
};

// The name in a target "APP:name", which can be in double quotes; nothing for any other target.
std::optional<std::wstring> AppCommandName(std::wstring_view target);

// Opens a target: by the default browser, else by the shell, else by the program for ".htm" files.
// The target never becomes more than one argument; its double quotes are dropped. False if nothing
// opens it, or if it is empty.
bool OpenTarget(std::wstring_view target, LinkShell* shell);

}  // namespace postmarker
