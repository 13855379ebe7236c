#include "ipc/ProcessUser_win.h"

#include "support/Handles_win.h"

namespace postmarker {

ProcessUser ProcessUser::Of(HANDLE process) {
  ProcessUser result;
  KernelHandle token;
  DWORD size = 0;
  if (!::OpenProcessToken(process, TOKEN_QUERY, token.Put())) {
    return result;
  }
  ::GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
  std::vector<std::byte> user(size);
  if (user.size() >= sizeof(TOKEN_USER) &&
      ::GetTokenInformation(token.Get(), TokenUser, user.data(), size, &size)) {
    result.m_user = std::move(user);
  }
  return result;
}

}  // namespace postmarker
