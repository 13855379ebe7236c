#include "ipc/PipeOwner_win.h"

#include "ipc/ProcessUser_win.h"
#include "support/Handles_win.h"

namespace postmarker {

PipeOwner OwnerOfProcess(DWORD processId) {
  const KernelHandle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
  // Deliberate: what refuses to be looked at is not taken for ours. A user's processes may look at
  // each other, except for those that run with more rights.
  const auto judged = [] {
    return ::GetLastError() == ERROR_ACCESS_DENIED ? PipeOwner::kAnotherUser : PipeOwner::kUnknown;
  };
  if (!process) {
    return judged();
  }
  ProcessUser theirs = ProcessUser::Of(process.Get());
  if (!theirs) {
    return judged();
  }
  ProcessUser ours = ProcessUser::Of(::GetCurrentProcess());
  if (!ours) {
    return PipeOwner::kUnknown;
  }
  return ::EqualSid(theirs.Sid(), ours.Sid()) ? PipeOwner::kThisUser : PipeOwner::kAnotherUser;
}

PipeOwner OwnerOfPipe(HANDLE pipe) {
  ULONG processId = 0;
  return ::GetNamedPipeServerProcessId(pipe, &processId) ? OwnerOfProcess(processId)
                                                         : PipeOwner::kUnknown;
}

}  // namespace postmarker
