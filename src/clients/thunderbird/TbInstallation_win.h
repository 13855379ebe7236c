// Where Thunderbird is installed, where it keeps its data, and whether it has the extension. Any
// thread.
#pragma once

#include <string>

#include "clients/MachineView.h"
#include "support/Results.h"

namespace postmarker::thunderbird {

// The path of the program; empty if Thunderbird is not installed.
std::wstring GetThunderbirdExePath(const MachineView& machine = ThisMachine());

// The folder of the user's default profile. E_FAIL, with *path empty, if there is none.
ResultCode GetThunderbirdProfilePath(std::wstring* path);

// Is the suite's extension among those that the default profile knows. False if anything of that
// can't be read.
bool IsThunderbirdExtensionInstalled();

}  // namespace postmarker::thunderbird
