// A reference on the module that this code is part of, for threads that can outlive its users.
#pragma once

#include "support/Handles_win.h"

namespace postmarker {

// Adds a reference to the module that contains this code, so that the code stays in memory while
// the host unloads the module. A thread that owns the reference returns it as its last act with
// FreeLibraryAndExitThread. Null if the system refuses. Any thread.
LibraryHandle ReferToThisModule();

}  // namespace postmarker
