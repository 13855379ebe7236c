#include "ipc/PipeOwner_win.h"

#include <cstddef>
#include <vector>

#include "support/Handles_win.h"

namespace postmarker {
namespace {

// A TOKEN_USER and the identifier that it points to; empty if the system does not tell.
std::vector<std::byte> UserOf(HANDLE process) {
  KernelHandle token;
  DWORD size = 0;
  if (!::OpenProcessToken(process, TOKEN_QUERY, token.Put())) {
    return {};
  }
  ::GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
  std::vector<std::byte> user(size);
  if (user.size() < sizeof(TOKEN_USER) ||
      !::GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size)) {
    return {};
  }
  return user;
}

PSID Identifier(std::vector<std::byte>& user) {
  return reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
}

}  // namespace

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
  std::vector<std::byte> theirs = UserOf(process.Get());
  if (theirs.empty()) {
    return judged();
  }
  std::vector<std::byte> ours = UserOf(::GetCurrentProcess());
  if (ours.empty()) {
    return PipeOwner::kUnknown;
  }
  return ::EqualSid(Identifier(theirs), Identifier(ours)) ? PipeOwner::kThisUser
                                                          : PipeOwner::kAnotherUser;
}

PipeOwner OwnerOfPipe(HANDLE pipe) {
  ULONG processId = 0;
  return ::GetNamedPipeServerProcessId(pipe, &processId) ? OwnerOfProcess(processId)
                                                         : PipeOwner::kUnknown;
}

}  // namespace postmarker
