// The paths of log files, which may begin with a name for a folder.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace postmarker {

enum class LogFolder {
  kProgram,          // where the running process's executable lies
  kApplicationData,  // of the person
  kTemporary,
  kDesktop,
};

// Replaces "appdir:", "appdata:", "temp:" or "desktop:" at the beginning, in any case, by what
// `folderOf` says, without a backslash at its end. What follows the colon is appended, up to 260
// units in all. Where the folder is empty, or there is no such beginning, the text is the path.
std::wstring ExpandLogPath(std::wstring_view text,
                           const std::function<std::wstring(LogFolder)>& folderOf);

}  // namespace postmarker
