#include "support/ModuleReference_win.h"

namespace postmarker {
namespace {

constexpr DWORD kTimeToLeaveMs = 1000;

DWORD WINAPI ReleaseModule(void* argument) noexcept {
  ::Sleep(kTimeToLeaveMs);
  ::FreeLibraryAndExitThread(static_cast<HMODULE>(argument), 0);
}

}  // namespace

LibraryHandle ReferToThisModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&ReferToThisModule), &module);
  return LibraryHandle(module);
}

void ReleaseModuleLater(LibraryHandle reference) {
  const KernelHandle thread(
      reference ? ::CreateThread(nullptr, 0, &ReleaseModule, reference.Get(), 0, nullptr)
                : nullptr);
  // The thread owns it; without one it must not be returned here.
  (void)reference.Release();
}

}  // namespace postmarker
