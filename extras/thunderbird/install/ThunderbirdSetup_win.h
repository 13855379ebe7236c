// Ties the extension to this user's Thunderbird: the registry names the native program, the profile
// gets the extension, and registry and profile name it to the wizard.
#pragma once

#include <functional>
#include <string>

#include "Task.h"

namespace postmarker::install {

// Does --install or --remove; returns the exit code. `programFolder` is absolute and holds the
// native program, its manifest and the extension's package. What people should know is passed to
// `say`, in sentences of UTF-8.
int RunSetup(const Task& task, const std::wstring& programFolder,
             const std::function<void(const std::string&)>& say);

}  // namespace postmarker::install
