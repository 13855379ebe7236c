// Where Thunderbird is installed, where it keeps its data, and whether it has the extension. Any
// thread.
#pragma once

#include <optional>
#include <string>

#include "clients/MachineView.h"
#include "support/Results.h"

namespace postmarker::thunderbird {

// The value of the user's registry by which the suite's extension is known: its path.
inline constexpr wchar_t kExtensionsKey[] = L"Software\\Mozilla\\Thunderbird\\Extensions";
inline constexpr wchar_t kExtensionId[] = L"{0E810812-F4BB-4309-942A-755587587A5E}";

// The user's folder for the data of programs, which has Thunderbird's in it. Nothing if the system
// doesn't tell it.
std::optional<std::wstring> ApplicationDataFolder();

// The path of the program; empty if Thunderbird is not installed.
std::wstring GetThunderbirdExePath(const MachineView& machine = ThisMachine());

// The folder of the user's default profile. E_FAIL, with *path empty, if there is none.
ResultCode GetThunderbirdProfilePath(std::wstring* path);

// Is the suite's extension among those that the default profile knows. False if anything of that
// can't be read.
bool IsThunderbirdExtensionInstalled();

}  // namespace postmarker::thunderbird
