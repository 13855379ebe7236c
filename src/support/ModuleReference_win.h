// A reference on the module that this code is part of, for threads and objects that can outlive its
// users.
#pragma once

#include "support/Handles_win.h"

namespace postmarker {

// Adds a reference to the module that contains this code, so that the code stays in memory while
// the host unloads the module. A thread that owns the reference returns it as its last act with
// FreeLibraryAndExitThread. Null if the system refuses. Any thread.
LibraryHandle ReferToThisModule();

// Returns such a reference for code that is no thread's last act, as the end of an object is: a
// thread of its own does it a second later, when the caller has long left the module. Without
// memory for the thread the module stays. Any thread.
void ReleaseModuleLater(LibraryHandle reference);

}  // namespace postmarker
