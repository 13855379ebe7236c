// Where Windows Live Mail and its store are. The registry is read each time. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "clients/MachineView.h"

namespace postmarker::livemail {

// The folder of the client's program, and that of its store, with environment variables put in.
// Nothing if the registry doesn't tell it.
std::optional<std::wstring> FindInstallRoot(const MachineView& machine = ThisMachine());
std::optional<std::wstring> FindStoreRoot(const MachineView& machine = ThisMachine());

// Is the folder of the client's installation known to the system.
bool IsWindowsLiveMailInstalled(const MachineView& machine = ThisMachine());

// The database of the store, and the client's backup of it. Empty if there is no store root.
std::wstring LiveDatabasePath(const MachineView& machine = ThisMachine());
std::wstring BackupDatabasePath(const MachineView& machine = ThisMachine());

// The folder that a database is in, with a separator at its end: the root of what it names.
std::wstring StoreRootOf(std::wstring_view databasePath);

}  // namespace postmarker::livemail
