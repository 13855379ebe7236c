// Fills the list of allowed senders from all mail clients, without a window.
#pragma once

#include <windows.h>

#include "support/Handles_win.h"

namespace postmarker {

// Notes in the registry that it was started, and harvests all clients on a thread of its own. The
// thread holds a reference on the module and is not to be waited for by it; its handle is for
// tests. None if the thread can't be made. Any thread.
KernelHandle LaunchWhitelistPrefill();

// The thread's work: harvests each installed client in the order of the table's turns and puts the
// addresses on the list of allowed senders, and off that of blocked ones. A client that crashes
// ends its own harvest only.
void HarvestAllClients();

}  // namespace postmarker
