#include "ipc/Mutexes_win.h"

#include "ipc/ObjectSecurity_win.h"

namespace postmarker {

KernelHandle CreateOpenMutex(bool owner, const wchar_t* name, DWORD* error) {
  ObjectSecurity security = ObjectSecurity::Open();
  if (!security) {
    *error = ::GetLastError();
    return KernelHandle();
  }
  ::SetLastError(ERROR_SUCCESS);
  KernelHandle mutex(::CreateMutexW(security.Attributes(), owner ? TRUE : FALSE, name));
  *error = ::GetLastError();
  return mutex;
}

KernelHandle CreateExclusiveMutex(const wchar_t* name) {
  ::SetLastError(ERROR_SUCCESS);
  KernelHandle mutex(::CreateMutexW(nullptr, FALSE, name));
  if (::GetLastError() == ERROR_ALREADY_EXISTS) {
    mutex.Reset();
  }
  return mutex;
}

bool MutexExists(const wchar_t* name) {
  return static_cast<bool>(KernelHandle(::OpenMutexW(SYNCHRONIZE, FALSE, name)));
}

}  // namespace postmarker
