// Whose process serves a named pipe. Anybody on the machine can serve any name that is free.
#pragma once

#include <windows.h>

#include <functional>

namespace postmarker {

enum class PipeOwner {
  kThisUser,
  kAnotherUser,  // also: somebody whose process this one may not look at
  kUnknown,      // the system does not tell
};

using PipeOwnerQuery = std::function<PipeOwner(HANDLE pipe)>;

// Asks the system about the process at the serving end of `pipe`, a connected client's handle. Any
// thread.
PipeOwner OwnerOfPipe(HANDLE pipe);

// The same for a process by its id; kUnknown if there is none.
PipeOwner OwnerOfProcess(DWORD processId);

}  // namespace postmarker
