// Helpers for named mutexes. Any thread.
#pragma once

#include "support/Handles_win.h"

namespace postmarker {

// Makes the mutex, or opens it if it exists, and lets everyone do everything with it. With `owner`
// the calling thread owns a new one. `name` may be null for one without a name. *error gets the
// system's last error of the creation: 0, or 183 if the mutex existed, or why there is no handle.
KernelHandle CreateOpenMutex(bool owner, const wchar_t* name, DWORD* error);

// Makes the mutex, not owned; nothing if one of that name exists.
KernelHandle CreateExclusiveMutex(const wchar_t* name);

// Is there a mutex of that name that this process may wait for.
bool MutexExists(const wchar_t* name);

}  // namespace postmarker
